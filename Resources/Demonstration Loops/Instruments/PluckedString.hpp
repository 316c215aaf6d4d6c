#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// A plucked string: a burst of noise circulates in a delay line whose filter
/// takes the high partials first (Karplus and Strong 1983, tuned and with a
/// pick position after Jaffe and Smith 1983).
class PluckedString : public Instrument
{
public:
    struct Character {
        double ring;         ///< seconds to -60 dB at a
        double damping;      ///< 0 (bright) to 0.5 (dark): loss of high partials a round
        double pickPosition; ///< share of the string's length
        double hardness;     ///< cutoff of the burst in Hz for a full stroke
        double release;      ///< seconds to -60 dB once let go
    };

    static constexpr Character nylon = {4.5, 0.34, 0.28, 3500.0, 0.35};
    static constexpr Character steel = {6.0, 0.12, 0.18, 8000.0, 0.3};
    static constexpr Character electric = {7.0, 0.10, 0.22, 6000.0, 0.12};
    static constexpr Character muted = {0.45, 0.30, 0.15, 6000.0, 0.08};
    static constexpr Character harp = {5.0, 0.26, 0.45, 5000.0, 3.0};
    static constexpr Character banjo = {1.6, 0.05, 0.10, 11000.0, 0.4};
    static constexpr Character koto = {3.5, 0.04, 0.07, 9000.0, 1.2};
    static constexpr Character clavinet = {3.0, 0.03, 0.11, 9000.0, 0.05};
    static constexpr Character pizzicato = {0.7, 0.42, 0.30, 3000.0, 0.3};
    static constexpr Character fingerBass = {6.0, 0.40, 0.24, 1600.0, 0.12};
    static constexpr Character slapBass = {5.0, 0.14, 0.12, 7000.0, 0.08};
    static constexpr Character uprightBass = {2.2, 0.46, 0.20, 1300.0, 0.25};

    explicit PluckedString(const Character &character) : character_(character) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Character character_;
};

} // namespace demonstration_loops
