#include "Platform/Audio/AVAudioMixerNode.hpp"
#include "Platform/Audio/AVAudioOutputNode.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/AudioGraph.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace
{

using platform::audio::AudioGraph;

class AudioGraphTest : public testing::Test
{
protected:
    AudioGraph graph;
    std::shared_ptr<AVAudioPlayerNode> player = std::make_shared<AVAudioPlayerNode>();
    std::shared_ptr<AVAudioPlayerNode> other = std::make_shared<AVAudioPlayerNode>();
    std::shared_ptr<AVAudioUnit> first =
        std::make_shared<AVAudioUnit>(std::make_shared<test::ScriptedUnit>());
    std::shared_ptr<AVAudioUnit> second =
        std::make_shared<AVAudioUnit>(std::make_shared<test::ScriptedUnit>());
    std::shared_ptr<AVAudioMixerNode> mixer = std::make_shared<AVAudioMixerNode>();
    std::shared_ptr<AVAudioOutputNode> output = std::make_shared<AVAudioOutputNode>();
};

TEST_F(AudioGraphTest, ConnectingAnUnattachedNodeAttachesIt)
{
    EXPECT_FALSE(graph.isAttached(*player));
    graph.connect(player, mixer, std::nullopt);
    EXPECT_TRUE(graph.isAttached(*player));
    EXPECT_TRUE(graph.isAttached(*mixer));
}

TEST_F(AudioGraphTest, ANewConnectionReplacesWhatTheSourceFed)
{
    graph.connect(player, mixer, std::nullopt);
    graph.connect(player, first, AVAudioFormat(44100, 1));
    EXPECT_TRUE(graph.inputs(*mixer).empty());
    ASSERT_TRUE(graph.output(*player));
    EXPECT_EQ(graph.output(*player)->destination, first);
    EXPECT_EQ(graph.output(*player)->format, AVAudioFormat(44100, 1));
}

TEST_F(AudioGraphTest, ANewConnectionReplacesWhatFedTheDestinationUnlessItMixes)
{
    graph.connect(player, first, std::nullopt);
    graph.connect(other, first, std::nullopt);
    ASSERT_EQ(graph.inputs(*first).size(), 1U);
    EXPECT_EQ(graph.inputs(*first).front().source, other);

    graph.connect(player, mixer, std::nullopt);
    graph.connect(first, mixer, std::nullopt);
    ASSERT_EQ(graph.inputs(*mixer).size(), 2U);
    EXPECT_EQ(graph.inputs(*mixer)[0].source, player);
    EXPECT_EQ(graph.inputs(*mixer)[1].source, first);
}

TEST_F(AudioGraphTest, DisconnectingTakesAllInputsAndNothingElse)
{
    graph.connect(player, mixer, std::nullopt);
    graph.connect(first, mixer, std::nullopt);
    graph.connect(mixer, output, std::nullopt);
    graph.disconnectInput(*mixer);
    EXPECT_TRUE(graph.inputs(*mixer).empty());
    EXPECT_EQ(graph.inputs(*output).size(), 1U);
    EXPECT_TRUE(graph.isAttached(*player));
    graph.disconnectInput(*mixer); // nothing to take
}

TEST_F(AudioGraphTest, DetachingTakesTheNodeWithItsConnections)
{
    graph.connect(player, first, std::nullopt);
    graph.connect(first, mixer, std::nullopt);
    graph.detach(*first);
    EXPECT_FALSE(graph.isAttached(*first));
    EXPECT_FALSE(graph.output(*player));
    EXPECT_TRUE(graph.inputs(*mixer).empty());
    graph.detach(*first); // not there any more
}

TEST_F(AudioGraphTest, ACircleIsRefusedAndChangesNothing)
{
    graph.connect(first, second, std::nullopt);
    EXPECT_THROW(graph.connect(second, first, std::nullopt), PlatformError);
    EXPECT_THROW(graph.connect(first, first, std::nullopt), PlatformError);
    EXPECT_EQ(graph.output(*first)->destination, second);
    EXPECT_FALSE(graph.output(*second));
}

TEST_F(AudioGraphTest, APlayerTakesNoInputAndTheOutputFeedsNothing)
{
    EXPECT_THROW(graph.connect(first, player, std::nullopt), PlatformError);
    EXPECT_THROW(graph.connect(output, mixer, std::nullopt), PlatformError);
}

} // namespace
