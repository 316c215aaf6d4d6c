#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <algorithm>
#include <cmath>

namespace demonstration_loops
{

void StereoLoop::add(const StereoLoop &other, double gain)
{
    for (std::size_t i = 0; i < frames(); ++i) {
        left[i] += gain * other.left[i];
        right[i] += gain * other.right[i];
    }
}

void StereoLoop::scale(double gain)
{
    for (std::size_t i = 0; i < frames(); ++i) {
        left[i] *= gain;
        right[i] *= gain;
    }
}

double StereoLoop::peak() const
{
    double result = 0.0;
    for (std::size_t i = 0; i < frames(); ++i)
        result = std::max({result, std::abs(left[i]), std::abs(right[i])});
    return result;
}

} // namespace demonstration_loops
