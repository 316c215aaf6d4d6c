#pragma once

#include "Platform/Effect Process/EffectEnd.hpp"
#include "Platform/Effect Process/LivedTime.hpp"
#include "Platform/Effect Process/MessageSocket.hpp"
#include "Platform/Effect Process/Messages.hpp"
#include "Platform/Effect Process/ViewServer.hpp"
#include "Platform/LV2/HostedPlugin.hpp"
#include "Platform/LV2/PollingThread.hpp"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace platform::effect
{

/// Holds one plug-in and does what the host asks for, in the order it is asked.
class EffectServer
{
public:
    /// A server for the host at the other end of `socket`.
    explicit EffectServer(FileDescriptor socket);
    /// Ends the plug-in.
    ~EffectServer();
    EffectServer(const EffectServer &) = delete;
    EffectServer &operator=(const EffectServer &) = delete;

    /// Serves until the host wants an end or has gone. Answers whether it wanted it.
    bool run();

private:
    void waitForNews();
    void handle(Message request);
    bool handleView(const Message &wish);
    std::vector<std::byte> perform(Message &request);
    std::vector<std::byte> instantiate(Message &request);
    void prepare(const Preparation &preparation, FileDescriptor memory);
    void connect(const Preparation &preparation, FileDescriptor memory);
    void sendMidi(const std::vector<std::vector<std::uint8_t>> &messages);
    bool loadPreset(std::span<const std::byte> body);
    void checkWork();
    void sendSettings();
    void sendSettingsWhenDue(bool haveChanged);
    std::vector<std::string> presetNames();
    Description description() const;
    lv2::HostedPlugin &hosted();
    void send(MessageKind kind, std::uint64_t number, std::span<const std::byte> body);

    MessageSocket socket_;
    bool isEnding_ = false;
    // For how long a worker has been at one piece of work, and may be.
    LivedTime time_;
    std::chrono::nanoseconds work_{0};
    std::chrono::milliseconds workLimit_{0};
    // When what the view or the plug-in itself has changed is to be told.
    std::optional<ViewServer::Clock::time_point> settingsAreDue_;
    std::unique_ptr<lv2::HostedPlugin> hosted_;
    std::unique_ptr<lv2::PollingThread> logWriter_;
    // In front of the plug-in: its thread must end before.
    std::unique_ptr<EffectEnd> link_;
    // Uses the plug-in, too.
    ViewServer view_;
};

} // namespace platform::effect
