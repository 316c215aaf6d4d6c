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

} // namespace

MIDIDelivery::MIDIDelivery(std::string unitName, std::shared_ptr<lv2::MidiOutput> output)
    : unitName_(std::move(unitName)), output_(std::move(output))
{
}

void MIDIDelivery::deliver()
{
    deliveringThread_.store(std::this_thread::get_id());
    while (const auto event = output_->pop())
        deliverEvent(*event);
    reportLosses();
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
    if (output_->takeLostCount() == 0 || lossesWereReported_ || !hasHandler())
        return;
    lossesWereReported_ = true;
    printError(
        fmt::format("{}: sends more MIDI than can be handed on; some of it is lost", unitName_));
}

} // namespace platform::audio
