#include "Platform/LV2/PortBuffers.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace platform::lv2
{

namespace
{

// A block's worth of dense MIDI and some long system exclusives.
constexpr std::uint32_t usualSequenceSize = 32768;

// How far a plug-in may enlarge a port for events, which happens on the audio callback:
// the memory is there from the beginning.
constexpr std::uint32_t mostEnlarged = 1048576;

} // namespace

PortBuffers::PortBuffers(const std::vector<Port> &ports, double sampleRate,
                         std::uint32_t maximumFrames, bool mayGrow)
    : ports_(ports), sampleRate_(sampleRate), reserve_(mayGrow ? mostEnlarged : 0),
      resize_{this,
              [](LV2_Resize_Port_Feature_Data self, std::uint32_t port, std::size_t size) {
                  return static_cast<PortBuffers *>(self)->resize(port, size);
              }},
      owned_(ports.size(), nullptr), silence_(maximumFrames, 0.0F), nowhere_(maximumFrames, 0.0F),
      values_(ports.size(), 0.0F), wanted_(ports.size()), events_(ports.size(), nullptr)
{
    for (const Port &port : ports_) {
        switch (port.kind) {
        case PortKind::audio:
        case PortKind::cv:
            addAudio(port);
            break;
        case PortKind::control:
            addControl(port);
            break;
        case PortKind::atom:
            addEvents(port);
            break;
        case PortKind::unknown:
            break;
        }
    }
}

void PortBuffers::addAudio(const Port &port)
{
    if (port.kind == PortKind::audio && !port.isSideChain)
        (port.isInput ? inputs_ : outputs_).push_back({port.index, nullptr});
    else if (!port.isOptional)
        owned_[port.index] = valuesOf(port);
}

float *PortBuffers::valuesOf(const Port &port)
{
    // A voltage that nobody applies is the one that the plug-in names, as a control is.
    const bool hasValue = port.isInput && port.kind == PortKind::cv && port.defaultValue != 0.0F;
    if (port.isInput && !hasValue)
        return silence_.data();
    return unheard_.emplace_back(silence_.size(), hasValue ? port.defaultValue : 0.0F).data();
}

float PortBuffers::scaleOf(const Port &port) const
{
    return port.isScaledBySampleRate ? static_cast<float>(sampleRate_) : 1.0F;
}

void PortBuffers::addControl(const Port &port)
{
    const float scale = port.isDefaultUnscaled ? 1.0F : scaleOf(port);
    values_[port.index] = port.isInput ? port.defaultValue * scale : 0.0F;
    wanted_[port.index].store(values_[port.index], std::memory_order_relaxed);
    owned_[port.index] = &values_[port.index];
    if (port.timeQuantity && port.isInput)
        timeControls_.emplace_back(port.index, *port.timeQuantity);
    if (port.isLatency && !port.isInput)
        latency_ = &values_[port.index];
}

void PortBuffers::addEvents(const Port &port)
{
    auto buffer =
        std::make_unique<EventBuffer>(std::max(port.minimumSize, usualSequenceSize), reserve_);
    owned_[port.index] = buffer->sequence();
    events_[port.index] = buffer.get();
    if (port.isInput) {
        // The port that the plug-in names for control wins over the first.
        if (port.hasMidi && (!midiInput_ || port.isControlDesignation))
            midiInput_ = buffer.get();
        if (port.takesTime)
            timeInputs_.push_back(buffer.get());
        eventInputs_.push_back(std::move(buffer));
    } else {
        if (port.hasMidi)
            midiOutputs_.push_back(buffer.get());
        eventOutputs_.push_back(std::move(buffer));
    }
}

std::uint32_t PortBuffers::sequenceSize() const
{
    std::uint32_t size = usualSequenceSize;
    for (const Port &port : ports_)
        size = std::max(size, port.minimumSize);
    return size;
}

std::uint32_t PortBuffers::largestSequence() const
{
    return std::max(sequenceSize(), reserve_);
}

LV2_Resize_Port_Status PortBuffers::resize(std::uint32_t port, std::size_t size) noexcept
{
    EventBuffer *const buffer = events(port);
    if (!buffer)
        return LV2_RESIZE_PORT_ERR_UNKNOWN;
    return buffer->grow(size) ? LV2_RESIZE_PORT_SUCCESS : LV2_RESIZE_PORT_ERR_NO_SPACE;
}

void PortBuffers::connect(LilvInstance *instance)
{
    for (const Port &port : ports_)
        lilv_instance_connect_port(instance, port.index, owned_[port.index]);
    for (const Connection &input : inputs_)
        lilv_instance_connect_port(instance, input.index, silence_.data());
    for (const Connection &output : outputs_)
        lilv_instance_connect_port(instance, output.index, nowhere_.data());
}

void PortBuffers::connectAudio(LilvInstance *instance, const float *const *inputs,
                               float *const *outputs) noexcept
{
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        if (inputs_[i].buffer == inputs[i])
            continue;
        inputs_[i].buffer = inputs[i];
        lilv_instance_connect_port(instance, inputs_[i].index, const_cast<float *>(inputs[i]));
    }
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        if (outputs_[i].buffer == outputs[i])
            continue;
        outputs_[i].buffer = outputs[i];
        lilv_instance_connect_port(instance, outputs_[i].index, outputs[i]);
    }
}

