#include "Platform/Effect Process/Requests.hpp"

#include <utility>

namespace platform::effect
{

std::uint64_t Requests::begin()
{
    const std::lock_guard lock(mutex_);
    pending_[++lastNumber_];
    return lastNumber_;
}

Requests::Outcome Requests::wait(std::uint64_t number, Clock::time_point deadline, Message &answer)
{
    std::unique_lock lock(mutex_);
    Pending &mine = pending_[number];
    changed_.wait_until(lock, deadline, [&] { return mine.answer || mine.isLost; });
    Outcome outcome = Outcome::late;
    if (mine.answer) {
        answer = std::move(*mine.answer);
        outcome = Outcome::answered;
    } else if (mine.isLost) {
        outcome = Outcome::lost;
    }
    pending_.erase(number);
    return outcome;
}

bool Requests::fulfil(Message answer)
{
    const std::lock_guard lock(mutex_);
    const auto found = pending_.find(answer.number);
    if (found == pending_.end() || found->second.answer)
        return false;
    found->second.answer = std::move(answer);
    changed_.notify_all();
    return true;
}

void Requests::loseAll()
{
    const std::lock_guard lock(mutex_);
    for (auto &[number, pending] : pending_)
        pending.isLost = true;
    changed_.notify_all();
}

} // namespace platform::effect
