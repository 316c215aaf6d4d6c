#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace platform::audio
{

/// The bytes of a regular file, kept readable after its name has gone. Reading
/// gives up past a deadline, so that a demuxer lost in a hostile file comes back.
/// One thread at a time.
class FileInput
{
public:
    /// Never blocks: what is not a regular file is a `PlatformError`, as is a file
    /// that is missing, forbidden or empty.
    explicit FileInput(const std::string &path);
    ~FileInput();
    FileInput(const FileInput &) = delete;
    FileInput &operator=(const FileInput &) = delete;

    /// In bytes, at this moment: the file may grow or shrink.
    std::int64_t size() const noexcept;

    /// Reads at `offset`; answers how many bytes: fewer at the end of the file,
    /// none after a fault.
    std::size_t readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const noexcept;

    /// From now on reading works for `time`.
    void allow(std::chrono::steady_clock::duration time) noexcept;
    bool isOverdue() const noexcept;

private:
    int descriptor_;
    std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
};

} // namespace platform::audio
