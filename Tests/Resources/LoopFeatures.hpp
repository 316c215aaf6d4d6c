#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <array>
#include <cstddef>
#include <vector>

/// What a loop sounds like, in numbers.
struct LoopFeatures {
    static constexpr std::size_t bandCount = 20;

    std::array<double, bandCount> bands{};    ///< mean level of mel bands in dB, their mean removed
    std::array<double, bandCount> movement{}; ///< standard deviation of each in dB
    std::array<double, 12> chroma{};          ///< share of each pitch class
    double centroid = 0.0;                    ///< Hz, weighted by power
    double flatness = 0.0;                    ///< geometric over arithmetic mean of power, 0 to 1
    double onsets = 0.0;                      ///< note onsets a second
    double pulse = 0.0;                       ///< seconds between onsets that repeat best
    double width = 0.0;                       ///< power of the sides over that of the middle

    static LoopFeatures of(const demonstration_loops::StereoLoop &loop);

    /// The features as one list of numbers, for `distances`.
    [[nodiscard]] std::vector<double> list() const;
};

/// Distance of every pair: each feature is divided by its standard deviation
/// over the set, then the root of the mean square difference is taken within
/// each of the groups bands, movement, chroma and the rest, and over the groups.
/// Two pieces drawn at random are about 1.4 apart, a piece and itself 0.
std::vector<std::vector<double>> distances(const std::vector<LoopFeatures> &set);

/// How much a place in a loop stands out as a click: the largest second
/// difference of the five frames around it over the largest one of the 10 ms on
/// either side. The attack of a note raises both, a break in the wave only the first.
double prominence(const std::vector<double> &channel, std::size_t place);
