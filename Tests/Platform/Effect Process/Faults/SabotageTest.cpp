// Every way to fail at every moment of a plug-in's life, in a host that plays.

#include "SabotageFixture.hpp"

#include "Platform/Audio/AVAudioUnit.hpp"

#include <fmt/format.h>

#include <exception>
#include <future>
#include <tuple>

using testing::HasSubstr;

namespace
{

using std::chrono::milliseconds;
using Clock = SabotageFolder::Clock;

class SabotageTest : public SabotageFixture,
                     public testing::WithParamInterface<std::tuple<const char *, const char *>>
{
protected:
    static std::string moment() { return std::get<0>(GetParam()); }
    static std::string fault() { return std::get<1>(GetParam()); }
    static bool isHang() { return fault() == "loop"; }

    /// A hang is waited for; nothing else is to depend on how fast the machine is.
    static RemoteAudioUnit::Limits limits()
    {
        RemoteAudioUnit::Limits limits = isHang() ? shortLimits() : RemoteAudioUnit::Limits{};
        // A sanitizer writes a report before it lets a program die.
        limits.ending *= slowness;
        return limits;
    }

    /// What is said of the fault.
    static testing::Matcher<const std::string &> saysHow(const char *ofHang)
    {
        if (isHang())
            return HasSubstr(ofHang);
        const auto ended = HasSubstr(" ended unexpectedly (");
        // It has hung up, and ends soon; where that is not at once it is ended.
        if (fault() == "descriptors")
            return testing::AnyOf(ended, HasSubstr(" broke the agreement (it hung up)"));
        return ended;
    }

    std::shared_ptr<RemoteAudioUnit> unit() const
    {
        return SabotageFixture::unit(moment(), fault(), limits());
    }
    static std::string name() { return SabotageFixture::name(moment(), fault()); }

    /// The line is there in time, `limit` after the fault at most where it is a hang,
    /// and says what it should; there is no other.
    void expectLine(const ErrorLines &errors, milliseconds limit, const std::string &sequel) const
    {
        const auto line = errors.waitFor(name());
        ASSERT_TRUE(line) << "nobody says that the effect failed";
        ASSERT_EQ(sabotage.faults().size(), 1U);
        const auto after = line->moment - sabotage.faults().front();
        EXPECT_LT(after, promptly + (isHang() ? limit : milliseconds(0)));
        RecordProperty("milliseconds_to_the_line", static_cast<int>(after / milliseconds(1)));
        EXPECT_THAT(line->text, testing::EndsWith(sequel));
        EXPECT_THAT(line->text, saysHow(" gave no "));
        EXPECT_EQ(errors.with(name()).size(), 1U);
    }

    /// After one fault the host plays on, and the effect is back.
    void expectRecovery(PlayingHost &host, const ErrorLines &errors, milliseconds limit) const
    {
        EXPECT_TRUE(host.goesOn());
        expectLine(errors, limit, "; it is started again.");
        EXPECT_TRUE(host.sounds());
        EXPECT_TRUE(host.goesOn());
        EXPECT_EQ(errors.with(name()).size(), 1U);
    }

    /// Stopping, detaching and letting go wait for no effect.
    static void expectQuickEnd(PlayingHost &host)
    {
        EXPECT_LT(timeOf([&] { host.stop(); }), promptly);
        EXPECT_LT(timeOf([&] { host.detachUnit(); }), promptly);
    }

    static test::Channels wave() { return test::constant(2, 4800, 0.25F); }
};

std::string testName(const testing::TestParamInfo<SabotageTest::ParamType> &parameters)
{
    return std::string(std::get<0>(parameters.param)) + "_" + std::get<1>(parameters.param);
}

const auto everyFault = testing::Values(SABOTAGE_FAULTS);

// --- At the start -------------------------------------------------------------------

class SabotageAtTheStart : public SabotageTest
{
protected:
    std::string errorOfUnit() const
    {
        // The class's own operation knows the usual limits only.
        if (isHang()) {
            try {
                unit();
            } catch (const PlatformError &error) {
                return error.what();
            }
            return {};
        }
        std::promise<std::string> answer;
        AVAudioUnit::instantiate(
            platform::audio::derivedDescription(uri(moment(), fault())), 0,
            [&answer](const std::shared_ptr<AVAudioUnit> &made, const std::exception_ptr &error) {
                EXPECT_FALSE(made);
                try {
                    if (error)
                        std::rethrow_exception(error);
                    answer.set_value({});
                } catch (const PlatformError &fault) {
                    answer.set_value(fault.what());
                }
            });
        return answer.get_future().get();
    }
};

TEST_P(SabotageAtTheStart, IsAnErrorOfInstantiationAndTriedOnce)
{
    const ErrorLines errors;
    sabotage.arm(100);
    const std::string error = errorOfUnit();
    EXPECT_THAT(error, HasSubstr(uri(moment(), fault())));
    EXPECT_THAT(error, testing::EndsWith("; it was never ready."));
    EXPECT_THAT(error, saysHow(" was not there after "));
    // The line was written before the error was known, and is read by another thread.
    EXPECT_TRUE(errors.waitFor(error));
    EXPECT_EQ(errors.with("The effect '").size(), 1U);
    EXPECT_EQ(sabotage.faults().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Faults, SabotageAtTheStart,
                         testing::Combine(testing::Values("instantiate", "activate"), everyFault),
                         testName);

// --- While it plays -----------------------------------------------------------------

class SabotageWhilePlaying : public SabotageTest
{
};

TEST_P(SabotageWhilePlaying, TheHostPlaysOnAndTheEffectComesBack)
{
    const ErrorLines errors;
    sabotage.arm(1);
    PlayingHost host(unit(), wave());
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    expectRecovery(host, errors, moment() == "worker" ? limits().work : limits().audio);
    expectQuickEnd(host);
    EXPECT_LT(host.report().longestCallback.load(), std::chrono::nanoseconds(promptly).count());
}

INSTANTIATE_TEST_SUITE_P(Faults, SabotageWhilePlaying,
                         testing::Combine(testing::Values("run1", "run1000", "worker"), everyFault),
                         testName);

// --- When it is asked for something -----------------------------------------------------

class SabotageOfRequests : public SabotageTest
{
protected:
    void ask(PlayingHost &host) const
    {
        if (moment() == "restore") {
            host.useRate(44100.0);
            return;
        }
        const auto quiet = host.unit().factoryPresets()->at(0);
        EXPECT_THROW(host.unit().setCurrentPreset(quiet), PlatformError);
    }
};

TEST_P(SabotageOfRequests, TheRequestFailsAndTheHostPlaysOn)
{
    const ErrorLines errors;
    PlayingHost host(unit(), wave());
    ASSERT_TRUE(host.sounds());
    sabotage.arm(1);
    ask(host);
    expectRecovery(host, errors, std::max(limits().request, limits().instantiation));
    expectQuickEnd(host);
}

INSTANTIATE_TEST_SUITE_P(Faults, SabotageOfRequests,
                         testing::Combine(testing::Values("save", "restore", "preset"), everyFault),
                         testName);

// --- At its end -------------------------------------------------------------------------

class SabotageAtTheEnd : public SabotageTest
{
};

TEST_P(SabotageAtTheEnd, OfAnInstanceTheHostPlaysOn)
{
    const ErrorLines errors;
    PlayingHost host(unit(), wave());
    ASSERT_TRUE(host.sounds());
    sabotage.arm(1);
    // The instance is exchanged for one at the new rate.
    host.useRate(44100.0);
    expectRecovery(host, errors, std::max(limits().request, limits().instantiation));
    expectQuickEnd(host);
}

TEST_P(SabotageAtTheEnd, OfTheEffectNobodyWaitsLong)
{
    const ErrorLines errors;
    PlayingHost host(unit(), wave());
    ASSERT_TRUE(host.sounds());
    sabotage.arm(1);
    expectQuickEnd(host);
    EXPECT_EQ(sabotage.faults().size(), 1U);
    if (fault() == "descriptors") {
        // It ends all the same.
        EXPECT_TRUE(errors.with(name()).empty());
        return;
    }
    const auto line = errors.waitFor(name());
    ASSERT_TRUE(line);
    const std::string ofHang =
        fmt::format(" did not end within {:g} s; it was ended by force.", 0.5 * slowness);
    EXPECT_THAT(line->text, HasSubstr(isHang() ? ofHang : " failed at its end ("));
    EXPECT_EQ(errors.with(name()).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Faults, SabotageAtTheEnd,
                         testing::Combine(testing::Values("deactivate", "cleanup"), everyFault),
                         testName);

} // namespace
