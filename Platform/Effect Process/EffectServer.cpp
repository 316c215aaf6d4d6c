#include "Platform/Effect Process/EffectServer.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include <poll.h>

namespace platform::effect
{

namespace
{

// The host reads at once, or is gone.
constexpr std::chrono::seconds patience{60};

// Where a plug-in closes what is not its own on another thread, a wait for it that
// is under way does not end.
constexpr std::chrono::milliseconds lookAtSocket{500};

// How often what the plug-in said on its audio thread is written out.
constexpr std::chrono::milliseconds logInterval{20};

} // namespace

EffectServer::EffectServer(FileDescriptor socket) : socket_(std::move(socket)) {}

EffectServer::~EffectServer() = default;

bool EffectServer::run()
{
    while (!isEnding_) {
        pollfd wait{socket_.descriptor(), POLLIN, 0};
        if (::poll(&wait, 1, static_cast<int>(lookAtSocket.count())) == 0)
            continue;
        if (!socket_.receive())
            return false;
        for (auto &requests = socket_.received(); !requests.empty() && !isEnding_;) {
            Message request = std::move(requests.front());
            requests.pop_front();
            handle(std::move(request));
        }
    }
    return true;
}

void EffectServer::handle(Message request)
{
    try {
        const auto body = perform(request);
        send(MessageKind::answer, request.number, body);
    } catch (const PlatformError &error) {
        send(MessageKind::refusal, request.number,
             MessageWriter::message(std::string(error.what())));
    }
}

std::vector<std::byte> EffectServer::perform(Message &request)
{
    switch (request.kind) {
    case MessageKind::instantiate:
        return instantiate(request);
    case MessageKind::prepare:
        prepare(MessageReader::read<Preparation>(request.body), std::move(request.descriptor));
        return {};
    case MessageKind::listPresets:
        return MessageWriter::message(presetNames());
    case MessageKind::loadPreset:
        return MessageWriter::message(loadPreset(request.body));
    case MessageKind::setContextName:
        hosted().instance().setContextName(
            MessageReader::read<std::optional<std::string>>(request.body));
        return {};
    case MessageKind::setOffline:
        hosted().instance().setOffline(MessageReader::read<bool>(request.body));
        return {};
    case MessageKind::end:
        isEnding_ = true;
        link_.reset();
        hosted_.reset();
        return {};
    default:
        throw ProtocolBreach("the host sends what only the effect may send");
    }
}

std::vector<std::byte> EffectServer::instantiate(Message &request)
{
    const auto wanted = MessageReader::read<Instantiation>(request.body);
    const Preparation &preparation = wanted.preparation;
    hosted_ = std::make_unique<lv2::HostedPlugin>(
        wanted.uri, wanted.bundles,
        lv2::Instance::Settings{preparation.sampleRate, preparation.maximumFrames,
                                preparation.isOffline, wanted.contextName},
        wanted.state ? &*wanted.state : nullptr, wanted.scratchFolder);
    if (hosted().logs())
        logWriter_ = std::make_unique<lv2::PollingThread>(
            "effect-log", logInterval,
            [exchange = hosted().exchange()] { exchange->log.writeOut(); });
    sendMidi(wanted.midi);
    if (wanted.hasLink)
        connect(preparation, std::move(request.descriptor));
    return MessageWriter::message(description());
}

void EffectServer::prepare(const Preparation &preparation, FileDescriptor memory)
{
    link_.reset();
    hosted().instance().setOffline(preparation.isOffline);
    hosted().prepare(preparation.sampleRate, preparation.maximumFrames);
    connect(preparation, std::move(memory));
}

void EffectServer::connect(const Preparation &preparation, FileDescriptor memory)
{
    const LinkShape &shape = preparation.shape;
    if (shape.inputs != hosted().inputChannelCount() ||
        shape.outputs != hosted().outputChannelCount() ||
        shape.maximumFrames != preparation.maximumFrames)
        throw PlatformError("The effect has other channels than it had.");
    link_ = std::make_unique<EffectEnd>(LinkMemory(std::move(memory), shape), hosted().instance(),
                                        *hosted().exchange());
}

void EffectServer::sendMidi(const std::vector<std::vector<std::uint8_t>> &messages)
{
    for (const auto &message : messages)
        hosted().exchange()->midiInput.push(0, message);
}

bool EffectServer::loadPreset(std::span<const std::byte> body)
{
    if (!hosted().loadPreset(MessageReader::read<std::uint64_t>(body)))
        return false;
    // Before the answer: whoever has that can rely on what comes after a fault.
    send(MessageKind::settings, 0, MessageWriter::message(hosted().instance().save()));
    return true;
}

std::vector<std::string> EffectServer::presetNames()
{
    std::vector<std::string> names;
    for (const auto &preset : hosted().plugin().presets())
        names.push_back(preset.label);
    return names;
}

Description EffectServer::description() const
{
    return {hosted_->plugin().name(), hosted_->inputChannelCount(), hosted_->outputChannelCount(),
            hosted_->takesMIDI(), hosted_->MIDIOutputNames()};
}

lv2::HostedPlugin &EffectServer::hosted()
{
    if (!hosted_)
        throw ProtocolBreach("the host asks before there is an effect");
    return *hosted_;
}

void EffectServer::send(MessageKind kind, std::uint64_t number, std::span<const std::byte> body)
{
    socket_.send(kind, number, body, -1, MessageSocket::Clock::now() + patience);
}

} // namespace platform::effect
