#include "Effect/SpeedSteering.hpp"

#include "Effect/Rotor.hpp"

#include <algorithm>

namespace effect
{

namespace
{

constexpr std::uint8_t slowNote = 36;
constexpr std::uint8_t fastNote = 72;

constexpr std::uint8_t noteOff = 0x80;
constexpr std::uint8_t noteOn = 0x90;
constexpr std::uint8_t controlChange = 0xB0;
constexpr std::uint8_t systemReset = 0xFF;

constexpr std::uint8_t modulationWheel = 1;
constexpr std::uint8_t sustainPedal = 64;
constexpr std::uint8_t allSoundOff = 120;
constexpr std::uint8_t resetAllControllers = 121;
constexpr std::uint8_t allNotesOff = 123;

} // namespace

float SpeedSteering::positionOf(std::uint8_t note)
{
    if (note < slowNote) {
        return 0;
    }
    const float steps = static_cast<float>(std::min(note, fastNote) - slowNote);
    return Rotor::slowPosition + steps / static_cast<float>(fastNote - slowNote) *
                                     (Rotor::fastPosition - Rotor::slowPosition);
}

void SpeedSteering::reset()
{
    wheel_ = 0;
    pedal_ = false;
    heldCount_ = 0;
}

void SpeedSteering::receive(const std::uint8_t *message, std::size_t size)
{
    if (size > 0 && message[0] == systemReset) {
        reset();
    }
    if (size < 3 || ((message[1] | message[2]) & 0x80) != 0) {
        return;
    }
    switch (message[0] & 0xF0) {
    case noteOff:
        release(message[1]);
        break;
    case noteOn:
        release(message[1]);
        if (message[2] > 0) {
            press(message[1]);
        }
        break;
    case controlChange:
        control(message[1], message[2]);
        break;
    default:
        break;
    }
}

float SpeedSteering::position() const
{
    if (heldCount_ > 0) {
        return positionOf(held_[heldCount_ - 1]);
    }
    const float middle = (Rotor::slowPosition + Rotor::fastPosition) / 2;
    const float opposite = parameter_ < middle ? Rotor::fastPosition : Rotor::slowPosition;
    const float way = pedal_ ? 1 - wheel_ : wheel_;
    return parameter_ + way * (opposite - parameter_);
}

void SpeedSteering::press(std::uint8_t note)
{
    held_[heldCount_] = note;
    ++heldCount_;
}

void SpeedSteering::release(std::uint8_t note)
{
    const auto end = held_.begin() + static_cast<std::ptrdiff_t>(heldCount_);
    heldCount_ = static_cast<std::size_t>(std::remove(held_.begin(), end, note) - held_.begin());
}

void SpeedSteering::control(std::uint8_t controller, std::uint8_t value)
{
    if (controller == modulationWheel) {
        wheel_ = static_cast<float>(value) / 127.0F;
    } else if (controller == sustainPedal) {
        pedal_ = value >= 64;
    } else if (controller == resetAllControllers) {
        wheel_ = 0;
        pedal_ = false;
    } else if (controller == allSoundOff || controller >= allNotesOff) {
        heldCount_ = 0;
    }
}

} // namespace effect
