#include "Platform/Effect Process/EffectServer.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include <poll.h>
#include <time.h>

namespace platform::effect
{

namespace
{

// The host reads at once, or is gone.
constexpr std::chrono::seconds patience{60};

// Where a plug-in closes what is not its own on another thread, a wait for it that
// is under way does not end.
constexpr std::chrono::milliseconds lookAtSocket{500};

// How often to look whether work that is under way hangs.
constexpr std::chrono::milliseconds lookAtWork{100};

// How often what the plug-in said on its audio thread is written out.
constexpr std::chrono::milliseconds logInterval{20};

// After a change, until the host gets to know the settings.
constexpr std::chrono::milliseconds settingsDelay{500};

} // namespace

EffectServer::EffectServer(FileDescriptor socket)
    : socket_(std::move(socket)), time_(lookAtSocket),
      view_([this](MessageKind kind, std::uint64_t number, std::span<const std::byte> body) {
          send(kind, number, body);
      })
{
}

EffectServer::~EffectServer() = default;

bool EffectServer::run()
{
    while (!isEnding_) {
        waitForNews();
        if (!socket_.receive())
            return false;
        // Before a request replaces the instance.
        const bool stateHasChanged = hosted_ && hosted_->takeStateChange();
        for (auto &requests = socket_.received(); !requests.empty() && !isEnding_;) {
            Message request = std::move(requests.front());
            requests.pop_front();
            handle(std::move(request));
        }
        if (!hosted_)
            continue;
        checkWork();
        // Behind the answer: the sound does not wait for a view that comes back.
        view_.resume(*hosted_);
        // Once between two looks at the socket: a slow view delays no request by more.
        const bool viewHasChanged = view_.turn();
        sendSettingsWhenDue(viewHasChanged || stateHasChanged);
    }
    return true;
}

void EffectServer::waitForNews()
{
    std::array<pollfd, 2> news{
        {{socket_.descriptor(), POLLIN, 0}, {view_.descriptor(), POLLIN, 0}}};
    auto deadline = ViewServer::Clock::now() + lookAtSocket;
    if (work_ > work_.zero())
        deadline = std::min(deadline, ViewServer::Clock::now() + lookAtWork);
    deadline = std::min(deadline, view_.deadline().value_or(deadline));
    deadline = std::min(deadline, settingsAreDue_.value_or(deadline));
    using namespace std::chrono;
    const auto left =
        std::max(duration_cast<nanoseconds>(deadline - ViewServer::Clock::now()), 0ns);
    const timespec wait{static_cast<time_t>(left / 1s), static_cast<long>((left % 1s).count())};
    ::ppoll(news.data(), news.size(), &wait, nullptr);
}

bool EffectServer::handleView(const Message &wish)
{
    switch (wish.kind) {
    case MessageKind::openView:
        view_.open(wish.number, MessageReader::read<ViewPlace>(wish.body), hosted());
        return true;
    case MessageKind::closeView:
        view_.close();
        return true;
    case MessageKind::resizeView:
        view_.resize(wish.number, MessageReader::read<lv2::ViewSize>(wish.body));
        return true;
    default:
        return false;
    }
}

void EffectServer::handle(Message request)
{
    if (handleView(request))
        return;
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
        hosted().setContextName(MessageReader::read<std::optional<std::string>>(request.body));
        return {};
    case MessageKind::setOffline:
        hosted().setOffline(MessageReader::read<bool>(request.body));
        return {};
    case MessageKind::end:
        isEnding_ = true;
        view_.suspend();
        link_.reset();
        hosted_.reset();
        // What was said last.
        if (logWriter_)
            logWriter_->runNow();
        return {};
    default:
        throw ProtocolBreach("the host sends what only the effect may send");
    }
}

std::vector<std::byte> EffectServer::instantiate(Message &request)
{
    const auto wanted = MessageReader::read<Instantiation>(request.body);
    const Preparation &preparation = wanted.preparation;
    workLimit_ = std::chrono::milliseconds(wanted.workLimit);
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
    hosted().setOffline(preparation.isOffline);
    if (!hosted().isPrepared(preparation.sampleRate, preparation.maximumFrames))
        view_.suspend();
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
    sendSettings();
    return true;
}

void EffectServer::checkWork()
{
    const auto lived = time_.look();
    work_ = std::min<std::chrono::nanoseconds>(work_ + lived, hosted().workingFor());
    if (work_ > workLimit_)
        send(MessageKind::workHangs, 0, {});
}

void EffectServer::sendSettings()
{
    settingsAreDue_.reset();
    const auto body = MessageWriter::message(hosted().save());
    if (body.size() > MessageSocket::longestBody(MessageKind::settings))
        printError(hosted().plugin().name() + ": its settings are too large to be kept");
    else
        send(MessageKind::settings, 0, body);
}

void EffectServer::sendSettingsWhenDue(bool haveChanged)
{
    // A knob that is turned changes them with each step.
    if (haveChanged && !settingsAreDue_)
        settingsAreDue_ = ViewServer::Clock::now() + settingsDelay;
    if (settingsAreDue_ && ViewServer::Clock::now() >= *settingsAreDue_)
        sendSettings();
}

std::vector<std::string> EffectServer::presetNames()
{
    std::vector<std::string> names;
    for (const auto &preset : hosted().plugin().presets())
        names.push_back(preset.name());
    return names;
}

Description EffectServer::description() const
{
    return {hosted_->plugin().name(),      hosted_->inputChannelCount(),
            hosted_->outputChannelCount(), hosted_->takesMIDI(),
            hosted_->MIDIOutputNames(),    hosted_->plugin().x11View().has_value()};
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
