#include "Platform/LV2/TimePosition.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <lv2/atom/atom.h>
#include <lv2/time/time.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace platform::lv2
{

namespace
{

// Types as the extension's own data gives them.
enum class Type : std::uint8_t { longInteger, integer, floating, doubleFloating };

struct Quantity {
    const char *uri;
    Type type;
};

constexpr std::array<Quantity, timeQuantityCount> quantities{{
    {LV2_TIME__frame, Type::longInteger},
    {LV2_TIME__framesPerSecond, Type::floating},
    {LV2_TIME__speed, Type::floating},
    {LV2_TIME__bar, Type::longInteger},
    {LV2_TIME__barBeat, Type::floating},
    {LV2_TIME__beat, Type::doubleFloating},
    {LV2_TIME__beatUnit, Type::integer},
    {LV2_TIME__beatsPerBar, Type::floating},
    {LV2_TIME__beatsPerMinute, Type::floating},
}};

constexpr double secondsPerMinute = 60.0;
constexpr double quarter = 4.0;

/// Puts values behind one another, each at a multiple of eight bytes as atoms are.
class Writer
{
public:
    explicit Writer(TimePosition::Body &body) : body_(body) {}

    template <typename T>
    void put(const T &value) noexcept
    {
        std::memcpy(body_.data() + used_, &value, sizeof value);
        used_ += sizeof value;
    }
    template <typename T>
    void putAtom(LV2_URID type, const T &value) noexcept
    {
        put(LV2_Atom{sizeof value, type});
        put(value);
        if constexpr (sizeof value < sizeof(std::uint64_t))
            put(std::uint32_t{0});
    }
    std::size_t used() const { return used_; }

private:
    TimePosition::Body &body_;
    std::size_t used_ = 0;
};

constexpr std::size_t longestBody =
    sizeof(LV2_Atom_Object_Body) +
    timeQuantityCount * (sizeof(LV2_Atom_Property_Body) + sizeof(std::uint64_t));
static_assert(longestBody <= sizeof(TimePosition::Body));

} // namespace

std::optional<TimeQuantity> timeQuantityOf(std::string_view uri)
{
    const auto found = std::find_if(quantities.begin(), quantities.end(),
                                    [&](const Quantity &each) { return uri == each.uri; });
    if (found == quantities.end())
        return std::nullopt;
    return static_cast<TimeQuantity>(found - quantities.begin());
}

TimePosition::TimePosition(double sampleRate)
{
    std::transform(quantities.begin(), quantities.end(), keys_.begin(),
                   [](const Quantity &each) { return SymbolTable::shared().map(each.uri); });
    at(TimeQuantity::framesPerSecond) = sampleRate;
    at(TimeQuantity::speed) = 1.0;
    at(TimeQuantity::beatUnit) = quarter;
    at(TimeQuantity::beatsPerBar) = beatsPerBar;
    at(TimeQuantity::beatsPerMinute) = beatsPerMinute;
}

void TimePosition::moveTo(std::int64_t sampleTime) noexcept
{
    const auto frame = static_cast<double>(sampleTime);
    const double beat =
        frame / value(TimeQuantity::framesPerSecond) * (beatsPerMinute / secondsPerMinute);
    const double bar = std::floor(beat / beatsPerBar);
    at(TimeQuantity::frame) = frame;
    at(TimeQuantity::beat) = beat;
    at(TimeQuantity::bar) = bar;
    at(TimeQuantity::barBeat) = beat - bar * beatsPerBar;
}

std::span<const std::uint8_t> TimePosition::write(Body &body) const noexcept
{
    const Symbols &symbols = Symbols::shared();
    Writer writer(body);
    writer.put(LV2_Atom_Object_Body{0, symbols.timePosition});
    for (std::size_t i = 0; i < timeQuantityCount; ++i) {
        writer.put(keys_[i]);
        writer.put(std::uint32_t{0}); // no context
        switch (quantities[i].type) {
        case Type::longInteger:
            writer.putAtom(symbols.atomLong, static_cast<std::int64_t>(values_[i]));
            break;
        case Type::integer:
            writer.putAtom(symbols.atomInt, static_cast<std::int32_t>(values_[i]));
            break;
        case Type::floating:
            writer.putAtom(symbols.atomFloat, static_cast<float>(values_[i]));
            break;
        case Type::doubleFloating:
            writer.putAtom(symbols.atomDouble, values_[i]);
            break;
        }
    }
    return {body.data(), writer.used()};
}

} // namespace platform::lv2
