// What plug-ins may ask of their host, each shown by one that does.

#include "AudioUnitFixture.hpp"

#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

/// What comes on standard error while it lives, as far as it has come.
class ErrorOutput
{
public:
    ErrorOutput()
    {
        const int file = ::open(path().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        ::dup2(file, STDERR_FILENO);
        ::close(file);
    }
    ~ErrorOutput()
    {
        ::dup2(original_, STDERR_FILENO);
        ::close(original_);
    }
    ErrorOutput(const ErrorOutput &) = delete;
    ErrorOutput &operator=(const ErrorOutput &) = delete;

    std::size_t count(const std::string &part) const
    {
        std::ifstream file(path());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        std::size_t found = 0;
        for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++found;
        return found;
    }

private:
    std::string path() const { return (folder_.path() / "errors").string(); }

    const test::TemporaryFolder folder_;
    const int original_ = ::dup(STDERR_FILENO);
};

/// As long as the test may last.
template <typename Condition>
void waitUntil(Condition condition)
{
    while (!condition())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

struct MIDIEvent {
    std::int64_t time;
    std::vector<std::uint8_t> bytes;
};

class AudioUnitFeatureTest : public AudioUnitFixture
{
protected:
    /// Ready to render offline, so that every block comes.
    std::shared_ptr<AUAudioUnit> readyUnit(const std::string &uri,
                                           std::uint32_t maximumFrames = blockFrames) const
    {
        auto made = unit(uri);
        made->setRenderingOffline(true);
        made->allocateRenderResources(48000.0, maximumFrames);
        return made;
    }

    /// One block that ends at `time`, which it moves on.
    static test::Channels renderBlock(AUAudioUnit &unit, const test::Channels &input,
                                      std::size_t frames, std::int64_t &time)
    {
        test::Channels output(unit.outputChannelCount(), std::vector<float>(frames, -99.0F));
        std::vector<const float *> inputs;
        std::vector<float *> outputs;
        for (const auto &channel : input)
            inputs.push_back(channel.data() + time);
        for (auto &channel : output)
            outputs.push_back(channel.data());
        EXPECT_TRUE(
            unit.render({inputs.data(), outputs.data(), static_cast<std::uint32_t>(frames), time}));
        time += static_cast<std::int64_t>(frames);
        return output;
    }

    /// All of `input` in blocks of these lengths, over and over.
    static test::Channels renderAll(AUAudioUnit &unit, const test::Channels &input,
                                    const std::vector<std::size_t> &lengths)
    {
        test::Channels all(unit.outputChannelCount());
        std::int64_t time = 0;
        for (std::size_t i = 0;; ++i) {
            const std::size_t left = input[0].size() - static_cast<std::size_t>(time);
            if (left == 0)
                return all;
            const auto block =
                renderBlock(unit, input, std::min(left, lengths[i % lengths.size()]), time);
            for (std::size_t channel = 0; channel < all.size(); ++channel)
                all[channel].insert(all[channel].end(), block[channel].begin(),
                                    block[channel].end());
        }
    }

    /// What comes out when the input is doubled and `delay` frames late.
    static test::Channels doubled(const test::Channels &input, std::size_t delay)
    {
        test::Channels result(input.size());
        for (std::size_t channel = 0; channel < input.size(); ++channel) {
            result[channel].assign(delay, 0.0F);
            for (std::size_t i = 0; i + delay < input[channel].size(); ++i)
                result[channel].push_back(2.0F * input[channel][i]);
        }
        return result;
    }
};

// What the plug-in of the surroundings reports, by its place in the block.
enum Report {
    positions,
    eventFrame,
    frame,
    speed,
    tempo,
    bar,
    barBeat,
    beatsPerBar,
    rate,
    tempoPort,
    beatPort,
    enabledPort,
    freePort,
    strictPort,
    voltage,
    bigPort,
    likePort
};

} // namespace

TEST_P(AudioUnitFeatureTest, TellsWhereRenderingStandsOnceAndAfterEachJump)
{
    const auto told = readyUnit("urn:test:surroundings");
    const auto first = render(*told, 0);
    EXPECT_EQ(first[positions], 1.0F);
    EXPECT_EQ(first[eventFrame], 0.0F);
    EXPECT_EQ(first[frame], 0.0F);
    EXPECT_EQ(first[speed], 1.0F);
    EXPECT_EQ(first[tempo], 120.0F);
    EXPECT_EQ(first[beatsPerBar], 4.0F);
    EXPECT_EQ(first[rate], 48000.0F);

    // It knows that itself.
    EXPECT_EQ(render(*told, blockFrames)[positions], 0.0F);
    EXPECT_EQ(render(*told, std::int64_t{2} * blockFrames)[positions], 0.0F);

    // Seven and a half beats of half a second.
    const auto later = render(*told, 180000);
    EXPECT_EQ(later[positions], 1.0F);
    EXPECT_EQ(later[frame], 180000.0F);
    EXPECT_EQ(later[bar], 1.0F);
    EXPECT_EQ(later[barBeat], 3.5F);
    EXPECT_EQ(render(*told, 180000 + blockFrames)[positions], 0.0F);
}

TEST_P(AudioUnitFeatureTest, TellsAnInstanceAtAnotherRateAnew)
{
    const auto told = readyUnit("urn:test:surroundings");
    render(*told, 0);
    told->allocateRenderResources(96000.0, blockFrames);
    const auto report = render(*told, blockFrames);
    EXPECT_EQ(report[positions], 1.0F);
    EXPECT_EQ(report[rate], 96000.0F);
}

TEST_P(AudioUnitFeatureTest, KeepsDesignatedPortsAtWhatTheyStandFor)
{
    const auto told = readyUnit("urn:test:surroundings");
    const auto first = render(*told, 0);
    EXPECT_EQ(first[tempoPort], 120.0F);
    EXPECT_EQ(first[beatPort], 0.0F);
    EXPECT_EQ(first[enabledPort], 1.0F) << "is not heard, whatever its data says";
    EXPECT_EQ(first[freePort], 1.0F);
    EXPECT_EQ(render(*told, 36000)[beatPort], 1.5F);
    told->setRenderingOffline(false);
    if (GetParam() == Place::thisProcess) {
        EXPECT_EQ(render(*told, 0)[freePort], 0.0F);
    }
}

TEST_P(AudioUnitFeatureTest, GivesUnconnectedPortsWhatTheirDataSays)
{
    const auto told = readyUnit("urn:test:surroundings");
    const auto report = render(*told);
    EXPECT_EQ(report[strictPort], 2.0F);
    EXPECT_EQ(report[voltage], 440.0F);
    EXPECT_GE(report[bigPort], 200000.0F - 8.0F);
    EXPECT_EQ(report[likePort], report[bigPort]);
}

TEST_P(AudioUnitFeatureTest, ConnectsEveryKindOfPort)
{
    const auto everything = readyUnit("urn:test:everything");
    const test::Channels input = test::constant(1, blockFrames, 1.0F);
    std::int64_t time = 0;
    const auto report = renderBlock(*everything, input, 16, time)[0];
    EXPECT_THAT(std::vector<float>(report.begin(), report.begin() + 8), Each(1.0F));
    EXPECT_EQ(report[8], 0.0F);
    EXPECT_EQ(report[9], 5.0F);
    EXPECT_EQ(report[10], 12000.0F);
}

TEST_P(AudioUnitFeatureTest, NeverRunsInPlace)
{
    const auto fragile = readyUnit("urn:test:in-place-broken");
    const test::Channels input = test::noise(2, 4 * blockFrames);
    EXPECT_EQ(test::firstDifference(renderAll(*fragile, input, {blockFrames, 17, 1}), input), -1);
}

TEST_P(AudioUnitFeatureTest, RendersManyChannels)
{
    const auto surround = readyUnit("urn:test:surround");
    ASSERT_EQ(surround->inputChannelCount(), 6U);
    ASSERT_EQ(surround->outputChannelCount(), 6U);
    const test::Channels input = test::noise(6, 4 * blockFrames);
    EXPECT_EQ(test::firstDifference(renderAll(*surround, input, {blockFrames}), input), -1);
}

TEST_P(AudioUnitFeatureTest, ListsPresetsBankByBank)
{
    const auto surround = readyUnit("urn:test:surround");
    const auto presets = surround->factoryPresets();
    ASSERT_TRUE(presets);
    std::vector<std::string> names;
    for (const auto &preset : *presets)
        names.push_back(preset->name);
    EXPECT_THAT(names, ElementsAre("Neither", "Loud: One", "Loud: Two", "Quiet: One"));
    std::vector<float> gains;
    for (const auto &preset : *presets) {
        surround->setCurrentPreset(preset);
        gains.push_back(render(*surround).front());
    }
    EXPECT_THAT(gains, ElementsAre(2.0F, 4.0F, 8.0F, 0.25F));
}

TEST_P(AudioUnitFeatureTest, WorksInPlaceWhileOfflineAndSoRepeatably)
{
    // Asks for work in each block, as a preset of its controls would have it.
    const auto work = [this] {
        const auto worker = readyUnit("urn:test:worker");
        worker->setCurrentPreset(worker->factoryPresets()->at(0));
        std::vector<std::vector<float>> reports;
        for (int block = 0; block < 50; ++block) {
            auto report = render(*worker, std::int64_t{block} * blockFrames);
            report.resize(6);
            reports.push_back(report);
        }
        return reports;
    };
    const auto reports = work();
    for (std::size_t block = 0; block < reports.size(); ++block) {
        EXPECT_EQ(reports[block][0], 2.0F * static_cast<float>(block + 1)) << "requests";
        // A block reports before its own answers arrive at its end.
        EXPECT_EQ(reports[block][2], 2.0F * static_cast<float>(block)) << "answers";
    }
    EXPECT_EQ(work(), reports);
}

TEST_P(AudioUnitFeatureTest, LogsToStandardErrorUnderThePluginsName)
{
    testing::internal::CaptureStderr();
    {
        const auto curious = readyUnit("urn:test:curious");
        render(*curious);
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("Test Curious: a block of 64 frames\n"))
        << "what was said last is lost";
}

TEST_P(AudioUnitFeatureTest, KeepsFilesOfTheStateAcrossSampleRates)
{
    const auto stateful = readyUnit("urn:test:state");
    stateful->setCurrentPreset(stateful->factoryPresets()->at(1));
    EXPECT_EQ(render(*stateful)[0], 11.0F);
    // From here on the value is in the file alone.
    stateful->setCurrentPreset(stateful->factoryPresets()->at(2));
    EXPECT_EQ(render(*stateful)[0], 11.0F);
    stateful->allocateRenderResources(44100.0, blockFrames);
    EXPECT_EQ(render(*stateful)[0], 11.0F);
    EXPECT_EQ(render(*stateful)[1], 44100.0F);
}

TEST_P(AudioUnitFeatureTest, KeepsAStateThatChangedByItselfWhateverBefallsTheEffect)
{
    constexpr std::size_t keyReported = 0;
    constexpr std::size_t savesReported = 1;
    const auto telling = readyUnit("urn:test:telling");
    constexpr std::array<std::uint8_t, 3> note{0x90, 60, 100};
    telling->scheduleMIDIEvent(0, note.data(), note.size());
    ASSERT_EQ(render(*telling)[keyReported], 60.0F);
    if (auto *remote = dynamic_cast<RemoteAudioUnit *>(telling.get())) {
        waitUntil([&] { return render(*telling)[savesReported] > 0.0F; });
        // What is answered later was sent later.
        telling->factoryPresets();
        const pid_t victim = remote->process().processIdentifier();
        ::kill(victim, SIGKILL);
        waitUntil([&] {
            return remote->process().processIdentifier() != victim && remote->process().isUp();
        });
    } else {
        telling->allocateRenderResources(96000.0, blockFrames);
    }
    EXPECT_EQ(render(*telling)[keyReported], 60.0F);
}

TEST_P(AudioUnitFeatureTest, RestoresDuringRunsWhereThePluginAllowsIt)
{
    const auto stateful = readyUnit("urn:test:state:thread-safe");
    const auto presets = stateful->factoryPresets();
    std::atomic<bool> ending{false};
    int blocks = 0;
    int missing = 0;
    std::thread audio([&] {
        for (; !ending; ++blocks)
            if (render(*stateful).empty())
                ++missing;
    });
    for (int i = 0; i < 5; ++i)
        stateful->setCurrentPreset(presets->at(0));
    ending = true;
    audio.join();
    EXPECT_GT(blocks, 0);
    EXPECT_EQ(missing, 0);
    EXPECT_EQ(render(*stateful)[2], 8.0F);
}

TEST_P(AudioUnitFeatureTest, GivesPowersOfTwoWithoutDelay)
{
    for (const std::uint32_t longest : {1U, 17U, 64U, 1000U}) {
        const auto blocks = readyUnit("urn:test:blocks:power", longest);
        const test::Channels input = test::noise(1, 5000);
        EXPECT_DOUBLE_EQ(blocks->latency() * 48000.0, 3.0);
        EXPECT_EQ(
            test::firstDifference(
                renderAll(*blocks, input, {longest, std::max(longest / 2 + 1, 1U), 1, longest}),
                doubled(input, 0)),
            -1)
            << longest;
    }
}

TEST_P(AudioUnitFeatureTest, GivesOneLengthWithoutDelayWhereTheHostsBlocksHaveIt)
{
    for (const char *uri : {"urn:test:blocks:fixed", "urn:test:blocks:both"}) {
        const auto blocks = readyUnit(uri);
        const test::Channels input = test::noise(1, 20 * blockFrames);
        EXPECT_EQ(
            test::firstDifference(renderAll(*blocks, input, {blockFrames}), doubled(input, 0)), -1)
            << uri;
        EXPECT_DOUBLE_EQ(blocks->latency() * 48000.0, 3.0);
    }
}

TEST_P(AudioUnitFeatureTest, GivesOneLengthWhateverTheHostsBlocksAndSaysWhatDelayThatIs)
{
    struct Case {
        const char *uri;
        std::uint32_t longest;
        std::uint32_t length;
    };
    for (const Case &each :
         {Case{"urn:test:blocks:fixed", 64, 64}, Case{"urn:test:blocks:fixed", 1000, 1000},
          Case{"urn:test:blocks:both", 64, 64}, Case{"urn:test:blocks:both", 1000, 512}}) {
        const auto blocks = readyUnit(each.uri, each.longest);
        const test::Channels input = test::noise(1, 9000);
        EXPECT_EQ(test::firstDifference(renderAll(*blocks, input, {1, 17, 64, 3, 33}),
                                        doubled(input, each.length)),
                  -1)
            << each.uri << " " << each.longest;
        EXPECT_DOUBLE_EQ(blocks->latency() * 48000.0, 3.0 + each.length);
    }
}

TEST_P(AudioUnitFeatureTest, KeepsTheFramesOfMIDIInRunsOfOtherLengths)
{
    struct Case {
        const char *uri;
        std::int64_t delay;
    };
    for (const Case &each :
         {Case{"urn:test:blocks:power", 0}, Case{"urn:test:blocks:fixed", 100}}) {
        const auto echo = readyUnit(each.uri, 100);
        std::vector<std::int64_t> times;
        echo->setMIDIOutputEventBlock([&](std::int64_t time, std::uint8_t, std::int64_t,
                                          const std::uint8_t *) -> std::int32_t {
            times.push_back(time);
            return 0;
        });
        const test::Channels input = test::constant(1, 5000, 0.0F);
        std::vector<std::int64_t> wanted;
        std::int64_t time = 0;
        while (time < 4000) {
            // Two notes in each block, the latter in its last frame.
            const std::array<std::uint8_t, 3> note{0x90, 60, 100};
            const auto frames = static_cast<std::uint32_t>(1 + time * 7 % 99);
            for (const std::uint32_t at : {frames / 2, frames - 1}) {
                EXPECT_TRUE(echo->scheduleMIDIEvent(at, note.data(), note.size()));
                wanted.push_back(time + at + each.delay);
            }
            renderBlock(*echo, input, frames, time);
        }
        // What the last blocks brought comes with the next.
        for (int block = 0; block < 2; ++block)
            renderBlock(*echo, input, 100, time);
        echo->setMIDIOutputEventBlock(nullptr);
        EXPECT_GT(wanted.size(), 50U);
        EXPECT_EQ(times, wanted) << each.uri;
    }
}

// --- Whatever else is installed ---------------------------------------------------

TEST_P(AudioUnitFeatureTest, IsNotHurtByOtherBundles)
{
    link("exploding");
    addManifest("broken.lv2", manifest("urn:test:mono") + "<urn:test:mono> lv2:name \"never");
    addManifest("huge.lv2", manifest("urn:test:mono"));
    std::filesystem::resize_file(folder() / "huge.lv2" / "manifest.ttl", 100'000'000);
    addManifest("nothing.lv2", manifest("urn:test:nothing"));
    std::ofstream(folder() / "nothing.lv2" / "none.so") << "no library";
    // A preset by somebody else, whose own data is broken.
    addManifest("presets.lv2",
                "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                "<urn:test:foreign> a <http://lv2plug.in/ns/ext/presets#Preset> ;"
                " lv2:appliesTo <urn:test:mono> ;"
                " <http://www.w3.org/2000/01/rdf-schema#seeAlso> <broken.ttl>, <manifest.ttl> .");
    std::ofstream(folder() / "presets.lv2" / "broken.ttl") << "<urn:test:foreign> a [[[";

    const auto mono = readyUnit("urn:test:mono");
    EXPECT_EQ(render(*mono), std::vector<float>(blockFrames, 2.0F));
    const auto presets = mono->factoryPresets();
    ASSERT_TRUE(presets);
    EXPECT_EQ(presets->at(0)->name, "urn:test:foreign");
    EXPECT_EQ(render(*mono), std::vector<float>(blockFrames, 2.0F));
}

TEST_P(AudioUnitFeatureTest, LoadsAPluginWhoseDataGoesInCircles)
{
    const std::string binary = test::buildPath(TEST_LV2_BUNDLES "/amplifier.lv2/amplifier.so");
    addManifest("amplifier.lv2", "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                                 "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
                                 "<urn:test:mono> a lv2:Plugin ; lv2:binary <file://" +
                                     binary +
                                     "> ; rdfs:seeAlso <manifest.ttl>, <one.ttl>, <two.ttl> .");
    const std::string data =
        "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
        "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
        "<urn:test:mono> rdfs:seeAlso <one.ttl>, <two.ttl>, <manifest.ttl>, <missing.ttl> .\n";
    std::ofstream(folder() / "amplifier.lv2" / "two.ttl") << data;
    std::ofstream(folder() / "amplifier.lv2" / "one.ttl") << data << R"(
<urn:test:mono> <http://usefulinc.com/ns/doap#name> "Round" ; lv2:port
    [ a lv2:InputPort, lv2:ControlPort ; lv2:index 0 ; lv2:symbol "gain" ; lv2:name "Gain" ;
      lv2:default 3.0 ; lv2:minimum 0.0 ; lv2:maximum 10.0 ] ,
    [ a lv2:InputPort, lv2:AudioPort ; lv2:index 1 ; lv2:symbol "in" ; lv2:name "In" ] ,
    [ a lv2:OutputPort, lv2:AudioPort ; lv2:index 2 ; lv2:symbol "out" ; lv2:name "Out" ] .
)";
    const auto mono = readyUnit("urn:test:mono");
    EXPECT_EQ(mono->audioUnitName(), "Round");
    EXPECT_EQ(render(*mono), std::vector<float>(blockFrames, 3.0F));
}

