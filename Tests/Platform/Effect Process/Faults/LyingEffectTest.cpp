// A program that does not keep to what is agreed is treated as one that died.

#include "SabotageFixture.hpp"

#include "Platform/Effect Process/EffectProcess.hpp"
#include "Tests/Utilities/Places.hpp"

#include <array>
#include <thread>
#include <vector>

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;

namespace
{

using platform::effect::EffectFault;
using platform::effect::EffectProcess;
using std::chrono::milliseconds;

class LyingEffectTest : public SabotageFixture, public testing::WithParamInterface<const char *>
{
protected:
    static std::unique_ptr<EffectProcess> start(std::size_t faults = 1)
    {
        EffectProcess::Limits limits = shortLimits();
        limits.instantiation = milliseconds(1000 * slowness);
        limits.faults.faults = faults;
        return std::make_unique<EffectProcess>(test::buildPath(LYING_EFFECT_PROGRAM),
                                               EffectProcess::Plugin{"urn:test:liar", {}}, limits);
    }

    /// One block, of silence.
    bool render(EffectProcess &process)
    {
        static std::array<float, frames> silence{};
        static std::array<float, frames> rendered{};
        const std::array<const float *, 2> inputs{silence.data(), silence.data()};
        const std::array<float *, 2> outputs{rendered.data(), rendered.data()};
        time_ += frames;
        return process.render({inputs.data(), outputs.data(), frames, time_});
    }

    /// It is down, by its own fault, and one line says why.
    static void expectDown(EffectProcess &process, const ErrorLines &errors,
                           const std::string &name)
    {
        const auto line = errors.waitFor("The effect '" + name + "' ");
        ASSERT_TRUE(line);
        EXPECT_THAT(line->text,
                    AnyOf(HasSubstr("' broke the agreement ("),
                          HasSubstr("' ended unexpectedly (exit code 5)"),
                          HasSubstr("' gave no answer for "), HasSubstr("' gave no audio for ")));
        EXPECT_THAT(line->text, EndsWith("; it stays silent after 1 faults within 60 s."));
        EXPECT_FALSE(process.isUp());
        EXPECT_EQ(process.processIdentifier(), -1);
        EXPECT_EQ(errors.with("The effect '").size(), 1U);
    }

