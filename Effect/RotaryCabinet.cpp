#include "Effect/RotaryCabinet.hpp"

#include "Effect/Lanes.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace effect
{

namespace
{

/// Lanes everywhere: horn left, horn right, drum left, drum right.
Lanes hornAndDrum(float horn, float drum)
{
    return Lanes{horn, horn, drum, drum};
}

/// Seconds in which settings glide; depth and the microphones bend the pitch while
/// they move, and so take longer.
constexpr double gainGlide = 0.010;
constexpr double placeGlide = 0.060;

/// Metres by which the walls' reflections travel further than the direct sound.
constexpr float leftDetour = 0.62F;
constexpr float rightDetour = 0.81F;
constexpr float reflection = 0.30F;

/// Where the treble begins to beam, in hertz, and how much below and above it
/// turning moves the level: ±5 and ±15 dB for the horn, ±1 and ±8 for the drum.
constexpr double hornBody = 2500;
constexpr double drumBody = 250;
constexpr float hornBodySwing = 0.30F;
constexpr float hornTrebleSwing = 0.75F;
constexpr float drumBodySwing = 0.08F;
constexpr float drumTrebleSwing = 0.45F;
/// Narrows the beam: u + s·(u² − ½) rises faster than u towards the front, with
/// the same mean.
constexpr float sharpness = 0.25F;

/// Samples beyond this, or not finite, are faults of whoever made them.
constexpr float loudest = 64;

/// The amplifier's gain runs from all but linear to a full growl.
constexpr float cleanGain = 0.05F;
constexpr float driveRange = 160;
/// The level that keeps its loudness through the amplifier: -12 dB.
constexpr float programLevel = 0.25F;

float sane(float sample)
{
    const float kept = std::min(std::max(sample, -loudest), loudest);
    return std::abs(sample) <= std::numeric_limits<float>::max() ? kept : 0.0F;
}

float onePole(double frequency, double sampleRate)
{
    return static_cast<float>(-std::expm1(-2 * std::numbers::pi * frequency / sampleRate));
}

float cosineOf(double turns)
{
    return std::cos(static_cast<float>(turns * (2 * std::numbers::pi)));
}

float sineOf(double turns)
{
    return std::sin(static_cast<float>(turns * (2 * std::numbers::pi)));
}

/// For the steps of a frame, where the series' next terms are below a float's last bit.
float smallCosineOf(double turns)
{
    const double angle = turns * (2 * std::numbers::pi);
    return static_cast<float>(1 - angle * angle / 2);
}

float smallSineOf(double turns)
{
    const double angle = turns * (2 * std::numbers::pi);
    return static_cast<float>(angle - angle * angle * angle / 6);
}

float samplesOf(double metres, double sampleRate)
{
    return static_cast<float>(metres / RotaryCabinet::speedOfSound * sampleRate);
}

double tickSeconds(double sampleRate)
{
    return static_cast<double>(tickFrames) / sampleRate;
}

std::size_t lineLength(double detour, double sampleRate)
{
    const double reach = 2 * RotaryCabinet::hornRadius + detour;
    return static_cast<std::size_t>(samplesOf(reach, sampleRate) + FractionalDelay::minimum + 2);
}

} // namespace

RotaryCabinet::RotaryCabinet(double sampleRate)
    : horn_(hornDesign, sampleRate), drum_(drumDesign, sampleRate),
      crossover_(crossoverFrequency, sampleRate), hornLine_(lineLength(rightDetour, sampleRate)),
      drumLine_(lineLength(0, sampleRate)), depth_(placeGlide, tickSeconds(sampleRate)),
      hornGain_(gainGlide, tickSeconds(sampleRate)), drumGain_(gainGlide, tickSeconds(sampleRate)),
      drive_(gainGlide, tickSeconds(sampleRate)), angle_(placeGlide, tickSeconds(sampleRate)),
      level_(gainGlide, tickSeconds(sampleRate)), mix_(gainGlide, tickSeconds(sampleRate))
{
    const float horn = samplesOf(hornRadius, sampleRate);
    const float drum = samplesOf(drumRadius, sampleRate);
    radius_ = {horn, horn, drum, drum};
    // Half a sample of room, since a rounded cosine may lie beyond 1.
    centre_ = FractionalDelay::minimum + 0.5F + horn;
    leftWall_ = centre_ + samplesOf(leftDetour, sampleRate);
    rightWall_ = centre_ + samplesOf(rightDetour, sampleRate);
    const float hornShare = onePole(hornBody, sampleRate);
    const float drumShare = onePole(drumBody, sampleRate);
    bodyShare_ = {hornShare, hornShare, drumShare, drumShare};

    settings_.speed = -1;
    setSettings(CabinetSettings{});
    reset();
}

void RotaryCabinet::reset()
{
    forEachSmoothed([](SmoothedValue &value) { value.settle(); });
    mixStart_ = mixEnd_ = mixGains(mix_.value());
    driveEnd_ = driveGains(drive_.value());
    placeEnd_ = {std::cos(angle_.value()), std::sin(angle_.value())};
    horn_.reset();
    drum_.reset();
    amplifier_.reset();
    crossover_.reset();
    hornLine_.reset();
    drumLine_.reset();
    body_.fill(0);
    wet_ = {};
    filled_ = 0;
}

void RotaryCabinet::setSettings(const CabinetSettings &settings)
{
    if (settings == settings_) {
        return;
    }
    settings_ = settings;
    horn_.setInertia(settings.inertia);
    drum_.setInertia(settings.inertia);
    horn_.setPosition(settings.speed);
    drum_.setPosition(settings.speed);
    depth_.setTarget(settings.depth);
    hornGain_.setTarget(std::min(1.0F, 1.0F + settings.balance));
    drumGain_.setTarget(std::min(1.0F, 1.0F - settings.balance));
    drive_.setTarget(settings.drive);
    angle_.setTarget(settings.spread * std::numbers::pi_v<float> / 360.0F);
    level_.setTarget(std::pow(10.0F, settings.level / 20.0F));
    mix_.setTarget(settings.mix);
}

RotaryCabinet::MixGains RotaryCabinet::mixGains(float mix)
{
    const float angle = mix * (std::numbers::pi_v<float> / 2);
    return {mix < 1 ? std::cos(angle) : 0, std::sin(angle)};
}

RotaryCabinet::DriveGains RotaryCabinet::driveGains(float drive)
{
    const float gain = cleanGain * std::pow(driveRange, drive);
    const float bent = gain * programLevel;
    return {gain, std::sqrt(1.0F + bent * bent) / gain};
}

void RotaryCabinet::process(const float *leftIn, const float *rightIn, float *leftOut,
                            float *rightOut, std::uint32_t frames, TurnListener &listener)
{
    std::uint32_t done = 0;
    while (done < frames) {
        if (filled_ == tickFrames) {
            advance();
            filled_ = 0;
        }
        const std::size_t count = std::min<std::size_t>(tickFrames - filled_, frames - done);
        std::copy_n(leftIn + done, count, input_.left.begin() + filled_);
        std::copy_n(rightIn + done, count, input_.right.begin() + filled_);
        mixInto(leftOut + done, rightOut + done, filled_, count);
        if (horn_.turn() && *horn_.turn() >= filled_ && *horn_.turn() < filled_ + count) {
            listener.turned(done + static_cast<std::uint32_t>(*horn_.turn() - filled_));
        }
        filled_ += count;
        done += static_cast<std::uint32_t>(count);
    }
}

void RotaryCabinet::mixInto(float *left, float *right, std::size_t from, std::size_t frames) const
{
    if (mixStart_.wet == 0 && mixEnd_.wet == 0) {
        std::copy_n(input_.left.begin() + from, frames, left);
        std::copy_n(input_.right.begin() + from, frames, right);
        return;
    }
    const Ramp dry(mixStart_.dry, mixEnd_.dry);
    const Ramp wet(mixStart_.wet, mixEnd_.wet);
    const bool dryHeard = mixStart_.dry != 0 || mixEnd_.dry != 0;
    for (std::size_t n = 0; n < frames; ++n) {
        const std::size_t at = from + n;
        // A share of nothing must not let through what is not a number.
        const float dryLeft = dryHeard ? input_.left[at] * dry.at(at) : 0;
        const float dryRight = dryHeard ? input_.right[at] * dry.at(at) : 0;
        left[n] = dryLeft + wet_.left[at] * wet.at(at);
        right[n] = dryRight + wet_.right[at] * wet.at(at);
    }
}

void RotaryCabinet::advance()
{
    forEachSmoothed([](SmoothedValue &value) { value.advance(); });
    mixStart_ = mixEnd_;
    if (!mix_.isSettled()) {
        mixEnd_ = mixGains(mix_.value());
    }
    horn_.advance();
    drum_.advance();

    Tick mono;
    for (std::size_t n = 0; n < tickFrames; ++n) {
        mono[n] = 0.5F * (sane(input_.left[n]) + sane(input_.right[n]));
    }
    amplify(mono);
    Tick bass;
    Tick treble;
    crossover_.process(mono, bass, treble);
    radiate(treble, bass);
}

void RotaryCabinet::amplify(Tick &mono)
{
    const DriveGains start = driveEnd_;
    if (!drive_.isSettled()) {
        driveEnd_ = driveGains(drive_.value());
    }
    amplifier_.process(mono, Ramp(start.gain, driveEnd_.gain),
                       Ramp(start.makeUp, driveEnd_.makeUp));
}

void RotaryCabinet::radiate(const Tick &treble, const Tick &bass)
{
    const Place placeStart = placeEnd_;
    if (!angle_.isSettled()) {
        placeEnd_ = {std::cos(angle_.value()), std::sin(angle_.value())};
    }
    const Ramp across(placeStart.cosine, placeEnd_.cosine);
    const Ramp aside(placeStart.sine, placeEnd_.sine);
    const Ramp depth(depth_.previous(), depth_.value());
    const Ramp hornGain(hornGain_.previous(), hornGain_.value());
    const Ramp drumGain(drumGain_.previous(), drumGain_.value());
    const Ramp level(level_.previous(), level_.value());

    // The left microphone stands at plus the angle, the right at minus; the drum
    // runs backwards. Both are signs on the sine in cos(a - b) = cos a cos b + sin a sin b.
    const Lanes sign{1, -1, -1, 1};
    Lanes cosine = hornAndDrum(cosineOf(horn_.angle()), cosineOf(drum_.angle()));
    Lanes sine = sign * hornAndDrum(sineOf(horn_.angle()), sineOf(drum_.angle()));
    const Lanes stepCosine = hornAndDrum(smallCosineOf(horn_.step()), smallCosineOf(drum_.step()));
    const Lanes stepSine = sign * hornAndDrum(smallSineOf(horn_.step()), smallSineOf(drum_.step()));

    const Lanes radius = loadLanes(radius_.data());
    const Lanes bodyShare = loadLanes(bodyShare_.data());
    const Lanes bodySwing = hornAndDrum(hornBodySwing, drumBodySwing);
    const Lanes trebleSwing = hornAndDrum(hornTrebleSwing, drumTrebleSwing);
    const Lanes walls{leftWall_, rightWall_, centre_, centre_};
    Lanes body = loadLanes(body_.data());

    hornLine_.write(treble);
    drumLine_.write(bass);

    // One step at a time for the whole tick, so that each keeps to the registers.
    std::array<Lanes, tickFrames> facing;
    for (std::size_t n = 0; n < tickFrames; ++n) {
        facing[n] = cosine * across.at(n) + sine * aside.at(n);
        const Lanes turned = cosine * stepCosine - sine * stepSine;
        sine = sine * stepCosine + cosine * stepSine;
        cosine = turned;
    }

    std::array<Lanes, tickFrames> heard;
    std::array<Lanes, tickFrames> thrown;
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const Lanes swing = radius * (facing[n] * depth.at(n));
        const FractionalDelay::Places direct(centre_ - swing);
        const FractionalDelay::Places detour(walls + swing);
        heard[n] = sumsOf(hornLine_.readFine(n, direct, 0), hornLine_.readFine(n, direct, 1),
                          drumLine_.readPlain(n, direct, 2), drumLine_.readPlain(n, direct, 3));
        thrown[n] = sumsOf(hornLine_.readPlain(n, detour, 0), hornLine_.readPlain(n, detour, 1),
                           Lanes{}, Lanes{});
    }

    for (std::size_t n = 0; n < tickFrames; ++n) {
        const Lanes beam = facing[n] + sharpness * (facing[n] * facing[n] - 0.5F);
        body += bodyShare * (heard[n] - body);
        const Lanes swung = bodySwing * body + trebleSwing * (heard[n] - body);
        const Lanes behind = thrown[n] * ((0.5F - 0.5F * facing[n]) * reflection);
        const Lanes sound = (heard[n] + depth.at(n) * (beam * swung + behind)) *
                            (hornAndDrum(hornGain.at(n), drumGain.at(n)) * level.at(n));
        wet_.left[n] = sound[0] + sound[2];
        wet_.right[n] = sound[1] + sound[3];
    }
    std::memcpy(body_.data(), &body, sizeof body);
}

} // namespace effect
