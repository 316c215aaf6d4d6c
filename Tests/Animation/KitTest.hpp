#pragma once

#include "Animation/Animator.hpp"
#include "Tests/Platform/Foundation/HandDrivenTimers.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace test
{

/// Runs the kit's timers by hand and keeps what its callbacks say.
class KitTest : public ::testing::Test
{
protected:
    KitTest()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        TimerDriver::install(clock);
    }
    ~KitTest() override { TimerDriver::install(nullptr); }

    /// Lets timers of the interval that all of these tests use tick so many times.
    void tick(int count = 1) const { clock->advance(count * interval); }

    /// What was noted since the last time.
    std::vector<std::string> heard() { return std::exchange(notes, {}); }

    void note(const std::string &text) { notes.push_back(text); }
    void note(const std::string &text, float value)
    {
        std::string number = std::to_string(value);
        number.erase(number.find_last_not_of('0') + 1);
        note(text + " " + (number.back() == '.' ? number + "0" : number));
    }

    /// Lets the animator's callbacks be noted as "name value", "name loop" and
    /// "name end value".
    void listenTo(Animator &animator, const std::string &name)
    {
        animator.onAnimation = [this, name](Animator &, float value) { note(name, value); };
        animator.onLoop = [this, name](Animator &) { note(name + " loop"); };
        animator.onFinished = [this, name](Animator &, float value) { note(name + " end", value); };
    }

    /// An animator from 0 to `frames` whose callbacks are noted under `name`.
    std::shared_ptr<Animator> makeAnimator(const std::string &name, std::int64_t frames)
    {
        auto animator =
            Animator::create(0, static_cast<float>(frames), frames, static_cast<float>(interval));
        listenTo(*animator, name);
        return animator;
    }

    static constexpr double interval = 0.005;
    std::shared_ptr<HandDrivenTimers> clock = std::make_shared<HandDrivenTimers>();
    std::vector<std::string> notes;
};

using Notes = std::vector<std::string>;

} // namespace test
