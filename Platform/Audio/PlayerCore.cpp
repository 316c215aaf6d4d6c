#include "Platform/Audio/PlayerCore.hpp"

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/ConvertBuffer.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <utility>

#include <pthread.h>

namespace platform::audio
{

PlayerCore::PlayerCore() : feeder_([this] { runFeeder(); })
{
    pthread_setname_np(feeder_.native_handle(), "player feeder");
}

PlayerCore::~PlayerCore()
{
    stop();
    {
        const Lock lock(mutex_);
        ends_ = true;
        changed();
    }
    feeder_.join();
}

void PlayerCore::schedule(std::shared_ptr<AVAudioFile> file, std::function<void()> completion)
{
    const Lock lock(mutex_);
    queue_.push_back({std::move(file), std::move(completion)});
    changed();
}

void PlayerCore::play()
{
    const Lock lock(mutex_);
    playing_ = true;
    changed();
}

void PlayerCore::pause()
{
    const Lock lock(mutex_);
    playing_ = false;
}

void PlayerCore::stop()
{
    Lock lock(mutex_);
    playing_ = false;
    std::move(queue_.begin(), queue_.end(), std::back_inserter(dropped_));
    queue_.clear();
    headBegun_ = false;
    if (feed_) {
        const AVAudioFormat format = feed_->format();
        feed_ = std::make_unique<FileFeed>(format);
        ring_.exchange(std::make_unique<SampleRing>(format, ring_.get()->capacity(),
                                                    ring_.get()->largestBlock()));
    }
    changed();
    if (onFeeder()) {
        runCompletions(lock, std::exchange(dropped_, {}));
        return;
    }
    // A completion that is just running counts as well: after a stop, none of
    // what was scheduled before may still be about to schedule anew.
    feederRests_.wait(lock, [this] { return dropped_.empty() && !completing_; });
}

void PlayerCore::setOutput(const AVAudioFormat &format, std::uint32_t framesAhead,
                           std::uint32_t largestBlock, Feeding feeding)
{
    const Lock lock(mutex_);
    if (std::exchange(feeding_, feeding) != feeding)
        changed();
    if (feed_ && feed_->format() == format && ring_.get()->capacity() >= framesAhead &&
        ring_.get()->largestBlock() >= largestBlock)
        return;
    std::unique_ptr<AVAudioPCMBuffer> ahead;
    bool resumes = false;
    if (feed_) {
        resumes = feed_->hasFile();
        ahead = convertBuffer(*takeFramesAhead(), format);
        framesAhead = std::max(framesAhead, ahead->frameLength());
    }
    feed_ = std::make_unique<FileFeed>(format);
    if (resumes)
        feed_->begin(queue_.front().file);
    auto ring = std::make_unique<SampleRing>(format, framesAhead, largestBlock);
    if (ahead)
        ring->write(ahead->floatChannelData(), 0, ahead->frameLength());
    ring_.exchange(std::move(ring));
    changed();
}

// Takes the ring away from the reader, with all that was made ready for it.
std::unique_ptr<AVAudioPCMBuffer> PlayerCore::takeFramesAhead()
{
    const std::unique_ptr<SampleRing> ring = ring_.exchange(nullptr);
    const std::uint32_t channels = feed_->format().channelCount();
    std::vector<std::vector<float>> samples(channels);
    const auto append = [&samples](const float *const *from, std::uint32_t offset,
                                   std::uint32_t count) {
        if (count == 0)
            return;
        for (std::vector<float> &channel : samples) {
            channel.insert(channel.end(), *from + offset, *from + offset + count);
            ++from;
        }
    };
    while (const std::uint32_t count = std::min(ring->available(), ring->largestBlock())) {
        append(ring->front(count), 0, count);
        ring->take(count);
    }
    append(feed_->channels(), feed_->offset(), feed_->frames());
    feed_->take(feed_->frames());
    feed_->drain();
    append(feed_->channels(), feed_->offset(), feed_->frames());

    const auto count = static_cast<std::uint32_t>(samples.front().size());
    auto ahead = std::make_unique<AVAudioPCMBuffer>(feed_->format(), count);
    for (std::uint32_t channel = 0; channel < channels; ++channel)
        std::copy(samples[channel].begin(), samples[channel].end(),
                  ahead->floatChannelData()[channel]);
    ahead->setFrameLength(count);
    return ahead;
}

bool PlayerCore::hasFrames(std::uint32_t frames) noexcept
{
    return !completing_ && (!playing_ || framesReady() >= frames);
}

// Decodes on the calling thread, whose cache then holds what is read next; that the
// feeder would decode meanwhile does not make up for handing it over. Only what
// has to happen on the feeder is left to it.
void PlayerCore::waitForFrames(std::uint32_t frames)
{
    if (hasFrames(frames))
        return;
    Lock lock(mutex_);
    for (;;) {
        if (completing_) {
            // It may stop, play or schedule.
            feederRests_.wait(lock, [this] { return !completing_; });
            letQueuesSettle(lock);
        }
        if (!playing_)
            return;
        while (framesReady() < frames && feedFrames())
            continue;
        const bool areEnough = framesReady() >= frames;
        if (!areEnough || isPlayedThrough())
            changed();
        if (areEnough)
            return;
        feederRests_.wait(lock, [this] { return !awake_; });
        if (framesReady() >= frames)
            return;
        const std::uint64_t before = changes_;
        letQueuesSettle(lock);
        if (changes_ != before)
            continue;
        if (!feed_ || !feed_->holdsBack() || !queue_.empty())
            return;
        drainWanted_ = true;
    }
}

void PlayerCore::letQueuesSettle(Lock &lock)
{
    lock.unlock();
    foundation::waitUntilSerialQueuesAreIdle();
    lock.lock();
}

std::uint32_t PlayerCore::framesReady() noexcept
{
    const SampleRing *const ring = ring_.acquire();
    const std::uint32_t frames = ring != nullptr ? ring->available() : 0;
    ring_.release();
    return frames;
}

const float *const *PlayerCore::borrow(const AVAudioFormat &format, std::uint32_t &frames) noexcept
{
    giveBack();
    SampleRing *const ring = playing_.load(std::memory_order_relaxed) ? ring_.acquire() : nullptr;
    if (ring == nullptr || ring->format() != format) {
        ring_.release();
        frames = 0;
        return nullptr;
    }
    frames = std::min({frames, ring->available(), ring->largestBlock()});
    borrowedFrom_ = ring;
    borrowed_ = frames;
    return ring->front(frames);
}

void PlayerCore::giveBack() noexcept
{
    if (borrowedFrom_ == nullptr)
        return;
    borrowedFrom_->take(borrowed_);
    borrowedFrom_ = nullptr;
    ring_.release();
}

void PlayerCore::changed()
{
    ++changes_;
    awake_ = true;
    feederWakes_.notify_one();
}

void PlayerCore::runFeeder()
{
    // With other work on all processors it would come too late for the ring.
    foundation::claimPromptness();
    Lock lock(mutex_);
    while (!ends_ || !dropped_.empty()) {
        if (!dropped_.empty())
            runCompletions(lock, std::exchange(dropped_, {}));
        else if (!feedOneStep(lock))
            rest(lock);
    }
}

// Does the next small piece of work; answers whether there was any.
bool PlayerCore::feedOneStep(Lock &lock)
{
    if (feedFrames())
        return true;
    if (isPlayedThrough()) {
        completeHead(lock);
        return true;
    }
    // With the head begun there is more to come of its file, once there is room.
    if (!feed_ || headBegun_ || feed_->frames() > 0)
        return false;
    if (feed_->holdsBack() && (drainWanted_ || ringRunsLow())) {
        drainWanted_ = false;
        feed_->drain();
        return true;
    }
    return false;
}

// The same for what brings frames of the queued files.
bool PlayerCore::feedFrames()
{
    if (!feed_)
        return false;
    if (feed_->frames() > 0) {
        const std::uint32_t written =
            ring_.get()->write(feed_->channels(), feed_->offset(), feed_->frames());
        feed_->take(written);
        return written > 0;
    }
    if (headBegun_ ? !feed_->hasFile() : queue_.empty())
        return false;
    if (!headBegun_)
        beginHead();
    else if (feed_->isDirect())
        return decodeIntoRing();
    else
        feed_->produce();
    return true;
}

// Whether the head's last frame is in the ring. Not before the node plays.
bool PlayerCore::isPlayedThrough() const
{
    return playing_ && headBegun_ && feed_ && feed_->frames() == 0 && !feed_->hasFile();
}

bool PlayerCore::decodeIntoRing()
{
    SampleRing &ring = *ring_.get();
    const SampleRing::Room room = ring.back();
    if (room.frames == 0)
        return false;
    ring.add(feed_->decode(room.channels, room.frames));
    return true;
}

void PlayerCore::beginHead()
{
    headBegun_ = true;
    const std::shared_ptr<AVAudioFile> &file = queue_.front().file;
    try {
        file->setFramePosition(0);
        feed_->begin(file);
    } catch (const PlatformError &error) {
        printError("The audio file '" + file->url().path() + "' cannot be played: " + error.what());
        feed_->silence();
    }
}

void PlayerCore::completeHead(Lock &lock)
{
    Queue done;
    done.push_back(std::move(queue_.front()));
    queue_.pop_front();
    headBegun_ = false;
    runCompletions(lock, std::move(done));
}

void PlayerCore::runCompletions(Lock &lock, Queue done)
{
    const bool outermost = !completing_.exchange(true);
    lock.unlock();
    for (Scheduled &scheduled : done)
        if (scheduled.completion)
            scheduled.completion();
    done.clear(); // files and what the completions hold go without the lock
    lock.lock();
    if (outermost) {
        completing_ = false;
        feederRests_.notify_all();
    }
}

bool PlayerCore::ringRunsLow() const
{
    const SampleRing *const ring = ring_.get();
    return ring->available() < ring->capacity() / 4;
}

// The callback wakes nobody: on time, the feeder looks at the ring itself, often enough.
void PlayerCore::rest(Lock &lock)
{
    awake_ = false;
    feederRests_.notify_all();
    const auto woken = [this] { return awake_; };
    if (!playing_ || !feed_ || feeding_ == Feeding::onDemand) {
        feederWakes_.wait(lock, woken);
        return;
    }
    const double quarter = 0.25 * ring_.get()->capacity() / feed_->format().sampleRate();
    feederWakes_.wait_for(lock, std::chrono::duration<double>(quarter), woken);
    awake_ = true;
}

} // namespace platform::audio
