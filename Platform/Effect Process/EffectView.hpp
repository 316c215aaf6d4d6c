#pragma once

#include "Platform/Effect Process/MessageSocket.hpp"
#include "Platform/Effect Process/Messages.hpp"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace platform::effect
{

/// The effect's own view, seen from the host: it says where the view is to be, and
/// the effect's process brings it there, again after each start. No call waits for
/// the effect. Outlives the effect, and is closed from then on. Any thread.
class EffectView
{
public:
    /// For how long a view owes an answer.
    using Patience = std::chrono::nanoseconds;

    /// What has become of the view.
    enum class Phase {
        /// It was not asked for, or has gone for good.
        closed,
        /// It was asked for, and there is no answer yet.
        opening,
        open,
        /// It may still use its window.
        closing,
        /// The effect refused to open it, or closed it itself.
        refused,
        /// The effect is being started again.
        effectStarts,
        /// The effect is left down until it is asked to start again.
        effectIsDown,
    };

    /// What the view is like now.
    struct Status {
        /// What has become of it.
        Phase phase = Phase::closed;
        /// The view's size, once it is open.
        lv2::ViewSize size;
        /// Whether the view takes another size.
        bool isResizable = false;
        /// Why it was refused.
        std::string reason;
    };

    // The host's side. -----------------------------------------------------------

    /// Is called on any thread after the status has changed: once, until the status is
    /// asked for.
    void setListener(std::function<void()> listener);
    /// What the view is like now; the listener is called again for the next change.
    Status status();

    /// Opens the view inside an X window, in place of where it is open. `window` is
    /// held for as long as the view may use it.
    void open(const ViewPlace &place, std::shared_ptr<void> window);
    /// Has the effect close the view, and forgets that it was asked for.
    void close();
    /// Asks for another size. While an answer is due, the last wish waits for it.
    void resize(const lv2::ViewSize &size);
    /// Starts an effect again that is left down.
    void restartEffect();

    // The side of the effect's process. ------------------------------------------

    /// How the effect is started again.
    void setRestart(std::function<void()> restart);
    /// The effect is there and listens on `socket`.
    void effectIsUp(const std::shared_ptr<MessageSocket> &socket);
    /// It is dead and uses nothing any more.
    void effectHasGone(bool isStartedAgain);
    /// Takes what the effect says of its view. Throws a `ProtocolBreach` for what it
    /// cannot mean.
    void take(const Message &message);
    /// Notes that the host has waited for `waited` more. Answers whether a view that is
    /// there has not been heard of for longer than `limit`, or one that is being opened
    /// for longer than `openingLimit`.
    bool isOverdue(Patience waited, Patience limit, Patience openingLimit);
    /// There will be no effect any more.
    void end();

private:
    using Lock = std::unique_lock<std::mutex>;

    bool isThere() const;
    void send(MessageKind kind, std::span<const std::byte> body);
    void sendOpen();
    void sendWish();
    void setPhase(Phase phase);
    /// Lets go of the lock and tells the listener.
    void tell(Lock &&lock);

    std::mutex restarting_; // is held while the effect is told to start again
    std::function<void()> restart_;

    std::mutex mutex_;
    std::function<void()> listener_;
    bool changeIsTold_ = false;
    bool hasChanged_ = false;
    Status status_;
    std::shared_ptr<MessageSocket> socket_;
    /// Of the opening that is the current one.
    std::uint64_t number_ = 0;
    std::optional<ViewPlace> place_;
    std::shared_ptr<void> window_;
    /// By the opening: what an effect may still use.
    std::map<std::uint64_t, std::shared_ptr<void>> usedWindows_;
    bool answerIsDue_ = false;
    std::optional<lv2::ViewSize> wish_;
    Patience silence_{0};
};

} // namespace platform::effect
