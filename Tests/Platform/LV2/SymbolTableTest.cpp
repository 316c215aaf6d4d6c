#include "Platform/LV2/SymbolTable.hpp"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

using platform::lv2::SymbolTable;

TEST(SymbolTable, CountsFromOne)
{
    SymbolTable table;
    EXPECT_EQ(table.map("urn:a"), 1U);
    EXPECT_EQ(table.map("urn:b"), 2U);
    EXPECT_EQ(table.map("urn:a"), 1U);
}

TEST(SymbolTable, TurnsNumbersBack)
{
    SymbolTable table;
    const LV2_URID symbol = table.map("urn:a");
    EXPECT_STREQ(table.unmap(symbol), "urn:a");
    EXPECT_EQ(table.unmap(0), nullptr);
    EXPECT_EQ(table.unmap(symbol + 1), nullptr);
    EXPECT_EQ(table.unmap(0xFFFFFFFFU), nullptr);
}

TEST(SymbolTable, AnswersZeroWhenFull)
{
    SymbolTable table;
    for (std::uint32_t i = 1; i < SymbolTable::capacity; ++i)
        ASSERT_EQ(table.map("urn:" + std::to_string(i)), i);
    EXPECT_EQ(table.map("urn:one-too-many"), 0U);
    EXPECT_EQ(table.map("urn:77"), 77U);
}

TEST(SymbolTable, GivesSeveralThreadsTheSameNumbers)
{
    SymbolTable table;
    constexpr int uriCount = 2000;
    std::vector<std::vector<LV2_URID>> numbers(4);
    std::vector<std::thread> threads;
    threads.reserve(numbers.size());
    for (auto &own : numbers)
        threads.emplace_back([&table, &own] {
            for (int i = 0; i < uriCount; ++i) {
                own.push_back(table.map("urn:" + std::to_string(i)));
                ASSERT_NE(table.unmap(own.back()), nullptr);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(numbers, testing::Each(numbers.front()));
}
