#include "Platform/Effect Process/Requests.hpp"

#include <algorithm>
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
    mine.deadline = std::min(mine.deadline, deadline);
    // Copied, since it may be changed during the wait, which then begins anew.
    for (auto until = mine.deadline; !mine.answer && !mine.isLost && Clock::now() < mine.deadline;
         until = mine.deadline)
        changed_.wait_until(lock, until);
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

void Requests::hurry(Clock::time_point deadline)
{
    const std::lock_guard lock(mutex_);
    for (auto &[number, pending] : pending_)
        pending.deadline = std::min(pending.deadline, deadline);
    changed_.notify_all();
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
