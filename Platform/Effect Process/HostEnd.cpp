#include "Platform/Effect Process/HostEnd.hpp"

#include "Platform/Effect Process/Futex.hpp"
#include "Platform/Effect Process/LinkEvents.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace platform::effect
{

namespace
{

// A reported delay beyond this is a mistake: a minute and a half at 48 kHz.
constexpr float longestLatency = 1U << 22U;

} // namespace

HostEnd::HostEnd(const LinkShape &shape, MidiTraffic &midi)
    : memory_(shape), midi_(midi), inputEvents_(LinkMemory::eventCapacity),
      outputEvents_(LinkMemory::eventCapacity), spin_(usualSpin())
{
}

bool HostEnd::render(const Block &block, Clock::time_point deadline) noexcept
{
    if (block.frames > memory_.shape().maximumFrames)
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
    const auto begun = Clock::now();
    if (!spin_.spin([this] { return isAnswered(); }))
        sleepUntilAnswered(deadline);
    spin_.learn(Clock::now() - begun);
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

    isTaken_ = false;
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
    takeEvents(header.outputEventBytes);
    midi_.output.countLost(header.lostEvents);
    takeLatency(header.latency);
    return header.isRendered == 1;
}

void HostEnd::takeEvents(std::uint32_t bytes) noexcept
{
    const std::size_t count = std::min<std::size_t>(bytes, LinkMemory::eventCapacity);
    if (count == 0)
        return;
    std::copy_n(memory_.outputEvents().begin(), count, outputEvents_.begin());
    std::span<const std::byte> events(outputEvents_.data(), count);
    LinkEvent event;
    while (readLinkEvent(events, event))
        if (!event.bytes.empty() && event.output < memory_.shape().midiOutputs)
            midi_.output.push({event.time, static_cast<std::uint8_t>(event.output), event.bytes});
}

void HostEnd::takeLatency(float latency) noexcept
{
    latency_.store(std::isfinite(latency) ? std::clamp(latency, 0.0F, longestLatency) : 0.0F,
                   std::memory_order_relaxed);
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
