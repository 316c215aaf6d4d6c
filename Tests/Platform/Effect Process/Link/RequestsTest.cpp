#include "Platform/Effect Process/Requests.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace platform::effect;
using Outcome = Requests::Outcome;

namespace
{

constexpr std::chrono::milliseconds short_{5};
constexpr std::chrono::seconds long_{10};

Message answer(std::uint64_t number)
{
    return {MessageKind::answer, number, {std::byte{1}}, {}};
}

} // namespace

TEST(Requests, AreNumberedFromOne)
{
    Requests requests;
    EXPECT_EQ(requests.begin(), 1U);
    EXPECT_EQ(requests.begin(), 2U);
}

TEST(Requests, GetTheirOwnAnswers)
{
    Requests requests;
    const std::uint64_t first = requests.begin();
    const std::uint64_t second = requests.begin();
    EXPECT_TRUE(requests.fulfil(answer(second)));
    std::thread late([&] { EXPECT_TRUE(requests.fulfil(answer(first))); });
    Message got;
    EXPECT_EQ(requests.wait(first, long_, got), Outcome::answered);
    EXPECT_EQ(got.number, first);
    EXPECT_EQ(requests.wait(second, long_, got), Outcome::answered);
    EXPECT_EQ(got.number, second);
    late.join();
}

TEST(Requests, TakeNoAnswerThatNobodyAskedFor)
{
    Requests requests;
    EXPECT_FALSE(requests.fulfil(answer(1)));
    const std::uint64_t number = requests.begin();
    EXPECT_TRUE(requests.fulfil(answer(number)));
    EXPECT_FALSE(requests.fulfil(answer(number)));
}

TEST(Requests, AreLostTogether)
{
    Requests requests;
    const std::uint64_t number = requests.begin();
    std::thread loser([&] { requests.loseAll(); });
    Message got;
    EXPECT_EQ(requests.wait(number, long_, got), Outcome::lost);
    loser.join();
}

TEST(Requests, AreForgottenWhenTheyAreLate)
{
    Requests requests;
    const std::uint64_t number = requests.begin();
    Message got;
    EXPECT_EQ(requests.wait(number, short_, got), Outcome::late);
    EXPECT_FALSE(requests.fulfil(answer(number)));
}

TEST(Requests, AreHurriedWhetherTheyAreWaitedForOrNot)
{
    Requests requests;
    Message got;
    const std::uint64_t notYet = requests.begin();
    requests.hurry(short_);
    EXPECT_EQ(requests.wait(notYet, long_, got), Outcome::hurried);

    const std::uint64_t waitedFor = requests.begin();
    std::thread impatient([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        requests.hurry(short_);
        // It is never put off again.
        requests.hurry(2 * long_);
    });
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(requests.wait(waitedFor, long_, got), Outcome::hurried);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, long_);
    impatient.join();

    // What is asked later has its own time.
    const std::uint64_t later = requests.begin();
    std::thread effect([&] { EXPECT_TRUE(requests.fulfil(answer(later))); });
    EXPECT_EQ(requests.wait(later, long_, got), Outcome::answered);
    effect.join();
}
