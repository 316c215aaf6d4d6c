#include "../MidiWriter.hpp"

#include <lv2/resize-port/resize-port.h>

#include <array>
#include <limits>

namespace
{

/// Emits a message of 1 byte and, when port 0 has been enlarged for it, one of 200,000.
/// Port 1 tells what became of enlarging it, of enlarging it beyond all measure and of
/// enlarging a port that has no events, and how much room there was at first.
class Growing
{
public:
    Growing(double, const LV2_Feature *const *features)
        : writer_(features),
          resize_(testplugin::feature<LV2_Resize_Port_Resize>(features, LV2_RESIZE_PORT__resize))
    {
    }

    void connect(std::uint32_t port, void *data)
    {
        if (port == 0)
            out_ = static_cast<LV2_Atom_Sequence *>(data);
        else
            report_ = static_cast<float *>(data);
    }

    static const void *extension(const char *) { return nullptr; }

    void run(std::uint32_t frames)
    {
        constexpr std::uint32_t enough = 210000;
        const std::uint32_t room = out_->atom.size;
        writer_.begin(*out_);
        writer_.emit(0, "\xF8", 1);
        const int grown = resize(0, enough);
        if (grown == LV2_RESIZE_PORT_SUCCESS) {
            writer_.setRoom(enough - static_cast<std::uint32_t>(sizeof(LV2_Atom)));
            writer_.emit(1, dump_.data(), static_cast<std::uint32_t>(dump_.size()));
        }
        const std::array<int, 4> values{grown, resize(0, std::numeric_limits<std::size_t>::max()),
                                        resize(1, enough), static_cast<int>(room)};
        for (std::uint32_t i = 0; i < frames && i < values.size(); ++i)
            report_[i] = static_cast<float>(values[i]);
    }

private:
    int resize(std::uint32_t port, std::size_t size)
    {
        return resize_->resize(resize_->data, port, size);
    }

    testplugin::MidiWriter writer_;
    LV2_Resize_Port_Resize *resize_;
    LV2_Atom_Sequence *out_ = nullptr;
    float *report_ = nullptr;
    std::array<std::uint8_t, 200000> dump_{0xF0};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Growing>("urn:test:growing"))
