#include "Platform/Audio/MIDIDelivery.hpp"

#include "Platform/Foundation/Print.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace platform::audio
{

namespace
{

// Readers of MIDI take three bytes for granted.
constexpr std::size_t leastBytes = 3;

// A cable of MIDI carries about a thousand messages a second, and this is for all of
// a unit's outputs. Many may come at once, such as the ends of all notes.
constexpr double eventsPerSecond = 8000.0;
constexpr double mostAtOnce = 4096.0;

} // namespace

MIDIDelivery::MIDIDelivery(std::string unitName, std::shared_ptr<lv2::MidiOutput> output)
    : unitName_(std::move(unitName)), output_(std::move(output)), budget_(mostAtOnce),
      lastRefill_(std::chrono::steady_clock::now())
{
}

void MIDIDelivery::deliver()
{
    deliveringThread_.store(std::this_thread::get_id());
    refillBudget();
    while (const auto event = output_->pop()) {
        if (takesFromBudget())
            deliverEvent(*event);
        else
            ++refused_;
    }
    reportLosses();
}

void MIDIDelivery::refillBudget()
{
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> passed = now - lastRefill_;
    lastRefill_ = now;
    budget_ = std::min(mostAtOnce, budget_ + passed.count() * eventsPerSecond);
}

bool MIDIDelivery::takesFromBudget()
{
    if (isOffline_.load(std::memory_order_relaxed))
        return true;
    if (budget_ < 1.0)
        return false;
    budget_ -= 1.0;
    return true;
}

void MIDIDelivery::deliverEvent(const lv2::MidiOutput::Event &event)
{
    padded_.assign(std::max(event.bytes.size(), leastBytes), 0);
    std::copy(event.bytes.begin(), event.bytes.end(), padded_.begin());
    const std::lock_guard lock(handlerMutex_);
    // Kept alive here, should it replace itself.
    const auto handler = handler_;
    if (handler)
        (*handler)(event.sampleTime, event.output, static_cast<std::int64_t>(event.bytes.size()),
                   padded_.data());
}

void MIDIDelivery::setHandler(AUMIDIOutputEventBlock handler)
{
    auto replacement =
        handler ? std::make_shared<const AUMIDIOutputEventBlock>(std::move(handler)) : nullptr;
    // On the delivering thread it is the handler itself that asks: the lock is held.
    std::optional<std::lock_guard<std::mutex>> lock;
    if (deliveringThread_.load() != std::this_thread::get_id())
        lock.emplace(handlerMutex_);
    std::swap(handler_, replacement);
    hasHandler_.store(handler_ != nullptr, std::memory_order_relaxed);
}

void MIDIDelivery::reportLosses()
{
    // Without a handler nobody misses anything.
    if (output_->takeLostCount() + refused_ == 0 || lossesWereReported_ || !hasHandler())
        return;
    lossesWereReported_ = true;
    printError(
        fmt::format("{}: sends more MIDI than can be handed on; some of it is lost", unitName_));
}

} // namespace platform::audio
