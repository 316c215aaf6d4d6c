#include "Animation/Animator.hpp"
#include "Animation/Inspection.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <ios>

namespace
{

using animation::Inspection;

/// The FNV-1a sum of 64 bits.
class Checksum
{
public:
    void add(float value)
    {
        // Which of its many bit patterns not-a-number has is left open.
        constexpr std::uint32_t none = 0x7FC00000;
        const std::uint32_t bits = std::isnan(value) ? none : std::bit_cast<std::uint32_t>(value);
        for (unsigned shift = 0; shift < 32; shift += 8)
            sum_ = (sum_ ^ (bits >> shift & 0xFF)) * 0x100000001B3;
    }
    std::uint64_t value() const { return sum_; }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325;
};

/// Might have curves of its own, and is stepped accordingly.
class DerivedAnimator : public Animator
{
};

template <typename Kind>
std::uint64_t checksumOf(std::size_t type)
{
    struct Run {
        float source;
        float amount;
    };
    Kind animator;
    animator.setType(easingFromRawValue(static_cast<std::int64_t>(type)).value());
    Checksum sum;
    for (const std::int64_t frames : {1, 2, 3, 5, 24, 60, 101, 1000}) {
        for (const Run run : {Run{0, 1}, Run{10, -4.7F}, Run{-0.3F, 1000.3F}}) {
            for (std::int64_t frame = -3; frame <= frames + 3; ++frame)
                sum.add(Inspection::curve(animator, frame, run.source, run.amount, frames));
        }
    }
    return sum.value();
}

constexpr std::array<std::uint64_t, 42> checksums{
    0x7BD7D05645C915B4, 0x736215EF31DF7E34, 0x9541D1E6BA4F4B0A, 0x642925078200D6C2,
    0x1972F5E2C7D26FF1, 0x4491207DCFCC8443, 0xB3913E66FFD88074, 0x68B274A4A43D3B55,
    0xB21A508A67C26F22, 0xE6440D005434DB9E, 0xCE31A4FA9FE44BE0, 0x8DAC3723A469F9F5,
    0xAFDE7B5E80E33C00, 0x799E833ADF987CCE, 0xC39FA43439A9392F, 0xCCC74E8A274FF27B,
    0x41FA854F2A51F6EE, 0x9884B519AEA00AEE, 0x8AE071BC156161ED, 0x0ED28F87AFAF5C50,
    0xA151316BC4F1A18A, 0x5958E982D37DC3BE, 0x9585FB71A8E066E3, 0x2D8A196E1533CC6C,
    0x70BD854D91D360E6, 0xD999F1089975134C, 0xE27377C3C0A11658, 0x6CB0A4E36068AE02,
    0xA95CEC6B22D2F2C8, 0x715389F96F97CFF9, 0x8D3EE1D56134AA1E, 0x87A5673C88FAF50E,
    0x113F718563ABA1D9, 0xD0A0C6B27BD8A947, 0x333A87C56EB267CB, 0x775EEF01DB4D1096,
    0xC38A00A827946D81, 0xA17F3846F3A1A895, 0x4AEF30ADC2991EBC, 0x6825CB1007AEDA28,
    0xE071193B8A6EAF83, 0x7BD7D05645C915B4,
};

// Every build (both compilers, with and without optimisation, with sanitizers) runs
// this, so all of them compute the same bits. The sums hold for the C library's
// power, sine and cosine as they have been since its version 2.28.
TEST(CurveBits, AreTheSameInEveryBuild)
{
    for (std::size_t type = 0; type < checksums.size(); ++type)
        EXPECT_EQ(checksumOf<Animator>(type), checksums[type])
            << "curve " << type << ": 0x" << std::hex << checksumOf<Animator>(type);
}

TEST(CurveBits, AreTheSameInADerivedClass)
{
    for (std::size_t type = 0; type < checksums.size(); ++type)
        EXPECT_EQ(checksumOf<DerivedAnimator>(type), checksums[type]) << "curve " << type;
}

} // namespace
