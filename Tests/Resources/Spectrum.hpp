#pragma once

#include <cstddef>
#include <vector>

/// Power spectra of a mono signal that is a loop: windows run on over its end.
class Spectrum
{
public:
    static constexpr std::size_t size = 2048; ///< frames of a (Hann) window

    /// Powers of bins 0 to size / 2 of the window that starts at `start`.
    static std::vector<double> powers(const std::vector<double> &signal, std::size_t start);

    /// Hz of a bin at 48 kHz.
    static double frequency(std::size_t bin);
};
