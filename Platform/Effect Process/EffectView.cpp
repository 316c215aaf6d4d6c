#include "Platform/Effect Process/EffectView.hpp"

#include "Platform/Effect Process/CheckedMessages.hpp"

#include <utility>

namespace platform::effect
{

void EffectView::setListener(std::function<void()> listener)
{
    const Lock lock(mutex_);
    listener_ = std::move(listener);
    changeIsTold_ = false;
}

EffectView::Status EffectView::status()
{
    const Lock lock(mutex_);
    changeIsTold_ = false;
    return status_;
}

void EffectView::tell(Lock &&lock)
{
    Lock held = std::move(lock);
    if (!std::exchange(hasChanged_, false) || std::exchange(changeIsTold_, true))
        return;
    const auto listener = listener_;
    held.unlock();
    if (listener)
        listener();
}

void EffectView::setPhase(Phase phase)
{
    status_.phase = phase;
    hasChanged_ = true;
}

bool EffectView::isThere() const
{
    return status_.phase == Phase::opening || status_.phase == Phase::open ||
           status_.phase == Phase::closing;
}

void EffectView::send(MessageKind kind, std::span<const std::byte> body)
{
    // When it is not taken at once the effect hangs, which others find out.
    socket_->send(kind, number_, body, -1, MessageSocket::Clock::now());
}

void EffectView::open(const ViewPlace &place, std::shared_ptr<void> window)
{
    Lock lock(mutex_);
    place_ = place;
    window_ = std::move(window);
    if (socket_)
        sendOpen();
    tell(std::move(lock));
}

void EffectView::sendOpen()
{
    usedWindows_[++number_] = window_;
    answerIsDue_ = false;
    wish_.reset();
    silence_ = Patience(0);
    status_.size = {};
    setPhase(Phase::opening);
    send(MessageKind::openView, MessageWriter::message(*place_));
}

void EffectView::close()
{
    Lock lock(mutex_);
    place_.reset();
    window_.reset();
    if (status_.phase == Phase::opening || status_.phase == Phase::open) {
        silence_ = Patience(0);
        setPhase(Phase::closing);
        send(MessageKind::closeView, {});
    } else if (status_.phase == Phase::refused) {
        setPhase(Phase::closed);
    }
    tell(std::move(lock));
}

void EffectView::resize(const lv2::ViewSize &size)
{
    const Lock lock(mutex_);
    if (status_.phase != Phase::open)
        return;
    wish_ = size;
    sendWish();
}

void EffectView::sendWish()
{
    if (answerIsDue_ || !wish_ || status_.phase != Phase::open)
        return;
    answerIsDue_ = true;
    send(MessageKind::resizeView, MessageWriter::message(*std::exchange(wish_, std::nullopt)));
}

void EffectView::restartEffect()
{
    const std::lock_guard oneAtATime(restarting_);
    if (!restart_)
        return;
    Lock lock(mutex_);
    if (status_.phase == Phase::effectIsDown)
        setPhase(Phase::effectStarts);
    tell(std::move(lock));
    restart_();
}

void EffectView::setRestart(std::function<void()> restart)
{
    const std::lock_guard lock(restarting_);
    restart_ = std::move(restart);
}

void EffectView::effectIsUp(const std::shared_ptr<MessageSocket> &socket)
{
    Lock lock(mutex_);
    socket_ = socket;
    if (place_)
        sendOpen();
    else
        setPhase(Phase::closed);
    tell(std::move(lock));
}

void EffectView::effectHasGone(bool isStartedAgain)
{
    Lock lock(mutex_);
    socket_.reset();
    usedWindows_.clear();
    setPhase(isStartedAgain ? Phase::effectStarts : Phase::effectIsDown);
    tell(std::move(lock));
}

void EffectView::take(const Message &message)
{
    Lock lock(mutex_);
    if (message.number > number_)
        throw ProtocolBreach("it speaks of a view that nobody asked for");
    silence_ = Patience(0);
    if (message.kind == MessageKind::viewResized) {
        const ViewShape shape = checkedViewShape(message.body);
        if (message.number != number_ || !isThere() || status_.phase == Phase::closing)
            return;
        answerIsDue_ = false;
        status_.size = shape.size;
        status_.isResizable = shape.isResizable;
        setPhase(Phase::open);
        sendWish();
    } else if (message.kind == MessageKind::viewWaits) {
        if (message.number == number_ && status_.phase == Phase::open)
            setPhase(Phase::opening);
    } else if (message.kind == MessageKind::viewClosed) {
        const std::string reason = checkedText(message.body);
        usedWindows_.erase(message.number);
        if (message.number != number_ || !isThere())
            return;
        status_.reason = reason;
        setPhase(status_.phase == Phase::closing ? Phase::closed : Phase::refused);
    }
    tell(std::move(lock));
}

bool EffectView::isOverdue(Patience waited, Patience limit, Patience openingLimit)
{
    const Lock lock(mutex_);
    silence_ += waited;
    return isThere() && socket_ &&
           silence_ > (status_.phase == Phase::opening ? openingLimit : limit);
}

void EffectView::end()
{
    setRestart(nullptr);
    Lock lock(mutex_);
    socket_.reset();
    place_.reset();
    window_.reset();
    usedWindows_.clear();
    setPhase(Phase::closed);
    tell(std::move(lock));
}

} // namespace platform::effect
