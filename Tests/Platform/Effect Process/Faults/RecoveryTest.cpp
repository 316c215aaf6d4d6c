// What an effect that failed is given back, and when it is given up.

#include "SabotageFixture.hpp"
#include "Tests/Utilities/Places.hpp"

#include <csignal>
#include <future>
#include <vector>

using testing::EndsWith;
using testing::HasSubstr;

namespace
{

using platform::effect::EffectProcess;
using std::chrono::milliseconds;

/// Kills the process that holds the effect and waits until it is reaped.
void killEffect(EffectProcess &process, int signal = SIGKILL)
{
    const pid_t victim = process.processIdentifier();
    ASSERT_GT(victim, 0);
    sendSignal(victim, signal);
    ASSERT_TRUE(eventually([&] { return process.processIdentifier() != victim; }));
}

class RecoveryTest : public SabotageFixture
{
protected:
    /// An effect that plays one value.
    void play(const std::string &moment = "never", const std::string &fault = "none",
              const RemoteAudioUnit::Limits &limits = {})
    {
        unit = SabotageFixture::unit(moment, fault, limits);
        process = &unit->process();
        host.emplace(unit, test::constant(2, 4800, value));
        ASSERT_TRUE(host->sounds());
    }

    void TearDown() override
    {
        host.reset();
        unit.reset();
        SabotageFixture::TearDown();
    }

    bool isHeard(float sample)
    {
        return eventually([&] { return host->report().sample == sample; });
    }

    void killAndWait()
    {
        killEffect(*process);
        ASSERT_TRUE(eventually([&] { return process->isUp(); }));
    }

    static constexpr float value = 0.25F;
    static constexpr const char *effect = "The effect 'Sabotage never none' ";
    std::shared_ptr<RemoteAudioUnit> unit;
    EffectProcess *process = nullptr;
    std::optional<PlayingHost> host;
};

TEST_F(RecoveryTest, ThreeFaultsInAMinuteLeaveItDownUntilItIsAskedFor)
{
    const ErrorLines errors;
    play();
    killAndWait();
    killAndWait();
    killEffect(*process);
    const auto last = errors.waitFor(effect, 2);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->text, std::string(effect) + "ended unexpectedly (SIGKILL); "
                                                "it stays silent after 3 faults within 60 s.");
    for (const auto &line : {errors.with(effect)[0], errors.with(effect)[1]})
        EXPECT_EQ(line.text, std::string(effect) + "ended unexpectedly (SIGKILL); "
                                                   "it is started again.");
    EXPECT_FALSE(process->isUp());
    EXPECT_EQ(process->processIdentifier(), -1);
    EXPECT_TRUE(isHeard(0.0F));
    EXPECT_TRUE(host->goesOn());
    // Whoever asks for something hears at once that it is not there.
    EXPECT_LT(timeOf([&] { EXPECT_FALSE(unit->factoryPresets()); }), promptly);
    const auto preset = std::make_shared<AUAudioUnitPreset>(0, "Quiet");
    EXPECT_THROW(unit->setCurrentPreset(preset), PlatformError);
    host->useRate(44100.0);
    EXPECT_FALSE(process->isUp());
    EXPECT_EQ(sabotage.starts().size(), 4U); // the fixture's own among them

    process->restart();
    EXPECT_TRUE(host->sounds());
    EXPECT_TRUE(process->isUp());
    EXPECT_TRUE(unit->factoryPresets());
    // And the count begins anew.
    killAndWait();
    EXPECT_TRUE(host->sounds());
    EXPECT_EQ(errors.with(effect).size(), 4U);
}

TEST_F(RecoveryTest, AnEffectThatFailsAtEachStartIsGivenUpToo)
{
    const ErrorLines errors;
    play("instantiate", "segv");
    const std::size_t starts = sabotage.starts().size();
    sabotage.arm(100);
    killEffect(*process);
    ASSERT_TRUE(errors.waitFor("it stays silent after 3 faults within 60 s."));
    EXPECT_EQ(errors.with("The effect '").size(), 3U);
    EXPECT_EQ(sabotage.starts().size(), starts + 2);
    EXPECT_TRUE(host->goesOn());
    EXPECT_EQ(sabotage.starts().size(), starts + 2);
}

