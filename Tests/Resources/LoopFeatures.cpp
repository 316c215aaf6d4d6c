#include "Tests/Resources/LoopFeatures.hpp"

#include "Tests/Resources/Spectrum.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{

constexpr std::size_t hop = 512;
constexpr double hopSeconds = hop / 48000.0;
using Bands = std::array<double, LoopFeatures::bandCount>;

double melOf(double hertz)
{
    return 2595.0 * std::log10(1.0 + hertz / 700.0);
}

/// The mel band that a bin falls into, from 40 Hz to 16 kHz; `bandCount` outside.
std::size_t bandOf(std::size_t bin)
{
    const double low = melOf(40.0);
    const double high = melOf(16000.0);
    const double place = (melOf(Spectrum::frequency(bin)) - low) / (high - low);
    if (place < 0.0 || place >= 1.0)
        return LoopFeatures::bandCount;
    return static_cast<std::size_t>(place * LoopFeatures::bandCount);
}

std::vector<double> middleOf(const demonstration_loops::StereoLoop &loop, double sign)
{
    std::vector<double> result(loop.frames());
    for (std::size_t i = 0; i < loop.frames(); ++i)
        result[i] = 0.5 * (loop.left[i] + sign * loop.right[i]);
    return result;
}

double power(const std::vector<double> &signal)
{
    return std::inner_product(signal.begin(), signal.end(), signal.begin(), 0.0);
}

/// Rises of the bands' levels since the frame before, their mean.
std::vector<double> novelty(const std::vector<Bands> &levels)
{
    std::vector<double> result(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const Bands &before = levels[(i + levels.size() - 2) % levels.size()];
        for (std::size_t band = 0; band < before.size(); ++band)
            result[i] += std::max(0.0, levels[i][band] - before[band]) / LoopFeatures::bandCount;
    }
    return result;
}

/// Peaks of the novelty that rise above what is around them, 50 ms apart or more.
double countOnsets(const std::vector<double> &curve)
{
    const std::size_t count = curve.size();
    const auto at = [&](std::size_t i) { return curve[i % count]; };
    double onsets = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        double mean = 0.0;
        bool top = true;
        for (std::size_t k = 0; k <= 20; ++k) {
            mean += at(i + count - 10 + k) / 21.0;
            if (k >= 6 && k <= 14 && k != 10 &&
                (at(i + count - 10 + k) > curve[i] ||
                 (k < 10 && at(i + count - 10 + k) == curve[i])))
                top = false;
        }
        if (top && curve[i] > mean + 1.2)
            onsets += 1.0;
    }
    return onsets;
}

/// The lag between 0.1 and 1.5 s at which the novelty resembles itself most.
double bestPulse(const std::vector<double> &curve)
{
    const double mean =
        std::accumulate(curve.begin(), curve.end(), 0.0) / static_cast<double>(curve.size());
    double best = -1.0;
    double result = 0.0;
    for (auto lag = static_cast<std::size_t>(0.1 / hopSeconds);
         static_cast<double>(lag) * hopSeconds < 1.5 && lag < curve.size() / 2; ++lag) {
        double sum = 0.0;
        for (std::size_t i = 0; i < curve.size(); ++i)
            sum += (curve[i] - mean) * (curve[(i + lag) % curve.size()] - mean);
        if (sum > best) {
            best = sum;
            result = static_cast<double>(lag) * hopSeconds;
        }
    }
    return result;
}

} // namespace

