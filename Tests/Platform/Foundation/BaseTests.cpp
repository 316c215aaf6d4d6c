#include "Platform/Foundation/Callback.hpp"
#include "Platform/Foundation/CheckedArithmetic.hpp"
#include "Platform/Foundation/Description.hpp"
#include "Platform/Foundation/ElementAt.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/NSTimer.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Shared.hpp"
#include "Platform/Foundation/SlimCallback.hpp"
#include "Platform/Foundation/Unwrap.hpp"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// These tests link the base alone: it must stand without GLib.
namespace
{

using platform::foundation::describe;
using namespace std::string_literals;

class BaseDeathTest : public ::testing::Test
{
protected:
    BaseDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

struct TwoWords {
    template <typename... Args>
    using Of = Callback<Args...>;
};
struct OneWord {
    template <typename... Args>
    using Of = SlimCallback<Args...>;
};

template <typename Kind>
class CallbackTest : public ::testing::Test
{
};
using CallbackKinds = ::testing::Types<TwoWords, OneWord>;
TYPED_TEST_SUITE(CallbackTest, CallbackKinds);

TYPED_TEST(CallbackTest, IsTrueWhenSet)
{
    typename TypeParam::template Of<int> callback;
    EXPECT_FALSE(callback);
    callback = [](int) {};
    EXPECT_TRUE(callback);
    callback = nullptr;
    EXPECT_FALSE(callback);
    callback = std::function<void(int)>();
    EXPECT_FALSE(callback);
    callback = static_cast<void (*)(int)>(nullptr);
    EXPECT_FALSE(callback);
}

TYPED_TEST(CallbackTest, SharesTheClosureWithItsCopies)
{
    const auto kept = std::make_shared<int>(0);
    typename TypeParam::template Of<> first = [kept] { ++*kept; };
    EXPECT_EQ(kept.use_count(), 2);
    typename TypeParam::template Of<> second = first;
    typename TypeParam::template Of<> third = std::move(first);
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): what a move leaves
    second();
    third();
    EXPECT_EQ(*kept, 2);
    third = nullptr;
    EXPECT_EQ(kept.use_count(), 2);
    second = nullptr;
    EXPECT_EQ(kept.use_count(), 1);
}

TYPED_TEST(CallbackTest, HoldsAClosureThatCannotBeCopied)
{
    int seen = 0;
    const typename TypeParam::template Of<> callback = [&seen, value = std::make_unique<int>(4)] {
        seen = *value;
    };
    callback();
    EXPECT_EQ(seen, 4);
}

TYPED_TEST(CallbackTest, LetsGoOfAClosureThatThrows)
{
    const auto kept = std::make_shared<int>(0);
    typename TypeParam::template Of<> callback;
    callback = [&callback, kept] {
        callback = nullptr;
        throw std::runtime_error("a fault");
    };
    EXPECT_THROW(callback(), std::runtime_error);
    EXPECT_EQ(kept.use_count(), 1);
}

TYPED_TEST(CallbackTest, CallsTheClosureWithItsArguments)
{
    std::string object = "object";
    typename TypeParam::template Of<std::string &, float> callback =
        [](std::string &text, float value) { text += value == 2.5F ? " and value" : ""; };
    callback(object, 2.5F);
    EXPECT_EQ(object, "object and value");
}

TYPED_TEST(CallbackTest, DoesNothingWhenUnset)
{
    const typename TypeParam::template Of<> callback;
    callback();
}

TYPED_TEST(CallbackTest, MovesAnArgumentThatCannotBeCopied)
{
    int seen = 0;
    typename TypeParam::template Of<std::unique_ptr<int>> callback =
        [&](std::unique_ptr<int> value) { seen = *value; };
    callback(std::make_unique<int>(7));
    EXPECT_EQ(seen, 7);
}

TYPED_TEST(CallbackTest, KeepsTheRunningClosureWhenReplacedOrCleared)
{
    const auto kept = std::make_shared<int>(5);
    typename TypeParam::template Of<> callback;
    int seen = 0;
    callback = [&callback, &seen, kept] {
        callback = [&seen] { seen = 1; };
        seen = *kept;
    };
    callback();
    EXPECT_EQ(seen, 5);
    EXPECT_EQ(kept.use_count(), 1);
    callback();
    EXPECT_EQ(seen, 1);

    callback = [&callback, &seen, kept] {
        callback = nullptr;
        seen = *kept;
    };
    callback();
    EXPECT_EQ(seen, 5);
    EXPECT_FALSE(callback);
}

TYPED_TEST(CallbackTest, SurvivesTheEndOfItsOwner)
{
    const auto kept = std::make_shared<int>(3);
    auto owner = std::make_unique<typename TypeParam::template Of<>>();
    int seen = 0;
    *owner = [&owner, &seen, kept] {
        owner.reset();
        seen = *kept;
    };
    (*owner)();
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(kept.use_count(), 1);
}

TYPED_TEST(CallbackTest, MayCallItself)
{
    typename TypeParam::template Of<int> callback;
    int sum = 0;
    callback = [&](int n) {
        sum += n;
        if (n > 0)
            callback(n - 1);
    };
    callback(4);
    EXPECT_EQ(sum, 10);
}

TEST(CheckedArithmetic, ComputesWhatFits)
{
    EXPECT_EQ(checkedAdd<std::int64_t>(INT64_MAX - 1, 1), INT64_MAX);
    EXPECT_EQ(checkedSubtract<std::int64_t>(INT64_MIN + 1, 1), INT64_MIN);
    EXPECT_EQ(checkedMultiply<std::int32_t>(-65536, 32768), INT32_MIN);
    EXPECT_EQ(checkedSubtract<std::uint8_t>(1, 1), 0);
    static_assert(checkedAdd(1, 2) == 3);
}

TEST(CheckedArithmetic, TruncatesTowardsZero)
{
    EXPECT_EQ(checkedInteger<std::int64_t>(2.9), 2);
    EXPECT_EQ(checkedInteger<std::int64_t>(-2.9F), -2);
    EXPECT_EQ(checkedInteger<std::uint8_t>(-0.9), 0);
    EXPECT_EQ(checkedInteger<std::uint8_t>(255.9), 255);
    EXPECT_EQ(checkedInteger<std::int32_t>(-2147483648.9), INT32_MIN);
    EXPECT_EQ(checkedInteger<std::int64_t>(-9223372036854775808.0), INT64_MIN);
    EXPECT_EQ(checkedInteger<std::int64_t>(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(checkedInteger<std::uint64_t>(18446744073709549568.0), 18446744073709549568U);
}

TEST(CheckedArithmetic, ConvertsIntegersThatFit)
{
    EXPECT_EQ(checkedInteger<std::uint32_t>(std::size_t{4'294'967'295}), 4'294'967'295U);
    EXPECT_EQ(checkedInteger<std::int64_t>(std::uint64_t{INT64_MAX}), INT64_MAX);
    EXPECT_EQ(checkedInteger<std::int8_t>(-128), -128);
    static_assert(checkedInteger<std::uint8_t>(255) == 255);
}

TEST_F(BaseDeathTest, OverflowIsFatal)
{
    const std::string message = "Fatal error: Arithmetic overflow";
    EXPECT_DEATH(checkedAdd<std::int64_t>(INT64_MAX, 1), message);
    EXPECT_DEATH(checkedSubtract<std::uint8_t>(0, 1), message);
    EXPECT_DEATH(checkedMultiply<std::int64_t>(INT64_MIN, -1), message);
    EXPECT_DEATH(checkedAdd<std::uint8_t>(255, 1), message);
}

TEST_F(BaseDeathTest, ANumberThatFitsNoIntegerIsFatal)
{
    const std::string intMax = "Fatal error: Double value cannot be converted to Int because the "
                               "result would be greater than Int.max\n";
    EXPECT_DEATH(checkedInteger<std::int64_t>(9223372036854775808.0), intMax);
    const std::string intMin = "Fatal error: Double value cannot be converted to Int because the "
                               "result would be less than Int.min\n";
    EXPECT_DEATH(checkedInteger<std::int64_t>(-9223372036854777856.0), intMin);
    EXPECT_DEATH(checkedInteger<std::int32_t>(2147483648.0F),
                 "Float value cannot be converted to Int32 .* greater than Int32.max");
    EXPECT_DEATH(checkedInteger<std::uint8_t>(-1.0), "to UInt8 .* less than UInt8.min");
    EXPECT_DEATH(checkedInteger<std::uint64_t>(18446744073709551616.0), "to UInt .* UInt.max");
    const std::string none =
        " value cannot be converted to Int because it is either infinite or NaN\n";
    EXPECT_DEATH(checkedInteger<std::int64_t>(std::numeric_limits<double>::quiet_NaN()),
                 "Fatal error: Double" + none);
    EXPECT_DEATH(checkedInteger<std::int64_t>(std::numeric_limits<float>::infinity()),
                 "Fatal error: Float" + none);
    const std::string range = "Fatal error: A number is beyond the range of the integer";
    EXPECT_DEATH(checkedInteger<std::uint32_t>(std::size_t{4'294'967'296}), range);
    EXPECT_DEATH(checkedInteger<std::int64_t>(UINT64_MAX), range);
    EXPECT_DEATH(checkedInteger<std::uint8_t>(-1), range);
}

struct Location {
    std::string description() const { return "here"; }
};

TEST(Description, OfPlainValues)
{
    EXPECT_EQ(describe("text \"as it stands\""), "text \"as it stands\"");
    EXPECT_EQ(describe("nul\0inside"s), "nul\0inside"s);
    EXPECT_EQ(describe(-5), "-5");
    EXPECT_EQ(describe(UINT64_MAX), "18446744073709551615");
    EXPECT_EQ(describe(std::uint8_t{65}), "65");
    EXPECT_EQ(describe(true), "true");
    EXPECT_EQ(describe(Location()), "here");
}

TEST(Description, OfNumbersIsTheShortestThatReadsBack)
{
    EXPECT_EQ(describe(1.0), "1.0");
    EXPECT_EQ(describe(0.1), "0.1");
    EXPECT_EQ(describe(0.1F), "0.1");
    EXPECT_EQ(describe(-0.0), "-0.0");
    EXPECT_EQ(describe(48000.0), "48000.0");
    EXPECT_EQ(describe(0.0001), "0.0001");
    EXPECT_EQ(describe(0.00001), "1e-05");
    EXPECT_EQ(describe(1e16), "1e+16");
    EXPECT_EQ(describe(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(describe(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(describe(std::numeric_limits<double>::quiet_NaN()), "nan");
    for (const double value :
         {std::numeric_limits<double>::min(), 1.0 / 3.0, 123456.789,
          std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()})
        EXPECT_EQ(std::strtod(describe(value).c_str(), nullptr), value);
}

TEST(Description, OfOptionals)
{
    EXPECT_EQ(describe(std::optional<int>()), "nil");
    EXPECT_EQ(describe(std::optional(3)), "Optional(3)");
    EXPECT_EQ(describe(std::optional(Location())), "Optional(here)");
    EXPECT_EQ(describe(std::optional("text"s)), "Optional(\"text\")");
    EXPECT_EQ(describe(std::make_optional<std::optional<int>>(std::nullopt)), "Optional(nil)");
}

TEST(Description, OfLists)
{
    EXPECT_EQ(describe(std::vector<int>()), "[]");
    EXPECT_EQ(describe(std::vector{1, 2}), "[1, 2]");
    EXPECT_EQ(describe(std::vector{Location(), Location()}), "[here, here]");
    EXPECT_EQ(describe(std::vector{true, false}), "[true, false]");
    EXPECT_EQ(describe(std::vector<std::string>{"a", "say \"b\"\n\\\t\x01"}),
              R"(["a", "say \"b\"\n\\\t\u{01}"])");
    EXPECT_EQ(describe(std::vector<std::optional<std::string>>{"a", std::nullopt}),
              "[Optional(\"a\"), nil]");
    EXPECT_EQ(describe(std::vector<std::vector<int>>{{1}, {}}), "[[1], []]");
}

TEST(Print, WritesTheLineAndANewline)
{
    ::testing::internal::CaptureStdout();
    print("a line");
    print("");
    print("two\nlines");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "a line\n\ntwo\nlines\n");
    ::testing::internal::CaptureStderr();
    printError("a fault");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "a fault\n");
}

TEST(Print, WritesBytesAsTheyAre)
{
    ::testing::internal::CaptureStdout();
    printBytes("a\0b\n"s);
    printBytes("");
    printBytes("no end");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "a\0b\nno end"s);
}

TEST(Print, WaitsForAReaderThatTheOutputWouldNotWaitFor)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
    const int original = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    const std::string line(1'000'000, 'x');
    std::string received;
    std::thread reader([&] {
        pollfd input{ends[0], POLLIN, 0};
        std::vector<char> part(65'536);
        while (received.size() <= line.size() && poll(&input, 1, 10'000) == 1) {
            const ssize_t count = read(ends[0], part.data(), part.size());
            received.append(part.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        }
    });
    print(line);
    reader.join();
    dup2(original, STDOUT_FILENO);
    close(original);
    close(ends[0]);
    EXPECT_EQ(received, line + "\n");
}

TEST(Print, DoesNotMixLinesOfSeveralThreads)
{
    constexpr int threadCount = 8;
    constexpr int linesEach = 500;
    ::testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([i] {
            const std::string line(static_cast<std::size_t>(50 + i), static_cast<char>('a' + i));
            for (int n = 0; n < linesEach; ++n)
                print(line);
        });
    }
    for (auto &thread : threads)
        thread.join();
    std::istringstream lines(::testing::internal::GetCapturedStdout());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(line.find_first_not_of(line.front()), std::string::npos);
        EXPECT_EQ(line.size(), 50U + static_cast<std::size_t>(line.front() - 'a'));
    }
    EXPECT_EQ(count, threadCount * linesEach);
}

TEST(Unwrap, AnswersTheValue)
{
    const std::optional<int> value = 3;
    EXPECT_EQ(unwrap(value), 3);
    const auto pointer = std::make_shared<int>(4);
    EXPECT_EQ(&unwrap(pointer), pointer.get());
    EXPECT_EQ(&unwrapImplicitly(pointer), pointer.get());
}

TEST(ElementAt, AnswersTheElement)
{
    EXPECT_EQ(elementAt(std::vector{3, 4}, 1), 4);
}

TEST_F(BaseDeathTest, AnElementThatIsNotThereIsFatal)
{
    EXPECT_DEATH(elementAt(std::vector{3, 4}, 2), "^Fatal error: Index out of range\n");
    EXPECT_DEATH(elementAt(std::vector<int>(), 0), "^Fatal error: Index out of range\n");
}

TEST_F(BaseDeathTest, AbsentValuesAreFatal)
{
    EXPECT_DEATH(unwrap(std::optional<int>()),
                 "^Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
    EXPECT_DEATH(unwrap(std::shared_ptr<int>()),
                 "^Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
    EXPECT_DEATH(unwrapImplicitly(std::shared_ptr<int>()),
                 "^Fatal error: Unexpectedly found nil while implicitly unwrapping an Optional "
                 "value\n");
}

TEST_F(BaseDeathTest, FatalErrorAborts)
{
    EXPECT_EXIT(fatalError("no way on"), ::testing::KilledBySignal(SIGABRT),
                "^Fatal error: no way on\n");
}

TEST_F(BaseDeathTest, ATimerWithoutADriverIsFatal)
{
    EXPECT_DEATH(NSTimer::scheduledTimer(1, true, [](NSTimer &) {}),
                 "Fatal error: A timer was scheduled without a driver that could run it");
}

TEST(Shared, LoadsStoresAndExchanges)
{
    Shared<std::string> text("first");
    EXPECT_EQ(text.load(), "first");
    text.store("second");
    EXPECT_EQ(text.exchange("third"), "second");
    EXPECT_EQ(text.load(), "third");
}

TEST(Shared, MayBeUsedByTheDestructorOfWhatItHeld)
{
    struct Returner {
        Shared<std::shared_ptr<Returner>> *home = nullptr;
        bool *came = nullptr;
        ~Returner() { *came = home && home->load() == nullptr; }
    };
    bool came = false;
    Shared<std::shared_ptr<Returner>> home;
    auto object = std::make_shared<Returner>();
    object->home = &home;
    object->came = &came;
    home.store(std::move(object));
    home.store(nullptr);
    EXPECT_TRUE(came);
}

TEST(Shared, IsWholeForEveryReader)
{
    Shared<std::shared_ptr<int>> value(std::make_shared<int>(0));
    std::thread writer([&] {
        for (int i = 1; i <= 2000; ++i)
            value.store(std::make_shared<int>(i));
    });
    int last = 0;
    while (last < 2000) {
        const int now = *value.load();
        ASSERT_GE(now, last);
        last = now;
    }
    writer.join();
}

} // namespace
