// An effect that takes its time to get ready, or never does, in a host that is about to
// play.

#include "SabotageFixture.hpp"

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <csignal>
#include <future>
#include <string>
#include <utility>

namespace
{

/// A device that turns out to run at another rate than effects are made for.
class UnusualDevice : public PacedDevice
{
public:
    using PacedDevice::PacedDevice;

    Obtained open(const AVAudioFormat & /*wanted*/) override
    {
        return {AVAudioFormat(44100.0, 2), framesPerBlock};
    }
};

/// Where in a start an effect gets ready for the device.
enum class Step { ofTheFile, ofTheEngine };

/// The host's own player, on that device.
class SlowPreparation : public SabotageFixture, public testing::WithParamInterface<Step>
{
protected:
    void SetUp() override
    {
        for (int number = 1; number <= 80; ++number)
            test::writeWave(folder.path() / (std::to_string(number) + ".m4a"),
                            test::constant(2, 4800, 0.25F), 48000);
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(folder.path().string())));
        makePlayer();
        end();
        SabotageFixture::SetUp();
    }

    void TearDown() override
    {
        end();
        Bundle::setMain(nullptr);
        SabotageFixture::TearDown();
    }

    /// A player that has found out the device's rate, with an effect that has not.
    std::shared_ptr<RemoteAudioUnit> connect(const std::string &moment, const std::string &fault,
                                             const RemoteAudioUnit::Limits &limits = {})
    {
        const auto effect = unit(moment, fault, limits);
        const auto node = std::make_shared<AVAudioUnit>(effect);
        // Connected afterwards, it is told of the rate with the next file.
        makePlayer(GetParam() == Step::ofTheEngine ? node : nullptr);
        if (GetParam() == Step::ofTheFile)
            player->connect(node);
        return effect;
    }

    void makePlayer(const std::shared_ptr<AVAudioUnit> &effect = nullptr)
    {
        report = std::make_shared<PacedDevice::Report>();
        player = std::make_shared<AUEnginePlayer>(
            std::make_shared<AVAudioEngine>(std::make_unique<UnusualDevice>(report)));
        player->connect(effect);
        player->start();
        player->stop();
    }

    void end()
    {
        if (!player)
            return;
        player->finalize();
        player.reset();
        // What waits there keeps the player.
        test::drainMainQueue();
    }

    bool goesOn() const
    {
        const std::uint64_t blocks = report->blocks;
        return eventually([&] { return report->blocks > blocks + 10; });
    }

    bool sounds() const
    {
        const std::uint64_t blocks = report->sounding;
        return eventually([&] { return report->sounding > blocks + 10; });
    }

    const test::EnvironmentVariable soundDriver{"SDL_AUDIODRIVER", "dummy"};
    std::shared_ptr<PacedDevice::Report> report;
    std::shared_ptr<AUEnginePlayer> player;
};

TEST_P(SlowPreparation, ThatHangsHoldsUpNeitherStartNorEnd)
{
    connect("activate", "loop");
    sabotage.arm(1);
    EXPECT_LT(timeOf([&] { player->start(); }), promptly);
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    EXPECT_TRUE(goesOn());
    EXPECT_LT(timeOf([&] { end(); }), promptly);
}

TEST_P(SlowPreparation, ThatHangsHoldsUpNoEndOnAnotherThread)
{
    connect("activate", "loop");
    sabotage.arm(1);
    auto start = std::async(std::launch::async, [this] { player->start(); });
    ASSERT_TRUE(eventually([&] { return sabotage.faults().size() == 1; }));
    EXPECT_LT(timeOf([&] { player->finalize(); }), promptly);
    start.get();
}

TEST_P(SlowPreparation, ThatHangsIsToldOfAndTheEffectIsStartedAgain)
{
    const ErrorLines errors;
    connect("activate", "loop", shortLimits());
    sabotage.arm(1);
    player->start();
    EXPECT_TRUE(errors.waitFor("' gave no answer for "));
    EXPECT_TRUE(sounds());
    EXPECT_THAT(errors.with("The effect '").front().text,
                testing::EndsWith("; it is started again."));
    EXPECT_EQ(errors.with("The effect '").size(), 1U);
}

TEST_P(SlowPreparation, ThatEndsAfterAllIsHeardFromThenOn)
{
    const ErrorLines errors;
    const auto effect = connect("never", "none");
    const std::uint64_t sounding = report->sounding;
    sendSignal(effect->process().processIdentifier(), SIGSTOP);
    player->start();
    EXPECT_TRUE(goesOn());
    EXPECT_EQ(report->sounding, sounding);
    sendSignal(effect->process().processIdentifier(), SIGCONT);
    EXPECT_TRUE(sounds());
    EXPECT_TRUE(errors.with("The effect '").empty());
}

INSTANTIATE_TEST_SUITE_P(Steps, SlowPreparation,
                         testing::Values(Step::ofTheFile, Step::ofTheEngine),
                         [](const testing::TestParamInfo<Step> &step) {
                             return step.param == Step::ofTheFile ? "OfTheFile" : "OfTheEngine";
                         });

// --- While it plays -----------------------------------------------------------------

class SlowPreparations : public SabotageFixture
{
};

TEST_F(SlowPreparations, AreWaitedForOnceAndTheLastCounts)
{
    const ErrorLines errors;
    const auto effect = unit("never", "none");
    PlayingHost host(effect, test::constant(2, 4800, 0.25F));
    ASSERT_TRUE(host.sounds());
    sendSignal(effect->process().processIdentifier(), SIGSTOP);
    EXPECT_LT(timeOf([&] {
                  for (const double rate : {32000.0, 44100.0, 88200.0, 96000.0})
                      host.useRate(rate);
              }),
              promptly);
    sendSignal(effect->process().processIdentifier(), SIGCONT);
    EXPECT_TRUE(host.sounds());
    EXPECT_TRUE(effect->process().isUp());
    EXPECT_TRUE(errors.with("The effect '").empty());
}

TEST_F(SlowPreparations, OfAnEffectThatIsNotWantedAreLeft)
{
    const ErrorLines errors;
    const auto effect = unit("never", "none");
    effect->allocateRenderResources(48000.0, 64);
    sendSignal(effect->process().processIdentifier(), SIGSTOP);
    effect->allocateRenderResources(44100.0, 64);
    effect->deallocateRenderResources();
    sendSignal(effect->process().processIdentifier(), SIGCONT);
    // It answers in order.
    EXPECT_TRUE(effect->factoryPresets());
    EXPECT_FALSE(effect->renderResourcesAllocated());
    EXPECT_EQ(effect->process().latency(), 0.0);
    EXPECT_FALSE(effect->process().render({}));
    EXPECT_TRUE(errors.with("The effect '").empty());
}

} // namespace
