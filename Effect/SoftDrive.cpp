#include "Effect/SoftDrive.hpp"

#include "Effect/KaiserWindow.hpp"

#include <algorithm>
#include <cmath>

namespace effect
{

namespace
{

constexpr double kaiserBeta = 6.5;

/// The mean of two samples of the doubled rate loses cos(π f / 2 f_s); three points
/// with this weight beside the centre win it back to within 0.1 dB up to f_s / 4.
constexpr float brightness = 0.0378F;

template <typename Stretch>
void keepPast(Stretch &stretch)
{
    std::copy(stretch.begin() + tickFrames, stretch.end(), stretch.begin());
}

} // namespace

SoftDrive::SoftDrive()
{
    double sum = 0;
    std::array<double, pairs> weights{};
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        const double distance = static_cast<double>(pair) + 0.5;
        weights[pair] = windowedSinc(distance, static_cast<double>(pairs), kaiserBeta);
        sum += 2 * weights[pair];
    }
    std::transform(weights.begin(), weights.end(), weights_.begin(),
                   [sum](double weight) { return static_cast<float>(weight / sum); });
}

void SoftDrive::reset()
{
    for (Stretch *stretch : {&input_, &on_, &between_, &bentOn_, &bentBetween_, &output_}) {
        stretch->fill(0);
    }
}

void SoftDrive::process(Tick &samples, Ramp gain, Ramp makeUp)
{
    keepPast(input_);
    for (std::size_t n = 0; n < tickFrames; ++n) {
        input_[tickFrames + n] = samples[n] * gain.at(n);
    }
    oversample();
    bend();
    keepPast(output_);
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const std::size_t at = tickFrames + n;
        float sides = 0;
        for (std::size_t pair = 0; pair < pairs; ++pair) {
            sides += weights_[pair] *
                     (bentBetween_[at - pairs - pair] + bentBetween_[at - pairs + 1 + pair]);
        }
        output_[at] = 0.5F * (bentOn_[at - pairs + 1] + sides);
    }
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const std::size_t at = tickFrames + n - 1;
        const float bright = (1.0F + 2.0F * brightness) * output_[at] -
                             brightness * (output_[at - 1] + output_[at + 1]);
        samples[n] = bright * makeUp.at(n);
    }
}

void SoftDrive::oversample()
{
    keepPast(on_);
    keepPast(between_);
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const std::size_t at = tickFrames + n;
        float sides = 0;
        for (std::size_t pair = 0; pair < pairs; ++pair) {
            sides += weights_[pair] * (input_[at - pairs - pair] + input_[at - pairs + 1 + pair]);
        }
        on_[at] = input_[at - pairs];
        between_[at] = sides;
    }
}

void SoftDrive::bend()
{
    // One entry of the tick before stands in front.
    constexpr std::size_t before = tickFrames - 1;
    std::array<float, tickFrames + 1> rootOn;
    std::array<float, tickFrames + 1> rootBetween;
    for (std::size_t n = 0; n <= tickFrames; ++n) {
        rootOn[n] = std::sqrt(1.0F + on_[before + n] * on_[before + n]);
        rootBetween[n] = std::sqrt(1.0F + between_[before + n] * between_[before + n]);
    }
    keepPast(bentOn_);
    keepPast(bentBetween_);
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const std::size_t at = tickFrames + n;
        bentOn_[at] = (between_[at - 1] + on_[at]) / (rootBetween[n] + rootOn[n + 1]);
        bentBetween_[at] = (on_[at] + between_[at]) / (rootOn[n + 1] + rootBetween[n + 1]);
    }
}

} // namespace effect
