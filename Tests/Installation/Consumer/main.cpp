#include <MIDI/MIDIConstants.hpp>
#include <MIDI/MyMetaEvent.hpp>
#include <Support/Capitals.hpp>
#include <Support/FourCharacterCode.hpp>

#include <array>
#include <cstdint>
#include <iostream>

int main()
{
    test_MyMetaEvent();
    const std::array<std::uint8_t, 3> tempo{0x07, 0xA1, 0x20};
    MyMetaEvent(META_SETTEMPO, tempo).withMIDIMetaEventPtr([](const MIDIMetaEvent *event) {
        std::cout << stringValue(0x61756678) << ' ' << capitals.back() << ' ' << event->dataLength;
    });
}
