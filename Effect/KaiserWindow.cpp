#include "Effect/KaiserWindow.hpp"

#include <cmath>
#include <numbers>

namespace effect
{

namespace
{

/// The modified Bessel function of the first kind and order zero, by its series.
double besselI0(double x)
{
    double term = 1;
    double sum = 1;
    for (int k = 1; term > sum * 1e-16; ++k) {
        term *= (x / 2.0 / k) * (x / 2.0 / k);
        sum += term;
    }
    return sum;
}

double sinc(double x)
{
    return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

} // namespace

double windowedSinc(double x, double half, double beta)
{
    const double inside = 1.0 - (x / half) * (x / half);
    return inside < 0 ? 0 : sinc(x) * besselI0(beta * std::sqrt(inside)) / besselI0(beta);
}

} // namespace effect
