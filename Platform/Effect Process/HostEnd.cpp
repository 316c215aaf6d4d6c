#include "Platform/Effect Process/HostEnd.hpp"

#include "Platform/Effect Process/Futex.hpp"
#include "Platform/Effect Process/LinkEvents.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

#include <algorithm>

#include <sched.h>

namespace platform::effect
{

HostEnd::HostEnd(const LinkShape &shape, MidiTraffic &midi, std::chrono::nanoseconds spin)
    : memory_(shape), midi_(midi), inputEvents_(LinkMemory::eventCapacity),
      outputEvents_(LinkMemory::eventCapacity), spin_(spin)
{
}

bool HostEnd::render(const Block &block, Clock::time_point deadline) noexcept
{
    if (block.frames > memory_.shape().maximumFrames || breach())
        return false;
    // The effect must be done with the last block before it gets another.
    if (!awaitAnswer(deadline)) {
        late_.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    if (!isTaken_)
        takeAnswer();
    post(block);
    if (!awaitAnswer(deadline)) {
        late_.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    if (!takeAnswer())
        return false;
    for (std::uint32_t channel = 0; channel < memory_.shape().outputs; ++channel)
        std::copy_n(memory_.outputs()[channel], block.frames, block.output[channel]);
    return true;
}

bool HostEnd::isAnswered() const noexcept
{
    return memory_.header().answer.load(std::memory_order_acquire) ==
           sequence_.load(std::memory_order_relaxed);
}

bool HostEnd::awaitAnswer(Clock::time_point deadline) noexcept
{
    if (isAnswered())
        return true;
    const int effects = memory_.header().effectProcessor.load(std::memory_order_relaxed);
    if (spin_.spinBeside(effects, [this] { return isAnswered(); }))
        return true;
    sleepUntilAnswered(deadline);
    return isAnswered();
}

void HostEnd::sleepUntilAnswered(Clock::time_point deadline) noexcept
{
    LinkHeader &header = memory_.header();
    // Announced before the last look, as the effect looks after its last word: of
    // the two, one sees the other.
    header.hostSleeps.store(1);
    for (;;) {
        const std::uint32_t seen = header.answer.load();
        if (seen == sequence_.load(std::memory_order_relaxed) || abandoned_.load() ||
            Clock::now() >= deadline)
            break;
        futexWait(header.answer, seen, deadline);
    }
    header.hostSleeps.store(0, std::memory_order_relaxed);
}

void HostEnd::post(const Block &block) noexcept
{
    for (std::uint32_t channel = 0; channel < memory_.shape().inputs; ++channel)
        std::copy_n(block.input[channel], block.frames, memory_.inputs()[channel]);
    LinkHeader &header = memory_.header();
    header.sampleTime = block.sampleTime;
    header.frames = block.frames;
    header.inputEventBytes = writeEvents(block.frames);
    header.priority.store(foundation::threadPriority(), std::memory_order_relaxed);
    header.hostProcessor.store(::sched_getcpu(), std::memory_order_relaxed);

    isTaken_ = false;
    postedTime_ = block.sampleTime;
    postedFrames_ = block.frames;
    const std::uint32_t next = sequence_.load(std::memory_order_relaxed) + 1;
    sequence_.store(next, std::memory_order_relaxed);
    postedAt_.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
    header.request.store(next);
    if (header.effectSleeps.load() != 0)
        futexWake(header.request);
}

std::uint32_t HostEnd::writeEvents(std::uint32_t frames) noexcept
{
    inputEvents_.clear();
    midi_.input.drainInto(inputEvents_, frames);
    LinkEventWriter writer(memory_.inputEvents());
    // Both lay events out alike, so what the one held the other holds.
    inputEvents_.forEach([&](const lv2::EventBuffer::Event &event) {
        writer.append({event.frame, 0, event.bytes});
    });
    return writer.size();
}

bool HostEnd::takeAnswer() noexcept
{
    isTaken_ = true;
    const LinkHeader &header = memory_.header();
    takeEvents(header.outputEventBytes.load(std::memory_order_relaxed));
    midi_.output.countLost(header.lostEvents.load(std::memory_order_relaxed));
    takeLatency(header.latency.load(std::memory_order_relaxed));
    const std::uint32_t isRendered = header.isRendered.load(std::memory_order_relaxed);
    if (isRendered > 1)
        note("a block is neither rendered nor not");
    return isRendered == 1 && !breach();
}

void HostEnd::takeEvents(std::uint32_t bytes) noexcept
{
    if (bytes > LinkMemory::eventCapacity)
        return note("its MIDI is longer than its room");
    std::copy_n(memory_.outputEvents().begin(), bytes, outputEvents_.begin());
    std::span<const std::byte> events(outputEvents_.data(), bytes);
    while (!events.empty())
        if (!takeEvent(events))
            return note("its MIDI is not in order");
}

bool HostEnd::takeEvent(std::span<const std::byte> &events) noexcept
{
    LinkEvent event;
    if (!readLinkEvent(events, event) || event.bytes.empty() ||
        event.output >= memory_.shape().midiOutputs || event.time < postedTime_ ||
        event.time - postedTime_ >= postedFrames_)
        return false;
    midi_.output.push({event.time, static_cast<std::uint8_t>(event.output), event.bytes});
    return true;
}

void HostEnd::takeLatency(float latency) noexcept
{
    // Written so that what is no number does not pass.
    if (latency >= 0.0F && latency <= longestLatency)
        latency_.store(latency, std::memory_order_relaxed);
    else
        note("its delay is impossible");
}

void HostEnd::note(const char *breach) noexcept
{
    breach_.store(breach, std::memory_order_relaxed);
}

void HostEnd::abandon() noexcept
{
    abandoned_.store(true);
    futexWake(memory_.header().answer);
}

std::chrono::nanoseconds HostEnd::overdue() const noexcept
{
    const Clock::duration posted(postedAt_.load(std::memory_order_relaxed));
    if (posted.count() == 0 || isAnswered())
        return std::chrono::nanoseconds(0);
    return Clock::now().time_since_epoch() - posted;
}

} // namespace platform::effect
