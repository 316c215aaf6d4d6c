#include "../MidiWriter.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <thread>

namespace
{

/// Copies port 0 to port 1 and has port 2 for MIDI. Each class below adds its own.
class Copy
{
public:
    Copy(double, const LV2_Feature *const *features) : writer_(features) {}

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }
    static const void *extension(const char *) { return nullptr; }

protected:
    void copy(std::uint32_t frames)
    {
        writer_.begin(events());
        std::copy_n(in(), frames, out());
    }
    const float *in() const { return static_cast<const float *>(ports_[0]); }
    float *out() { return static_cast<float *>(ports_[1]); }
    LV2_Atom_Sequence &events() { return *static_cast<LV2_Atom_Sequence *>(ports_[2]); }
    testplugin::MidiWriter &writer() { return writer_; }

private:
    testplugin::MidiWriter writer_;
    std::array<void *, 3> ports_{};
};

/// Ends each block with a sample that no device plays.
template <const float &sample>
class Sample : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        if (frames > 0)
            out()[frames - 1] = sample;
    }
};

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float denormal = std::numeric_limits<float>::denorm_min() * 1000.0F;

/// Calculates denormal numbers: a tail that has almost died away.
class Denormal : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        volatile float tail = std::numeric_limits<float>::min();
        for (std::uint32_t i = 0; i < frames; ++i)
            out()[i] = tail * 0.25F;
    }
};

/// Writes a few frames beyond the end of its block.
class Overrun : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        if (frames > 0)
            std::fill_n(out() + frames, 3, 0.75F);
    }
};

/// Writes beyond its buffer for events.
class EventOverrun : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        const std::uint32_t room = events().atom.size;
        copy(frames);
        std::memset(reinterpret_cast<std::byte *>(&events()) + sizeof(LV2_Atom) + room, 0, 8);
    }
};

/// Takes longer than any block sounds.
class Slow : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        if (frames > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
};

/// Fills all the room there is with notes, in each block.
class Torrent : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        while (frames > 0 && writer().emit(0, "\x90\x3C\x64", 3)) {
        }
    }
};

/// Emits what is no MIDI, at times that the block does not have.
class Malformed : public Copy
{
public:
    using Copy::Copy;

    void run(std::uint32_t frames)
    {
        copy(frames);
        writer().emit(-5, "\x3C", 1); // data without a status
        writer().emit(std::numeric_limits<std::int64_t>::max(), "\x90\x3C", 2); // cut off
        writer().emit(frames, "\xF0\x01\x02\x03", 4);                           // never ends
        writer().emit(0, "", 0);
        writer().emit(std::numeric_limits<std::int64_t>::min(), "\xFF\xFF\xFF", 3);
    }
};

} // namespace

TEST_PLUGINS(testplugin::describe<Sample<nan>>("urn:test:rude:nan"),
             testplugin::describe<Sample<infinity>>("urn:test:rude:infinity"),
             testplugin::describe<Sample<denormal>>("urn:test:rude:copied-denormal"),
             testplugin::describe<Denormal>("urn:test:rude:denormal"),
             testplugin::describe<Overrun>("urn:test:rude:overrun"),
             testplugin::describe<EventOverrun>("urn:test:rude:event-overrun"),
             testplugin::describe<Slow>("urn:test:rude:slow"),
             testplugin::describe<Torrent>("urn:test:rude:torrent"),
             testplugin::describe<Malformed>("urn:test:rude:malformed"))
