#pragma once

#include "Effect/Crossover.hpp"
#include "Effect/FractionalDelay.hpp"
#include "Effect/Rotor.hpp"
#include "Effect/SmoothedValue.hpp"
#include "Effect/SoftDrive.hpp"
#include "Effect/Tick.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace effect
{

/// What a player sets. The ranges are the plug-in's; nothing here is checked again.
struct CabinetSettings {
    /// 0 at rest, 1 slow, 2 fast.
    float speed = 1;
    /// How far rotation moves pitch, level and colour, from 0 to the full cabinet's 1.
    float depth = 0.75F;
    /// From -1, drum alone, through 0 to 1, horn alone.
    float balance = 0;
    /// From 0, clean, to 1.
    float drive = 0.15F;
    /// Degrees between the two microphones.
    float spread = 110;
    /// Factor on the times the rotors take to change speed.
    float inertia = 1;
    /// Decibels on the cabinet's sound.
    float level = 0;
    /// From 0, the input alone, to 1, the cabinet alone, at equal power.
    float mix = 1;

    bool operator==(const CabinetSettings &) const = default;
};

/// Hears of each full turn of the horn.
class TurnListener
{
public:
    virtual ~TurnListener() = default;
    /// The horn faces the front at this frame of the block being processed.
    REALTIME virtual void turned(std::uint32_t frame) = 0;
};

/// The loudspeaker cabinet: an amplifier, a crossover at 800 Hz, a horn and a drum
/// that turn against each other, and two microphones. What is heard of a rotor
/// depends on the cosine u of the angle between it and a microphone: the path is
/// shorter by r·u, the level higher the more it faces the microphone, and the
/// treble more so than the rest, since small things beam high notes alone. The wall
/// behind throws back what the horn sends away from the microphone. Model after
/// J. Smith, S. Serafin, J. Abel, D. Berners, "Doppler Simulation and the Leslie",
/// DAFx-02. The rotors' sound comes
/// late by a tick, the amplifier's filters and the way to the microphones, some 60
/// frames at 48 kHz; the input's own share is not delayed at all.
class RotaryCabinet
{
public:
    static constexpr double crossoverFrequency = 800;
    static constexpr double speedOfSound = 343;
    /// Radii in metres of the circles that the openings run on.
    static constexpr double hornRadius = 0.19;
    static constexpr double drumRadius = 0.12;

    /// Sample rates from 1 kHz up. Not for the audio thread: it allocates.
    explicit RotaryCabinet(double sampleRate);

    /// Silence, rotors at angle 0 and their motors' speed, settings in effect at once.
    REALTIME void reset();
    REALTIME void setSettings(const CabinetSettings &settings);

    /// Any number of frames; outputs may be the inputs. The samples do not depend on
    /// how the stream is cut into blocks. Input that is not finite counts as silence
    /// for the cabinet; with `mix` at 0 the output is the input, bit by bit.
    REALTIME void process(const float *leftIn, const float *rightIn, float *leftOut,
                          float *rightOut, std::uint32_t frames, TurnListener &listener);

    REALTIME const Rotor &horn() const { return horn_; }
    REALTIME const Rotor &drum() const { return drum_; }

private:
    struct Stereo {
        Tick left{};
        Tick right{};
    };
    struct MixGains {
        float dry;
        float wet;
    };
    struct DriveGains {
        float gain;
        float makeUp;
    };
    struct Place {
        float cosine;
        float sine;
    };

    REALTIME static MixGains mixGains(float mix);
    REALTIME static DriveGains driveGains(float drive);
    REALTIME void advance();
    REALTIME void amplify(Tick &mono);
    REALTIME void radiate(const Tick &treble, const Tick &bass);
    REALTIME void mixInto(float *left, float *right, std::size_t from, std::size_t frames) const;

    template <typename Operation>
    void forEachSmoothed(Operation operation)
    {
        for (SmoothedValue *value :
             {&depth_, &hornGain_, &drumGain_, &drive_, &angle_, &level_, &mix_}) {
            operation(*value);
        }
    }

    CabinetSettings settings_;

    Rotor horn_;
    Rotor drum_;
    SoftDrive amplifier_;
    Crossover crossover_;
    FractionalDelay hornLine_;
    FractionalDelay drumLine_;

    SmoothedValue depth_;
    SmoothedValue hornGain_;
    SmoothedValue drumGain_;
    SmoothedValue drive_;
    /// Half the microphones' spread, in radians.
    SmoothedValue angle_;
    SmoothedValue level_;
    SmoothedValue mix_;

    /// In samples, and for the lanes horn left and right, drum left and right.
    std::array<float, 4> radius_{};
    float centre_ = 0;
    float leftWall_ = 0;
    float rightWall_ = 0;
    /// Coefficients and state of the filters that part treble from the rest on the way to each
    /// microphone.
    std::array<float, 4> bodyShare_{};
    std::array<float, 4> body_{};

    /// The tick being filled and the cabinet's answer to the one before.
    Stereo input_;
    Stereo wet_;
    std::size_t filled_ = 0;
    MixGains mixStart_{1, 0};
    MixGains mixEnd_{1, 0};
    DriveGains driveEnd_{1, 1};
    Place placeEnd_{1, 0};
};

} // namespace effect
