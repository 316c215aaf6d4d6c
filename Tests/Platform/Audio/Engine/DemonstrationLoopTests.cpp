#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace
{

using test::Channels;

class DemonstrationLoopTest : public testing::TestWithParam<int>
{
protected:
    std::shared_ptr<AVAudioFile> open() const
    {
        const std::string path =
            test::buildPath("share/parvane-host/" + std::to_string(GetParam()) + ".m4a");
        return std::make_shared<AVAudioFile>(URL::fileURLWithPath(path));
    }
};

Channels decoded(AVAudioFile &file)
{
    const AVAudioFormat format = *file.processingFormat();
    Channels channels(format.channelCount());
    AVAudioPCMBuffer buffer(format, 4096);
    for (;;) {
        file.read(buffer, 4096);
        if (buffer.frameLength() == 0)
            return channels;
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            const float *const samples = buffer.floatChannelData()[channel];
            channels[channel].insert(channels[channel].end(), samples,
                                     samples + buffer.frameLength());
        }
    }
}

TEST_P(DemonstrationLoopTest, ThreeLoopsAreTheFileLaidEndToEnd)
{
    const Channels once = decoded(*open());
    const std::shared_ptr<AVAudioFile> file = open();
    ASSERT_EQ(static_cast<std::int64_t>(once.front().size()), file->length());
    const AVAudioFormat format = *file->processingFormat();

    DispatchQueue queue("example.qrvx.test.loop");
    std::atomic<bool> loops{true};
    auto player = std::make_shared<AVAudioPlayerNode>();
    std::function<void()> schedule = [&] {
        player->scheduleFile(file, [&] {
            queue.async([&] {
                if (loops)
                    schedule();
            });
        });
    };
    AVAudioEngine engine;
    engine.enableManualRenderingMode(format, 512);
    engine.connect(player, engine.mainMixerNode(), file->processingFormat());
    engine.connect(engine.mainMixerNode(), engine.outputNode(), file->processingFormat());
    engine.start();
    schedule();
    player->play();
    const Channels rendered = test::renderOffline(engine, format, 3 * once.front().size(), 512);
    loops = false;
    player->stop();
    platform::foundation::waitUntilSerialQueuesAreIdle();
    EXPECT_EQ(test::firstDifference(rendered, test::repeated(once, 3)), -1);
}

INSTANTIATE_TEST_SUITE_P(AllEighty, DemonstrationLoopTest, testing::Range(1, 81));

} // namespace