TEST_F(RecoveryTest, AnEffectThatFailsInEachBlockIsGivenUpToo)
{
    const ErrorLines errors;
    play("run1", "segv");
    sabotage.arm(100);
    host->useRate(44100.0);
    ASSERT_TRUE(errors.waitFor("it stays silent after 3 faults within 60 s."));
    EXPECT_EQ(sabotage.faults().size(), 3U);
    EXPECT_TRUE(host->goesOn());
}

TEST_F(RecoveryTest, WithoutALimitItIsNeverGivenUp)
{
    RemoteAudioUnit::Limits limits;
    limits.faults.faults = 0;
    const ErrorLines errors;
    play("never", "none", limits);
    for (int time = 0; time < 5; ++time)
        killAndWait();
    EXPECT_TRUE(host->sounds());
    ASSERT_TRUE(errors.waitFor(effect, 4));
    EXPECT_EQ(errors.with("; it is started again.").size(), 5U);
}

TEST_F(RecoveryTest, StateParametersPresetAndControllersComeBack)
{
    const ErrorLines errors;
    play();
    EXPECT_TRUE(isHeard(value));
    const auto quiet = unit->factoryPresets()->at(0);
    unit->setCurrentPreset(quiet);
    EXPECT_TRUE(isHeard(value * 0.5F * 0.5F)); // its parameter, and its state
    const std::uint8_t volume[] = {0xB0, 7, 64};
    ASSERT_TRUE(unit->scheduleMIDIEvent(0, volume, sizeof volume));
    EXPECT_TRUE(isHeard(value * 0.125F));

    killEffect(*process);
    EXPECT_TRUE(host->sounds());
    // Not for a block was it anything else.
    EXPECT_EQ(host->report().sample, value * 0.125F);
    EXPECT_EQ(unit->currentPreset(), quiet);

    // Nor does a rate that was chosen meanwhile change that.
    killEffect(*process, SIGSEGV);
    host->useRate(96000.0);
    EXPECT_TRUE(host->sounds());
    EXPECT_TRUE(isHeard(value * 0.125F));
}

TEST_F(RecoveryTest, SettingsThatItDoesNotSurviveAreLeftOut)
{
    const ErrorLines errors;
    play("restore", "abort");
    unit->setCurrentPreset(unit->factoryPresets()->at(0));
    EXPECT_TRUE(isHeard(value * 0.25F));
    sabotage.arm(100);
    killEffect(*process);
    ASSERT_TRUE(errors.waitFor("; it is started again without its last settings."));
    EXPECT_TRUE(host->sounds());
    EXPECT_TRUE(isHeard(value));
    EXPECT_EQ(errors.with("The effect '").size(), 2U);
    EXPECT_EQ(sabotage.faults().size(), 1U);
}

TEST_F(RecoveryTest, AnEffectThatIsRemovedMeanwhileStaysSilentAndSaysWhy)
{
    const test::TemporaryFolder installed;
    std::filesystem::copy(test::buildPath(SABOTAGE_LV2_FOLDER), installed.path(),
                          std::filesystem::copy_options::recursive);
    pathVariable.set(installed.path().string());
    const ErrorLines errors;
    play();
    std::filesystem::remove_all(installed.path() / "sabotage.lv2");
    killEffect(*process);
    const auto why = errors.waitFor("cannot be started again: ");
    ASSERT_TRUE(why);
    EXPECT_THAT(why->text, testing::StartsWith(effect));
    EXPECT_TRUE(host->goesOn());
    EXPECT_FALSE(process->isUp());
    EXPECT_EQ(errors.with(effect).size(), 2U);
}

TEST_F(RecoveryTest, AProgramThatIsRemovedMeanwhileIsToldToo)
{
    const ErrorLines errors;
    const std::string program = folder.path() / "program";
    std::filesystem::create_symlink(test::buildPath(EFFECT_PROGRAM), program);
    EffectProcess bare(
        program, {uri("never", "none"), {test::buildPath(SABOTAGE_LV2_FOLDER "/sabotage.lv2")}},
        {});
    std::filesystem::remove(program);
    killEffect(bare);
    const auto why = errors.waitFor("cannot be started again: ");
    ASSERT_TRUE(why);
    EXPECT_THAT(why->text, testing::StartsWith(effect));
    EXPECT_FALSE(bare.isUp());
    std::filesystem::create_symlink(test::buildPath(EFFECT_PROGRAM), program);
    bare.restart();
    EXPECT_TRUE(eventually([&] { return bare.isUp(); }));
}

