#include "Platform/Effect Process/EffectEnd.hpp"

#include "Platform/Effect Process/Futex.hpp"
#include "Platform/Effect Process/LinkEvents.hpp"
#include "Platform/Foundation/DenormalMode.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include <pthread.h>
#include <sched.h>

namespace platform::effect
{

EffectEnd::EffectEnd(LinkMemory memory, lv2::Instance &instance, lv2::Exchange &exchange,
                     std::chrono::nanoseconds spin)
    : memory_(std::move(memory)), instance_(instance), exchange_(exchange), spin_(spin)
{
    giveLatency();
    thread_ = std::thread([this] {
        pthread_setname_np(pthread_self(), "effect-audio");
        serve();
    });
}

EffectEnd::~EffectEnd()
{
    ending_.store(true);
    // The host is done with this link. A changed word keeps the thread from
    // falling asleep on it.
    memory_.header().request.fetch_add(1);
    futexWake(memory_.header().request);
    thread_.join();
}

void EffectEnd::serve() noexcept
{
    const foundation::DenormalMode noDenormals;
    LinkHeader &header = memory_.header();
    std::uint32_t served = 0;
    while (awaitRequest(served)) {
        served = header.request.load(std::memory_order_acquire);
        header.effectProcessor.store(::sched_getcpu(), std::memory_order_relaxed);
        adoptPriority();
        renderBlock();
        header.answer.store(served);
        if (header.hostSleeps.load() != 0)
            futexWake(header.answer);
    }
}

bool EffectEnd::awaitRequest(std::uint32_t served) noexcept
{
    LinkHeader &header = memory_.header();
    const auto isAsked = [&] { return header.request.load(std::memory_order_acquire) != served; };
    if (!spin_.spinBeside(header.hostProcessor.load(std::memory_order_relaxed), isAsked)) {
        header.effectSleeps.store(1);
        while (header.request.load() == served)
            futexWait(header.request, served);
        header.effectSleeps.store(0, std::memory_order_relaxed);
    }
    return !ending_.load();
}

void EffectEnd::adoptPriority() noexcept
{
    const foundation::ThreadPriority priority =
        memory_.header().priority.load(std::memory_order_relaxed);
    if (priority == adoptedPriority_)
        return;
    adoptedPriority_ = priority;
    foundation::adoptThreadPriority(priority);
}

void EffectEnd::renderBlock() noexcept
{
    LinkHeader &header = memory_.header();
    takeEvents(header.inputEventBytes);
    header.isRendered =
        instance_.run(memory_.inputs(), memory_.outputs(), header.frames, header.sampleTime) ? 1
                                                                                             : 0;
    giveEvents();
    giveLatency();
}

void EffectEnd::giveLatency() noexcept
{
    const auto latency = static_cast<float>(instance_.latency());
    memory_.header().latency =
        std::isfinite(latency) ? std::clamp(latency, 0.0F, longestLatency) : 0.0F;
}

void EffectEnd::takeEvents(std::uint32_t bytes) noexcept
{
    std::span<const std::byte> events =
        memory_.inputEvents().first(std::min<std::size_t>(bytes, LinkMemory::eventCapacity));
    LinkEvent event;
    while (readLinkEvent(events, event))
        exchange_.midiInput.push(static_cast<std::uint32_t>(event.time), event.bytes);
}

void EffectEnd::giveEvents() noexcept
{
    LinkHeader &header = memory_.header();
    LinkEventWriter writer(memory_.outputEvents());
    std::uint32_t lost = 0;
    while (const auto event = exchange_.midiOutput.pop()) {
        if (!writer.append({event->sampleTime, event->output, event->bytes}))
            ++lost;
    }
    header.outputEventBytes = writer.size();
    header.lostEvents = lost + static_cast<std::uint32_t>(exchange_.midiOutput.takeLostCount());
}

} // namespace platform::effect