LoopFeatures LoopFeatures::of(const demonstration_loops::StereoLoop &loop)
{
    LoopFeatures result;
    const std::vector<double> middle = middleOf(loop, 1.0);
    result.width = power(middleOf(loop, -1.0)) / power(middle);
    std::vector<Bands> levels;
    double centroidSum = 0.0;
    double powerSum = 0.0;
    double flatnessSum = 0.0;
    for (std::size_t start = 0; start + hop <= loop.frames(); start += hop) {
        const std::vector<double> bins = Spectrum::powers(middle, start);
        Bands sums{};
        double logSum = 0.0;
        double sum = 0.0;
        double count = 0.0;
        for (std::size_t bin = 2; bin < bins.size(); ++bin) {
            const std::size_t band = bandOf(bin);
            if (band >= bandCount)
                continue;
            const double frequency = Spectrum::frequency(bin);
            sums[band] += bins[bin];
            centroidSum += frequency * bins[bin];
            logSum += std::log(bins[bin] + 1.0e-9);
            sum += bins[bin] + 1.0e-9;
            count += 1.0;
            if (frequency > 100.0 && frequency < 2000.0) {
                const double key = 69.0 + 12.0 * std::log2(frequency / 440.0);
                result.chroma[static_cast<std::size_t>(std::lround(key)) % 12] +=
                    std::sqrt(bins[bin]);
            }
        }
        powerSum += sum;
        flatnessSum += std::exp(logSum / count) / (sum / count);
        Bands decibels{};
        for (std::size_t band = 0; band < bandCount; ++band)
            decibels[band] = 10.0 * std::log10(sums[band] + 1.0e-5);
        levels.push_back(decibels);
    }

    const auto count = static_cast<double>(levels.size());
    for (std::size_t band = 0; band < bandCount; ++band) {
        double squares = 0.0;
        for (const Bands &frame : levels) {
            result.bands[band] += frame[band] / count;
            squares += frame[band] * frame[band] / count;
        }
        result.movement[band] =
            std::sqrt(std::max(0.0, squares - result.bands[band] * result.bands[band]));
    }
    const double mean = std::accumulate(result.bands.begin(), result.bands.end(), 0.0) / bandCount;
    for (double &band : result.bands)
        band -= mean;
    const double total = std::accumulate(result.chroma.begin(), result.chroma.end(), 0.0);
    for (double &share : result.chroma)
        share /= total;
    result.centroid = centroidSum / powerSum;
    result.flatness = flatnessSum / count;
    const std::vector<double> curve = novelty(levels);
    result.onsets = countOnsets(curve) / (count * hopSeconds);
    result.pulse = bestPulse(curve);
    return result;
}

std::vector<double> LoopFeatures::list() const
{
    std::vector<double> result(bands.begin(), bands.end());
    result.insert(result.end(), movement.begin(), movement.end());
    result.insert(result.end(), chroma.begin(), chroma.end());
    result.insert(result.end(), {std::log(centroid), std::log(flatness), std::sqrt(onsets),
                                 std::log(pulse), std::log(width + 0.01)});
    return result;
}

std::vector<std::vector<double>> distances(const std::vector<LoopFeatures> &set)
{
    constexpr std::size_t bandCount = LoopFeatures::bandCount;
    const std::array<std::size_t, 5> groups = {0, bandCount, 2 * bandCount, 2 * bandCount + 12,
                                               2 * bandCount + 17};
    std::vector<std::vector<double>> lists;
    lists.reserve(set.size());
    for (const LoopFeatures &features : set)
        lists.push_back(features.list());
    const auto count = static_cast<double>(set.size());
    for (std::size_t k = 0; k < lists.front().size(); ++k) {
        double mean = 0.0;
        double squares = 0.0;
        for (const auto &list : lists) {
            mean += list[k] / count;
            squares += list[k] * list[k] / count;
        }
        const double deviation = std::sqrt(std::max(squares - mean * mean, 1.0e-12));
        for (auto &list : lists)
            list[k] /= deviation;
    }
    std::vector<std::vector<double>> result(set.size(), std::vector<double>(set.size()));
    for (std::size_t i = 0; i < set.size(); ++i) {
        for (std::size_t j = 0; j < set.size(); ++j) {
            double sum = 0.0;
            for (std::size_t g = 0; g + 1 < groups.size(); ++g)
                for (std::size_t k = groups[g]; k < groups[g + 1]; ++k)
                    sum += std::pow(lists[i][k] - lists[j][k], 2) /
                           static_cast<double>(groups[g + 1] - groups[g]) / 4.0;
            result[i][j] = std::sqrt(sum);
        }
    }
    return result;
}

double prominence(const std::vector<double> &channel, std::size_t place)
{
    const std::size_t n = channel.size();
    const auto bend = [&](std::size_t i) {
        return std::abs(channel[(i + n - 1) % n] - 2.0 * channel[i % n] + channel[(i + 1) % n]);
    };
    double here = 0.0;
    double around = 1.0e-5;
    for (std::size_t k = 0; k <= 960; ++k) {
        const double value = bend(place + n - 480 + k);
        if (k >= 478 && k <= 482)
            here = std::max(here, value);
        else
            around = std::max(around, value);
    }
    return here / around;
}
