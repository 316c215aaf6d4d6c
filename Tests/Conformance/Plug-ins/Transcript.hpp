#pragma once

#include "Tests/Conformance/Plug-ins/Performer.hpp"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace conformance
{

/// Where in a performance something is.
struct Passage {
    double sampleRate = 0;
    std::uint32_t block = 0;
};

/// All that comes out of a performance, block by block.
class Transcript
{
public:
    virtual ~Transcript() = default;
    Transcript(const Transcript &) = delete;
    Transcript &operator=(const Transcript &) = delete;

    /// What follows comes from there.
    virtual void begin(const Passage &passage) = 0;
    virtual void add(std::span<const float *const> output, std::uint32_t frames) = 0;
    virtual void add(const std::vector<Emitted> &events) = 0;

protected:
    Transcript() = default;
};

/// Writes it to a file.
class TranscriptWriter : public Transcript
{
public:
    explicit TranscriptWriter(const std::filesystem::path &path);

    void begin(const Passage & /*passage*/) override {}
    void add(std::span<const float *const> output, std::uint32_t frames) override;
    void add(const std::vector<Emitted> &events) override;
    /// A `std::runtime_error` when not all of it could be written.
    void close();

private:
    std::ofstream file_;
};

/// Compares it with what stands in the file, bit by bit.
class TranscriptComparison : public Transcript
{
public:
    explicit TranscriptComparison(const std::filesystem::path &path);

    void begin(const Passage &passage) override;
    void add(std::span<const float *const> output, std::uint32_t frames) override;
    void add(const std::vector<Emitted> &events) override;

    /// Where and how the two differ, in a sentence; none when they do not.
    std::optional<std::string> difference() const;

private:
    void compare(const float *expected, const float *found, std::size_t channel,
                 std::uint32_t frames);

    std::ifstream file_;
    std::vector<float> expected_;
    Passage passage_;
    std::int64_t frame_ = 0;
    std::uint64_t samples_ = 0;
    std::uint64_t different_ = 0;
    double largest_ = 0;
    bool eventsDiffer_ = false;
    std::string first_;
};

} // namespace conformance