// --- Plug-ins without manners -----------------------------------------------------

TEST_P(AudioUnitFeatureTest, HandsOnWhatIsNoMIDIAtTimesThatTheBlockHas)
{
    const auto malformed = readyUnit("urn:test:rude:malformed");
    std::vector<MIDIEvent> events;
    malformed->setMIDIOutputEventBlock([&](std::int64_t time, std::uint8_t, std::int64_t length,
                                           const std::uint8_t *bytes) -> std::int32_t {
        events.push_back({time, {bytes, bytes + length}});
        return 0;
    });
    const test::Channels input = test::constant(1, 200, 0.5F);
    std::int64_t time = 100;
    renderBlock(*malformed, input, blockFrames, time);
    malformed->setMIDIOutputEventBlock(nullptr);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0].time, 100);
    EXPECT_THAT(events[0].bytes, ElementsAre(0x3C));
    EXPECT_EQ(events[1].time, 163);
    EXPECT_THAT(events[1].bytes, ElementsAre(0x90, 0x3C));
    EXPECT_EQ(events[2].time, 163);
    EXPECT_EQ(events[2].bytes.size(), 4U);
    EXPECT_EQ(events[3].time, 100);
    EXPECT_THAT(events[3].bytes, ElementsAre(0xFF, 0xFF, 0xFF));
}

