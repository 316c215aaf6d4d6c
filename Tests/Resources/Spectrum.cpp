#include "Tests/Resources/Spectrum.hpp"

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace
{

/// In place, radix two.
void transform(std::vector<std::complex<double>> &x)
{
    const std::size_t n = x.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1U;
        for (; (j & bit) != 0; bit >>= 1U)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(x[i], x[j]);
    }
    for (std::size_t length = 2; length <= n; length *= 2) {
        const auto turn = std::polar(1.0, -2.0 * std::numbers::pi / static_cast<double>(length));
        for (std::size_t i = 0; i < n; i += length) {
            std::complex<double> w = 1.0;
            for (std::size_t k = i; k < i + length / 2; ++k) {
                const auto odd = x[k + length / 2] * w;
                x[k + length / 2] = x[k] - odd;
                x[k] += odd;
                w *= turn;
            }
        }
    }
}

std::vector<double> makeWindow()
{
    std::vector<double> window(Spectrum::size);
    for (std::size_t i = 0; i < window.size(); ++i)
        window[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) /
                                         static_cast<double>(window.size()));
    return window;
}

} // namespace

std::vector<double> Spectrum::powers(const std::vector<double> &signal, std::size_t start)
{
    static const std::vector<double> window = makeWindow();
    std::vector<std::complex<double>> x(size);
    for (std::size_t i = 0; i < size; ++i)
        x[i] = signal[(start + i) % signal.size()] * window[i];
    transform(x);
    std::vector<double> result(size / 2 + 1);
    for (std::size_t bin = 0; bin < result.size(); ++bin)
        result[bin] = std::norm(x[bin]);
    return result;
}

double Spectrum::frequency(std::size_t bin)
{
    return static_cast<double>(bin) * 48000.0 / static_cast<double>(size);
}
