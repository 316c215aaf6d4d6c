#pragma once

#include "Platform/Effect Process/Messages.hpp"
#include "Platform/LV2/HostedPlugin.hpp"
#include "Platform/LV2/PluginView.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace platform::effect
{

/// The view of the effect's process: opened and closed as the host wants it, and kept
/// going at its own rate in between. The main thread.
class ViewServer
{
public:
    /// When the view is due again.
    using Clock = std::chrono::steady_clock;
    /// Tells the host: the kind, the number of the request, the body.
    using Send = std::function<void(MessageKind, std::uint64_t, std::span<const std::byte>)>;

    /// `send` tells the host.
    explicit ViewServer(Send send) : send_(std::move(send)) {}

    /// Opens the view `number`, in place of one that is open. Tells the host how that
    /// went.
    void open(std::uint64_t number, const ViewPlace &place, lv2::HostedPlugin &hosted);
    /// Closes the view, if it is open, and says so.
    void close();
    /// Gives the view another size, and tells the host the one it took.
    void resize(std::uint64_t number, const lv2::ViewSize &size);

    /// Closes the view because its instance is about to go.
    void suspend();
    /// Opens it again, for the instance that is there now, if it was closed so.
    void resume(lv2::HostedPlugin &hosted);

    /// Readable when the view has something to do; -1 without one.
    int descriptor() const { return view_ ? view_->descriptor() : -1; }
    /// When `turn` is next to be called at the latest; none without a view.
    std::optional<Clock::time_point> deadline() const;
    /// Does what is due. Answers whether the view has changed the effect's settings.
    bool turn();

private:
    void show(lv2::HostedPlugin &hosted);
    void end(const std::string &reason);
    void tellSize();
    void tellOfLife();

    const Send send_;
    std::uint64_t number_ = 0;
    std::optional<ViewPlace> place_;
    std::unique_ptr<lv2::PluginView> view_;
    bool isResizable_ = false;
    std::optional<lv2::ViewSize> told_;
    Clock::time_point nextIdle_;
    Clock::time_point nextPulse_;
};

} // namespace platform::effect