TEST_P(AudioUnitFeatureTest, HandsOnNoMoreOfATorrentThanAnyoneCouldUseAndSaysSo)
{
    const ErrorOutput errors;
    const auto torrent = unit("urn:test:rude:torrent");
    torrent->allocateRenderResources(48000.0, blockFrames);
    torrent->setRenderingOffline(false);
    std::atomic<int> events{0};
    torrent->setMIDIOutputEventBlock(
        [&](std::int64_t, std::uint8_t, std::int64_t, const std::uint8_t *) -> std::int32_t {
            ++events;
            return 0;
        });
    const auto begun = std::chrono::steady_clock::now();
    const auto end = begun + std::chrono::seconds(30);
    while (errors.count("sends more MIDI") == 0 && std::chrono::steady_clock::now() < end)
        render(*torrent);
    for (int block = 0; block < 100; ++block)
        render(*torrent);
    torrent->setMIDIOutputEventBlock(nullptr);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
    EXPECT_EQ(errors.count("Test Torrent: sends more MIDI than can be handed on; some of it is "
                           "lost\n"),
              1U);
    EXPECT_GT(events, 0);
    EXPECT_LE(events, 4097 + 8000.0 * (taken.count() + 1.0));
}

INSTANTIATE_TEST_SUITE_P(Places, AudioUnitFeatureTest,
                         testing::Values(Place::thisProcess, Place::ownProcess), placeName);
