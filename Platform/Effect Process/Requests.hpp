#pragma once

#include "Platform/Effect Process/MessageSocket.hpp"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace platform::effect
{

/// Requests that wait for their answers. Any thread.
class Requests
{
public:
    /// For how long an answer is waited for.
    using Patience = std::chrono::nanoseconds;

    /// How waiting ended: the answer came, the effect has gone, or time was up, maybe
    /// since somebody was in a hurry.
    enum class Outcome { answered, lost, late, hurried };

    /// A number above 0 for a new request, which is waited for from now on.
    std::uint64_t begin();

    /// Waits for the answer of `number`, while this process runs for `patience`, and
    /// forgets the request.
    Outcome wait(std::uint64_t number, Patience patience, Message &answer);

    /// Nobody who waits now waits for longer than `patience` more.
    void hurry(Patience patience);

    /// Hands an answer to who waits for it. Answers false when nobody does.
    bool fulfil(Message answer);

    /// Nobody will answer any more.
    void loseAll();

private:
    struct Pending {
        std::optional<Message> answer;
        bool isLost = false;
        Patience patience = Patience::max();
        bool isHurried = false;
    };

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t lastNumber_ = 0;
    std::map<std::uint64_t, Pending> pending_;
};

} // namespace platform::effect
