#include "Platform/Effect Process/Requests.hpp"

#include "Platform/Effect Process/LivedTime.hpp"

#include <algorithm>
#include <utility>

namespace platform::effect
{

namespace
{

// How often who waits looks at the clock.
constexpr std::chrono::milliseconds longestLook{100};

} // namespace

std::uint64_t Requests::begin()
{
    const std::lock_guard lock(mutex_);
    pending_[++lastNumber_];
    return lastNumber_;
}

Requests::Outcome Requests::wait(std::uint64_t number, Patience patience, Message &answer)
{
    std::unique_lock lock(mutex_);
    Pending &mine = pending_[number];
    mine.patience = std::min(mine.patience, patience);
    LivedTime time(longestLook);
    while (!mine.answer && !mine.isLost && mine.patience > Patience(0)) {
        changed_.wait_for(lock, std::min<Patience>(mine.patience, longestLook));
        mine.patience -= time.look();
    }
    Outcome outcome = mine.isHurried ? Outcome::hurried : Outcome::late;
    if (mine.answer) {
        answer = std::move(*mine.answer);
        outcome = Outcome::answered;
    } else if (mine.isLost) {
        outcome = Outcome::lost;
    }
    pending_.erase(number);
    return outcome;
}

void Requests::hurry(Patience patience)
{
    const std::lock_guard lock(mutex_);
    for (auto &[number, pending] : pending_) {
        if (pending.patience <= patience)
            continue;
        pending.patience = patience;
        pending.isHurried = true;
    }
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