void PortBuffers::prepareRun() noexcept
{
    for (const auto &buffer : eventInputs_)
        buffer->clear();
    for (const auto &buffer : eventOutputs_)
        buffer->offerChunk();
    if (!controlsChanged_.load(std::memory_order_relaxed) ||
        !controlsChanged_.exchange(false, std::memory_order_acquire))
        return;
    for (const Port &port : ports_)
        if (port.kind == PortKind::control && port.isInput)
            values_[port.index] = wanted_[port.index].load(std::memory_order_relaxed);
}

void PortBuffers::tellPosition(const TimePosition &position, bool isNews) noexcept
{
    for (const auto &[port, quantity] : timeControls_) {
        values_[port] = static_cast<float>(position.value(quantity));
        wanted_[port].store(values_[port], std::memory_order_relaxed);
    }
    if (!isNews || timeInputs_.empty())
        return;
    TimePosition::Body body;
    const auto object = position.write(body);
    for (EventBuffer *const input : timeInputs_)
        input->append(0, Symbols::shared().atomObject, object);
}

bool PortBuffers::eventsAreIntact() const noexcept
{
    const auto isIntact = [](const auto &buffer) { return buffer->isIntact(); };
    return std::all_of(eventInputs_.begin(), eventInputs_.end(), isIntact) &&
           std::all_of(eventOutputs_.begin(), eventOutputs_.end(), isIntact);
}

bool PortBuffers::stateHasChanged() noexcept
{
    const Symbols &symbols = Symbols::shared();
    bool hasChanged = false;
    for (const auto &buffer : eventOutputs_)
        buffer->forEach([&](const EventBuffer::Event &event) {
            LV2_Atom_Object_Body object{};
            if ((event.type != symbols.atomObject && event.type != symbols.atomBlank) ||
                event.bytes.size() < sizeof object)
                return;
            std::memcpy(&object, event.bytes.data(), sizeof object);
            hasChanged |= object.otype == symbols.stateChanged;
        });
    return hasChanged;
}

void PortBuffers::storeControl(std::uint32_t index, float value)
{
    const Port &port = ports_[index];
    if (port.hasStrictBounds)
        value = std::clamp(value, port.minimum * scaleOf(port), port.maximum * scaleOf(port));
    wanted_[index].store(value, std::memory_order_relaxed);
    controlsChanged_.store(true, std::memory_order_release);
}

void PortBuffers::setControl(const std::string &symbol, float value)
{
    for (const Port &port : ports_)
        if (port.kind == PortKind::control && port.isInput && port.symbol == symbol &&
            std::isfinite(value))
            storeControl(port.index, value);
}

void PortBuffers::setControl(std::uint32_t port, float value)
{
    if (port < ports_.size() && ports_[port].kind == PortKind::control && ports_[port].isInput &&
        std::isfinite(value))
        storeControl(port, value);
}

float PortBuffers::control(std::uint32_t port) const
{
    return port < wanted_.size() ? wanted_[port].load(std::memory_order_relaxed) : 0.0F;
}

void PortBuffers::publishOutputs() noexcept
{
    for (const Port &port : ports_)
        if (port.kind == PortKind::control && !port.isInput)
            wanted_[port.index].store(values_[port.index], std::memory_order_relaxed);
}

std::map<std::string, float> PortBuffers::controls() const
{
    std::map<std::string, float> result;
    for (const Port &port : ports_)
        if (port.kind == PortKind::control && port.isInput && !port.isFreeWheeling &&
            !port.timeQuantity)
            result.emplace(port.symbol, wanted_[port.index].load(std::memory_order_relaxed));
    return result;
}

void PortBuffers::setFreeWheeling(bool freeWheeling)
{
    for (const Port &port : ports_)
        if (port.kind == PortKind::control && port.isInput && port.isFreeWheeling)
            storeControl(port.index, freeWheeling ? 1.0F : 0.0F);
}

} // namespace platform::lv2
