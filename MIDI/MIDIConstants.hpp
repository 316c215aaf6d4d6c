#pragma once

#include <cstdint>

// The bytes of MIDI messages and of standard MIDI files by name. Several names share
// a value, so a value has no single name.

// Status bytes. Those of channel messages leave the channel, the low four bits, at 0.

inline constexpr std::uint8_t STATUS_NOTEOFF = 0x80;
inline constexpr std::uint8_t STATUS_NOTEON = 0x90;
inline constexpr std::uint8_t STATUS_PPRESSURE = 0xA0;
inline constexpr std::uint8_t STATUS_CONTROLLER = 0xB0;
inline constexpr std::uint8_t STATUS_PROGRAM = 0xC0;
inline constexpr std::uint8_t STATUS_CPRESSURE = 0xD0;
inline constexpr std::uint8_t STATUS_PITCHBEND = 0xE0;
inline constexpr std::uint8_t STATUS_SYSEX = 0xF0;
inline constexpr std::uint8_t STATUS_TIMECODE = 0xF1;
inline constexpr std::uint8_t STATUS_SONGPOSITION = 0xF2;
inline constexpr std::uint8_t STATUS_SONGSELECT = 0xF3;
inline constexpr std::uint8_t STATUS_RESERVED1 = 0xF4;
inline constexpr std::uint8_t STATUS_RESERVED2 = 0xF5;
inline constexpr std::uint8_t STATUS_TUNEREQUEST = 0xF6;
inline constexpr std::uint8_t STATUS_EOX = 0xF7;
inline constexpr std::uint8_t STATUS_TIMINGCLOCK = 0xF8;
inline constexpr std::uint8_t STATUS_RESERVED3 = 0xF9;
inline constexpr std::uint8_t STATUS_START = 0xFA;
inline constexpr std::uint8_t STATUS_CONTINUE = 0xFB;
inline constexpr std::uint8_t STATUS_STOP = 0xFC;
inline constexpr std::uint8_t STATUS_RESERVED4 = 0xFD;
inline constexpr std::uint8_t STATUS_ACTIVESENSING = 0xFE;
inline constexpr std::uint8_t STATUS_RESET = 0xFF;
/// A reserved status, not the FF that marks a meta event in a file.
inline constexpr std::uint8_t STATUS_META = STATUS_RESERVED4;

// Controller numbers. Those without a name of their own carry the number in decimal.

