#include "../MidiWriter.hpp"

#include <array>
#include <cstddef>
#include <cstring>

namespace
{

/// Port 0 takes MIDI, port 1 emits it.
class Ports
{
public:
    Ports(double, const LV2_Feature *const *features) : writer_(features) {}

    void connect(std::uint32_t port, void *data)
    {
        (port == 0 ? in_ : out_) = static_cast<LV2_Atom_Sequence *>(data);
    }

    static const void *extension(const char *) { return nullptr; }

protected:
    void begin() { writer_.begin(*out_); }
    void emit(std::int64_t frame, const void *bytes, std::uint32_t size)
    {
        writer_.emit(frame, bytes, size);
    }

    const LV2_Atom_Sequence &input() const { return *in_; }
    LV2_Atom_Sequence &output() { return *out_; }
    LV2_URID midi() const { return writer_.midi(); }

private:
    testplugin::MidiWriter writer_;
    LV2_Atom_Sequence *in_ = nullptr;
    LV2_Atom_Sequence *out_ = nullptr;
};

/// Emits what it gets.
class Echo : public Ports
{
public:
    using Ports::Ports;

    void run(std::uint32_t)
    {
        begin();
        const auto *start = reinterpret_cast<const std::byte *>(&input());
        std::size_t offset = sizeof(LV2_Atom_Sequence);
        while (offset < sizeof(LV2_Atom) + input().atom.size) {
            const auto *event = reinterpret_cast<const LV2_Atom_Event *>(start + offset);
            if (event->body.type == midi())
                emit(event->time.frames, event + 1, event->body.size);
            offset += sizeof(LV2_Atom_Event) + testplugin::padded(event->body.size);
        }
    }
};

/// Emits messages of 1, 2, 3 and 300 bytes in every block.
class Flood : public Ports
{
public:
    using Ports::Ports;

    void run(std::uint32_t)
    {
        const std::array<std::uint8_t, 3> note{0x90, 60, 100};
        std::array<std::uint8_t, 300> dump{};
        dump.front() = 0xF0;
        dump.back() = 0xF7;
        begin();
        emit(0, "\xF8", 1);
        emit(1, "\xC0\x05", 2);
        emit(2, note.data(), 3);
        emit(3, dump.data(), 300);
    }
};

/// Claims events that reach far beyond the buffer.
class Liar : public Ports
{
public:
    using Ports::Ports;

    void run(std::uint32_t)
    {
        begin();
        emit(0, "\xF8", 1);
        LV2_Atom_Event event{};
        event.body = {0xFFFFFFF0U, midi()};
        std::memcpy(reinterpret_cast<std::byte *>(&output()) + sizeof(LV2_Atom) +
                        output().atom.size,
                    &event, sizeof event);
        output().atom.size += 4096;
    }
};

/// Claims a sequence longer than its buffer.
class Braggart : public Ports
{
public:
    using Ports::Ports;

    void run(std::uint32_t)
    {
        begin();
        emit(0, "\xF8", 1);
        output().atom.size = 0x7FFFFFFFU;
    }
};

} // namespace

TEST_PLUGINS(testplugin::describe<Echo>("urn:test:midi:echo"),
             testplugin::describe<Flood>("urn:test:midi:flood"),
             testplugin::describe<Liar>("urn:test:midi:liar"),
             testplugin::describe<Braggart>("urn:test:midi:braggart"))
