#pragma once

#include "Platform/Audio/FileFeed.hpp"
#include "Platform/Audio/Published.hpp"
#include "Platform/Audio/SampleRing.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

class AVAudioFile;

namespace platform::audio
{

/// What a player node is made of: the queue of files, the thread that decodes
/// them ahead (the feeder), and the ring from which the render plan plays.
///
/// Control operations may be called on any thread but the audio callback's.
class PlayerCore
{
public:
    PlayerCore();
    /// Drops what is queued, as `stop` does. Not on the feeder.
    ~PlayerCore();
    PlayerCore(const PlayerCore &) = delete;
    PlayerCore &operator=(const PlayerCore &) = delete;

    /// The node's operations of the same names.
    void schedule(std::shared_ptr<AVAudioFile> file, std::function<void()> completion);
    void play();
    void pause();
    void stop();
    bool isPlaying() const { return playing_.load(); }

    /// When the feeder looks for room in the ring: every now and then, for a callback
    /// that wakes nobody, or when there is news, for who calls `waitForFrames`.
    enum class Feeding { onTime, onDemand };
    /// What the output connection carries, and how many frames to read ahead.
    /// Frames read ahead in another format are converted, not lost.
    /// The callback asks for up to `largestBlock` frames at a time.
    void setOutput(const AVAudioFormat &format, std::uint32_t framesAhead,
                   std::uint32_t largestBlock, Feeding feeding);

    /// Whether no completion is running, and `frames` frames can be read or none are
    /// to be had because it does not play. On the thread that reads.
    bool hasFrames(std::uint32_t frames) noexcept;

    /// For deterministic rendering: returns when `frames` frames can be read, or
    /// when nothing that is queued, completing or under way on a serial queue can
    /// bring more. On the thread that reads.
    void waitForFrames(std::uint32_t frames);

    /// Frames of `format`, one pointer a channel, to be used until `giveBack`. Asked
    /// for `frames`, it sets that to how many there are: fewer when not playing,
    /// when nothing is queued, when the feeder is late, or when the format has just
    /// changed; null when there are none. The audio callback.
    REALTIME const float *const *borrow(const AVAudioFormat &format,
                                        std::uint32_t &frames) noexcept;
    /// Makes room of what was borrowed last, before the block ends. The audio
    /// callback.
    REALTIME void giveBack() noexcept;

    /// True on the thread that decodes and calls the completions.
    bool onFeeder() const { return std::this_thread::get_id() == feeder_.get_id(); }

private:
    struct Scheduled {
        std::shared_ptr<AVAudioFile> file;
        std::function<void()> completion;
    };
    using Queue = std::deque<Scheduled>;
    using Lock = std::unique_lock<std::mutex>;

    void runFeeder();
    bool feedOneStep(Lock &lock);
    bool feedFrames();
    bool isPlayedThrough() const;
    bool decodeIntoRing();
    void beginHead();
    void completeHead(Lock &lock);
    void runCompletions(Lock &lock, Queue done);
    bool ringRunsLow() const;
    void rest(Lock &lock);
    static void letQueuesSettle(Lock &lock);
    void changed();
    std::uint32_t framesReady() noexcept;
    std::unique_ptr<AVAudioPCMBuffer> takeFramesAhead();

    std::atomic<bool> playing_{false};
    std::atomic<bool> completing_{false}; // set and cleared under the mutex
    Published<SampleRing> ring_;
    SampleRing *borrowedFrom_ = nullptr; // the callback's own
    std::uint32_t borrowed_ = 0;

    std::mutex mutex_; // guards what follows, and the writing end of the ring
    std::condition_variable feederWakes_;
    std::condition_variable feederRests_;
    Queue queue_;   // the head is what is being fed
    Queue dropped_; // completions still to be called
    std::unique_ptr<FileFeed> feed_;
    Feeding feeding_ = Feeding::onTime;
    bool headBegun_ = false;
    bool drainWanted_ = false;
    bool awake_ = true;
    bool ends_ = false;
    std::uint64_t changes_ = 0; // counts what may give the feeder work

    std::thread feeder_; // last: it uses the others
};

} // namespace platform::audio