inline constexpr std::uint8_t CONTROLLER_BANKSELECT_MSB = 0x00;
inline constexpr std::uint8_t CONTROLLER_MODWHEEL = 0x01;
inline constexpr std::uint8_t CONTROLLER_003 = 0x03;
inline constexpr std::uint8_t CONTROLLER_DATA_MSB = 0x06;
inline constexpr std::uint8_t CONTROLLER_VOLUME = 0x07;
inline constexpr std::uint8_t CONTROLLER_008 = 0x08;
inline constexpr std::uint8_t CONTROLLER_009 = 0x09;
inline constexpr std::uint8_t CONTROLLER_PAN = 0x0A;
inline constexpr std::uint8_t CONTROLLER_EXPRESSION = 0x0B;
inline constexpr std::uint8_t CONTROLLER_016 = 0x10;
inline constexpr std::uint8_t CONTROLLER_017 = 0x11;
inline constexpr std::uint8_t CONTROLLER_018 = 0x12;
inline constexpr std::uint8_t CONTROLLER_019 = 0x13;
inline constexpr std::uint8_t CONTROLLER_020 = 0x14;
inline constexpr std::uint8_t CONTROLLER_021 = 0x15;
inline constexpr std::uint8_t CONTROLLER_022 = 0x16;
inline constexpr std::uint8_t CONTROLLER_023 = 0x17;
inline constexpr std::uint8_t CONTROLLER_024 = 0x18;
inline constexpr std::uint8_t CONTROLLER_025 = 0x19;
inline constexpr std::uint8_t CONTROLLER_026 = 0x1A;
inline constexpr std::uint8_t CONTROLLER_027 = 0x1B;
inline constexpr std::uint8_t CONTROLLER_028 = 0x1C;
inline constexpr std::uint8_t CONTROLLER_029 = 0x1D;
inline constexpr std::uint8_t CONTROLLER_030 = 0x1E;
inline constexpr std::uint8_t CONTROLLER_031 = 0x1F;
inline constexpr std::uint8_t CONTROLLER_BANKSELECT_LSB = 0x20;
inline constexpr std::uint8_t CONTROLLER_SUSTAIN = 0x40;
inline constexpr std::uint8_t CONTROLLER_PORTA = 0x41;
inline constexpr std::uint8_t CONTROLLER_HOLD2 = 0x45;
inline constexpr std::uint8_t CONTROLLER_RESONANCE = 0x47;
inline constexpr std::uint8_t CONTROLLER_RELEASE = 0x48;
inline constexpr std::uint8_t CONTROLLER_ATTACK = 0x49;
inline constexpr std::uint8_t CONTROLLER_CUTOFF = 0x4A;
inline constexpr std::uint8_t CONTROLLER_DECAY = 0x4B;
inline constexpr std::uint8_t CONTROLLER_SUSTAIN2 = 0x4C;
inline constexpr std::uint8_t CONTROLLER_102 = 0x66;
inline constexpr std::uint8_t CONTROLLER_103 = 0x67;
inline constexpr std::uint8_t CONTROLLER_104 = 0x68;
inline constexpr std::uint8_t CONTROLLER_105 = 0x69;
inline constexpr std::uint8_t CONTROLLER_106 = 0x6A;
inline constexpr std::uint8_t CONTROLLER_107 = 0x6B;
inline constexpr std::uint8_t CONTROLLER_108 = 0x6C;
inline constexpr std::uint8_t CONTROLLER_109 = 0x6D;
inline constexpr std::uint8_t CONTROLLER_110 = 0x6E;
inline constexpr std::uint8_t CONTROLLER_111 = 0x6F;
inline constexpr std::uint8_t CONTROLLER_112 = 0x70;
inline constexpr std::uint8_t CONTROLLER_RESET_CONTROLLERS = 0x79;
inline constexpr std::uint8_t CONTROLLER_NOTES_OFF = 0x7B;
/// The number of all notes off, 123, not the 120 of all sounds off.
inline constexpr std::uint8_t CONTROLLER_SOUNDS_OFF = 0x7B;

// Types of meta events in a standard MIDI file.

inline constexpr std::uint8_t META_SEQUENCENUMBER = 0x00;
inline constexpr std::uint8_t META_TEXT = 0x01;
inline constexpr std::uint8_t META_COPYRIGHT = 0x02;
inline constexpr std::uint8_t META_TRACKNAME = 0x03;
inline constexpr std::uint8_t META_INSTRUMENTNAME = 0x04;
inline constexpr std::uint8_t META_LYRICS = 0x05;
inline constexpr std::uint8_t META_MARKER = 0x06;
inline constexpr std::uint8_t META_CUEPOINT = 0x07;
inline constexpr std::uint8_t META_PROGRAMNAME = 0x08;
inline constexpr std::uint8_t META_DEVICENAME = 0x09;
inline constexpr std::uint8_t META_CHANNELPREFIX = 0x20;
inline constexpr std::uint8_t META_MIDIPORT = 0x21;
inline constexpr std::uint8_t META_EOT = 0x2F;
inline constexpr std::uint8_t META_SETTEMPO = 0x51;
/// The SMPTE offset.
inline constexpr std::uint8_t META_SMTPOFFSET = 0x54;
inline constexpr std::uint8_t META_TIMESIGNATURE = 0x58;
inline constexpr std::uint8_t META_KEYSIGNATURE = 0x59;
inline constexpr std::uint8_t META_SPECIFIC = 0x7F;
inline constexpr std::uint8_t META_SYSEX = 0xF0;

// Markers of our own, all the same: what stands for no type of a file.

inline constexpr std::uint8_t META_UNKNOWN = 0xFF;
inline constexpr std::uint8_t META_EXTENDEDNOTE = 0xFF;
inline constexpr std::uint8_t META_AUPARAMETER = 0xFF;
inline constexpr std::uint8_t META_AUPRESET = 0xFF;
