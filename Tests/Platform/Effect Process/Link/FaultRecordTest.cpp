#include "Platform/Effect Process/FaultRecord.hpp"

#include <gtest/gtest.h>

using platform::effect::FaultRecord;
using std::chrono::seconds;

namespace
{

const FaultRecord::Clock::time_point start{seconds(1000)};

} // namespace

TEST(FaultRecord, CountsFaultsWithinTheTime)
{
    FaultRecord record({3, seconds(60)});
    EXPECT_FALSE(record.note(start));
    EXPECT_FALSE(record.note(start + seconds(30)));
    EXPECT_TRUE(record.note(start + seconds(60)));
}

TEST(FaultRecord, ForgetsOldFaults)
{
    FaultRecord record({3, seconds(60)});
    record.note(start);
    record.note(start + seconds(50));
    EXPECT_FALSE(record.note(start + seconds(61)));
    EXPECT_TRUE(record.note(start + seconds(110)));
}

TEST(FaultRecord, BeginsAnewWhenCleared)
{
    FaultRecord record({2, seconds(60)});
    record.note(start);
    record.clear();
    EXPECT_FALSE(record.note(start));
}

TEST(FaultRecord, HasNoLimitWithoutOne)
{
    FaultRecord record({0, seconds(60)});
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(record.note(start));
}