TEST_F(RecoveryTest, RestartsInTheMiddleOfOrdinaryUse)
{
    // Whatever the host asks for while the effect fails is answered, with or without
    // an error, and all of it is given back.
    RemoteAudioUnit::Limits limits;
    limits.faults.faults = 0;
    const ErrorLines errors;
    play("never", "none", limits);
    std::atomic<bool> ending{false};
    std::thread killer([&] {
        while (!ending) {
            if (process->isUp())
                sendSignal(process->processIdentifier(), SIGKILL);
            std::this_thread::sleep_for(milliseconds(15));
        }
    });
    const auto preset = std::make_shared<AUAudioUnitPreset>(0, "Quiet");
    for (int time = 0; time < 12; ++time) {
        host->useRate(time % 2 == 0 ? 44100.0 : 48000.0);
        unit->factoryPresets();
        try {
            unit->setCurrentPreset(preset);
        } catch (const PlatformError &) {
            // It has failed over it.
        }
        unit->setContextName("Song " + std::to_string(time));
    }
    ending = true;
    killer.join();
    EXPECT_TRUE(host->sounds());
    EXPECT_TRUE(host->goesOn());
}

// --- Ends that do not wait ------------------------------------------------------------

TEST_F(RecoveryTest, DetachingDoesNotWaitForAPreparationThatHangs)
{
    const ErrorLines errors;
    play("activate", "loop");
    sabotage.arm(1);
    auto preparation = std::async(std::launch::async, [this] { host->useRate(44100.0); });
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    process = nullptr;
    unit.reset();
    EXPECT_LT(timeOf([&] { host->detachUnit(); }), promptly);
    preparation.get();
    EXPECT_TRUE(host->goesOn());
}

TEST_F(RecoveryTest, StoppingDoesNotWaitForAPreparationThatHangs)
{
    const ErrorLines errors;
    play("deactivate", "loop");
    sabotage.arm(1);
    auto preparation = std::async(std::launch::async, [this] { host->useRate(44100.0); });
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    EXPECT_LT(timeOf([&] { host->stop(); }), promptly);
    preparation.get();
}

TEST_F(RecoveryTest, DetachingDoesNotWaitForARequestThatHangs)
{
    const ErrorLines errors;
    play("preset", "loop");
    sabotage.arm(1);
    auto request = std::async(std::launch::async, [kept = unit] {
        const auto preset = std::make_shared<AUAudioUnitPreset>(0, "Quiet");
        EXPECT_THROW(kept->setCurrentPreset(preset), PlatformError);
    });
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    EXPECT_LT(timeOf([&] {
                  host->detachUnit();
                  unit.reset();
                  request.get();
              }),
              promptly);
}

class FirstPreparation : public SabotageFixture, public testing::WithParamInterface<bool>
{
};

TEST_P(FirstPreparation, IsNotWaitedForByStopping)
{
    const ErrorLines errors;
    const auto stopped = unit("never", "none");
    const AVAudioFormat format(PacedDevice::sampleRate, 2);
    AVAudioEngine engine(std::make_unique<PacedDevice>(std::make_shared<PacedDevice::Report>()));
    if (GetParam())
        engine.enableManualRenderingMode(format, PacedDevice::framesPerBlock);
    const auto node = std::make_shared<AVAudioUnit>(stopped);
    engine.connect(node, engine.mainMixerNode(), std::make_shared<AVAudioFormat>(format));
    engine.connect(engine.mainMixerNode(), engine.outputNode(), nullptr);

    sendSignal(stopped->process().processIdentifier(), SIGSTOP);
    auto start = std::async(std::launch::async, [&] { engine.start(); });
    // It may come too early, but at last it comes in between.
    while (start.wait_for(milliseconds(1)) != std::future_status::ready)
        EXPECT_LT(timeOf([&] { engine.stop(); }), promptly);
    start.get();
    EXPECT_TRUE(errors.waitFor("gave no answer before its end; it is started again."));
    engine.stop();
    engine.detach(node);
}

INSTANTIATE_TEST_SUITE_P(Ways, FirstPreparation, testing::Bool(),
                         [](const testing::TestParamInfo<bool> &isByHand) {
                             return isByHand.param ? "ByHand" : "Live";
                         });

} // namespace
