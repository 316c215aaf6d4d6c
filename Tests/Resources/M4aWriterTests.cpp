#include "Resources/Demonstration Loops/Encoding/M4aWriter.hpp"
#include "Resources/Demonstration Loops/Random.hpp"
#include "Tests/Resources/LoopFile.hpp"
#include "Tests/Resources/Measuring.hpp"
#include "Tests/Utilities/Bytes.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace
{

using namespace demonstration_loops;

/// A few detuned tones and a little noise, without any event at the seam, with
/// whole periods in the loop.
StereoLoop steadyLoop(std::size_t packets)
{
    StereoLoop loop(packets * 1024);
    Random random(6);
    for (const double cycles : {440.0, 553.0, 661.0, 1320.0, 2210.0}) {
        const double phase = random.between(0.0, 6.28);
        for (std::size_t i = 0; i < loop.frames(); ++i) {
            const double turns =
                cycles * static_cast<double>(i) / static_cast<double>(loop.frames());
            loop.left[i] += 0.1 * std::sin(2.0 * std::numbers::pi * turns + phase);
            loop.right[i] += 0.1 * std::sin(2.0 * std::numbers::pi * turns - phase);
        }
    }
    for (std::size_t i = 0; i < loop.frames(); ++i) {
        loop.left[i] += 0.02 * random.bipolar();
        loop.right[i] += 0.02 * random.bipolar();
    }
    return loop;
}

class M4aWriterTests : public testing::Test
{
protected:
    [[nodiscard]] std::filesystem::path path(const char *name) const
    {
        return folder_.path() / name;
    }

private:
    const test::TemporaryFolder folder_;
};

TEST_F(M4aWriterTests, WhatIsDecodedIsExactlyAsLongAsTheLoop)
{
    for (const std::size_t packets : {1U, 7U, 60U}) {
        writeM4a(steadyLoop(packets), "Test", path("length.m4a"));
        const LoopFile file = LoopFile::read(path("length.m4a"));
        EXPECT_EQ(file.codec, "aac");
        EXPECT_EQ(file.rate, 48000);
        EXPECT_EQ(file.presentedFrames, static_cast<std::int64_t>(packets * 1024));
        EXPECT_EQ(file.decodedFrames, file.presentedFrames);
    }
}

TEST_F(M4aWriterTests, TheSameLoopGivesTheSameBytes)
{
    writeM4a(steadyLoop(40), "Test", path("first.m4a"));
    writeM4a(steadyLoop(40), "Test", path("second.m4a"));
    const test::Bytes bytes = test::bytesOf(path("first.m4a"));
    EXPECT_GT(bytes.size(), 10000U);
    EXPECT_TRUE(bytes == test::bytesOf(path("second.m4a")));
}

// The loop itself has no seam, so all that is heard at the file's seam is what
// coding did to it: the error of coding may neither jump there nor grow.
TEST_F(M4aWriterTests, CodingLeavesNoTraceAtTheSeam)
{
    const StereoLoop loop = steadyLoop(90);
    writeM4a(loop, "Test", path("seam.m4a"));
    const StereoLoop decoded = LoopFile::read(path("seam.m4a")).audio;
    const std::size_t n = loop.frames();
    std::vector<double> error(n);
    for (std::size_t i = 0; i < n; ++i)
        error[i] = decoded.left[i] - loop.left[i];
    EXPECT_LT(measuring::decibels(measuring::rms(error, 0, n) / measuring::rms(loop.left, 0, n)),
              -12.0)
        << "decoded and original do not lie on each other";
    std::vector<double> steps(n);
    for (std::size_t i = 0; i < n; ++i)
        steps[i] = std::abs(error[i] - error[(i + n - 1) % n]);
    const double seamStep = steps[0];
    EXPECT_LE(seamStep, *std::max_element(steps.begin() + 1, steps.end()));
    std::rotate(error.begin(), error.begin() + static_cast<std::ptrdiff_t>(n - 256), error.end());
    double largest = 0.0;
    for (std::size_t start = 2048; start + 512 <= n; start += 512)
        largest = std::max(largest, measuring::rms(error, start, start + 512));
    EXPECT_LE(measuring::rms(error, 0, 512), largest);
}

TEST_F(M4aWriterTests, RefusesALengthThatIsNoWholeNumberOfPackets)
{
    EXPECT_THROW(writeM4a(StereoLoop(1000), "Test", path("odd.m4a")), std::invalid_argument);
    EXPECT_THROW(writeM4a(StereoLoop(0), "Test", path("odd.m4a")), std::invalid_argument);
    EXPECT_FALSE(std::filesystem::exists(path("odd.m4a")));
}

TEST_F(M4aWriterTests, AFolderThatIsMissingIsAnError)
{
    EXPECT_THROW(writeM4a(steadyLoop(4), "Test", path("no/such/folder.m4a")), std::runtime_error);
}

} // namespace