    static constexpr std::uint32_t frames = 64;
    const test::EnvironmentVariable lie{"LIE", "none"};

private:
    std::int64_t time_ = 0;
};

std::string nameOf(const testing::TestParamInfo<const char *> &parameter)
{
    return parameter.param;
}

// --- Instead of the first answer ----------------------------------------------------------

using LieAtTheStart = LyingEffectTest;

TEST_P(LieAtTheStart, IsAnErrorInOneLine)
{
    const ErrorLines errors;
    lie.set(GetParam());
    std::string error;
    try {
        start();
    } catch (const PlatformError &fault) {
        error = fault.what();
    }
    EXPECT_THAT(error, testing::StartsWith("The effect 'urn:test:liar' "));
    EXPECT_THAT(error, EndsWith("; it was never ready."));
    EXPECT_THAT(error, AnyOf(HasSubstr("' broke the agreement ("),
                             HasSubstr("' ended unexpectedly (exit code 5)"),
                             HasSubstr("' was not there after ")));
    EXPECT_TRUE(errors.waitFor(error));
    EXPECT_EQ(errors.with("The effect '").size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Lies, LieAtTheStart,
    testing::Values("start_dies", "start_hangs_up", "start_says_nothing", "start_endless_size",
                    "start_half_a_message", "start_half_a_head", "start_no_description",
                    "start_short_description", "start_long_description", "start_wrong_count",
                    "start_name_is_no_text", "start_name_without_end", "start_endless_channels",
                    "start_endless_midi_outputs", "start_refusal_is_no_text", "start_unknown_kind",
                    "start_kind_of_the_host", "start_answers_nobody", "start_settings_out_of_order",
                    "start_descriptor", "start_hidden_descriptor", "start_many_descriptors",
                    "start_missing_descriptor", "start_floods"),
    nameOf);

// --- Instead of the answer to a request ---------------------------------------------------

using LieOnRequest = LyingEffectTest;

TEST_P(LieOnRequest, IsAFaultOfTheEffect)
{
    const ErrorLines errors;
    lie.set(GetParam());
    const auto process = start();
    if (std::string(GetParam()) == "request_answers_twice")
        EXPECT_TRUE(process->presets().empty()); // the first answer was right
    else
        EXPECT_THROW(process->presets(), EffectFault);
    expectDown(*process, errors, "Liar");
}

INSTANTIATE_TEST_SUITE_P(Lies, LieOnRequest,
                         testing::Values("request_says_nothing", "request_dies", "request_hangs_up",
                                         "request_wrong_count", "request_no_count",
                                         "request_name_is_no_text", "request_endless_names",
                                         "request_refusal_is_no_text", "request_answers_another",
                                         "request_answers_twice", "request_work_hangs_at_length",
                                         "request_answers_the_start_again"),
                         nameOf);

// --- In the memory that is shared -----------------------------------------------------------

using LieInMemory = LyingEffectTest;

TEST_P(LieInMemory, IsAFaultOfTheEffect)
{
    const ErrorLines errors;
    lie.set(GetParam());
    const auto process = start();
    process->prepare(48000.0, frames);
    const auto midi = process->midiOutput();
    for (int block = 0; block < 2000 && process->isUp(); ++block) {
        render(*process);
        EXPECT_GE(process->latency(), 0.0);
        EXPECT_LT(process->latency(), 1e7);
        std::this_thread::sleep_for(milliseconds(2));
    }
    expectDown(*process, errors, "Liar");
    EXPECT_FALSE(midi->pop()) << "an event that cannot be was handed on";
    EXPECT_FALSE(render(*process));
}

INSTANTIATE_TEST_SUITE_P(
    Lies, LieInMemory,
    testing::Values("memory_endless_events", "memory_events_beyond_their_room",
                    "memory_half_an_event", "memory_event_without_end",
                    "memory_event_of_just_too_much", "memory_event_of_nothing",
                    "memory_event_of_no_output", "memory_event_of_endless_output",
                    "memory_event_before_the_block", "memory_event_behind_the_block",
                    "memory_event_at_no_time", "memory_latency_is_no_number",
                    "memory_latency_without_end", "memory_latency_below_zero",
                    "memory_neither_rendered_nor_not", "memory_wrong_answer", "memory_overwritten"),
    nameOf);

// --- In what it says of its view --------------------------------------------------------

using LieOfView = LyingEffectTest;

TEST_P(LieOfView, IsAFaultOfTheEffect)
{
    const ErrorLines errors;
    lie.set(GetParam());
    const auto process = start();
    const auto view = process->view();
    view->open({1, 1.0F}, nullptr);
    const auto line = errors.waitFor("The effect 'Liar' ");
    ASSERT_TRUE(line);
    EXPECT_THAT(line->text, AnyOf(HasSubstr("' broke the agreement ("),
                                  HasSubstr("' gave no sign of life from its view")));
    EXPECT_TRUE(eventually(
        [&] { return view->status().phase == platform::effect::EffectView::Phase::effectIsDown; }));
    EXPECT_FALSE(process->isUp());
    const auto size = view->status().size;
    EXPECT_TRUE(size.width == 0 && size.height == 0) << "an impossible size was believed";
}

INSTANTIATE_TEST_SUITE_P(Lies, LieOfView,
                         testing::Values("view_no_width", "view_no_height", "view_endless_width",
                                         "view_just_too_high", "view_short_shape",
                                         "view_long_shape", "view_of_nobody",
                                         "view_closes_with_no_text", "view_says_nothing"),
                         nameOf);

using FloodOfView = LyingEffectTest;

TEST_P(FloodOfView, DrownsNobody)
{
    const ErrorLines errors;
    lie.set(GetParam());
    auto process = start();
    const auto view = process->view();
    std::atomic<int> told{0};
    view->setListener([&] { ++told; });
    view->open({1, 1.0F}, nullptr);
    int seen = 0;
    // Whoever shows the view looks now and then, as a screen does.
    for (int frame = 0; frame < 50; ++frame) {
        std::this_thread::sleep_for(milliseconds(10));
        view->resize({100, 100});
        const auto status = view->status();
        EXPECT_LE(status.size.width, 4000U);
        EXPECT_LE(status.size.height, 3000U);
        seen += status.size.width > 0 ? 1 : 0;
    }
    EXPECT_GT(seen, 0);
    EXPECT_TRUE(process->isUp());
    // The listener is told once between two looks, however much has come.
    EXPECT_LE(told, 52);
    EXPECT_LT(timeOf([&] { view->close(); }), promptly);
    EXPECT_LT(timeOf([&] { process.reset(); }), promptly);
    EXPECT_EQ(view->status().phase, platform::effect::EffectView::Phase::closed);
    view->setListener(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Floods, FloodOfView,
                         testing::Values("change_view_floods", "change_view_closes_and_opens"),
                         nameOf);

// --- Else -------------------------------------------------------------------------------------

TEST_F(LyingEffectTest, WhoTellsTheTruthIsUp)
{
    const ErrorLines errors;
    const auto process = start();
    process->prepare(48000.0, frames);
    EXPECT_TRUE(process->presets().empty());
    EXPECT_TRUE(eventually([&] { return render(*process); }));
    EXPECT_TRUE(process->isUp());
    EXPECT_TRUE(errors.with("").empty());
}

TEST_F(LyingEffectTest, MayNotBecomeAnotherEffect)
{
    const ErrorLines errors;
    lie.set("change_becomes_another");
    std::filesystem::remove(folder.path() / "starts");
    const auto process = start(2);
    sendSignal(process->processIdentifier(), SIGKILL);
    ASSERT_TRUE(errors.waitFor("The effect 'Liar' broke the agreement (it has become another "
                               "effect); it stays silent after 2 faults within 60 s."));
}

TEST_F(LyingEffectTest, ItsNameDoesNotBreakTheLine)
{
    const ErrorLines errors;
    lie.set("change_writes_on_the_terminal");
    const auto process = start();
    sendSignal(process->processIdentifier(), SIGKILL);
    EXPECT_TRUE(errors.waitFor("The effect 'Two lines and  [31mcolour' ended unexpectedly "
                               "(SIGKILL); it stays silent after 1 faults within 60 s."));
}

TEST_F(LyingEffectTest, AFloodOfMessagesDrownsNobody)
{
    const ErrorLines errors;
    lie.set("change_floods");
    auto process = start();
    EXPECT_TRUE(process->presets().empty());
    // From now on it does nothing but send, and would not hear of the end.
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_TRUE(process->isUp());
    EXPECT_LT(timeOf([&] { process.reset(); }), promptly);
}

TEST_F(LyingEffectTest, AProgramThatIsNotThereIsAnError)
{
    for (const char *program : {"/no/such/program", "/dev/null", "/"}) {
        EXPECT_THROW(EffectProcess(program, {"urn:test:liar", {}}, {}), PlatformError);
    }
}

} // namespace
