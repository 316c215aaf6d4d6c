#pragma once

#include "Platform/Effect Process/MessageSocket.hpp"

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
    /// Deadlines are points of time that never jumps.
    using Clock = MessageSocket::Clock;

    /// How waiting ended: the answer came, the effect has gone, or time was up.
    enum class Outcome { answered, lost, late };

    /// A number above 0 for a new request, which is waited for from now on.
    std::uint64_t begin();

    /// Waits for the answer of `number` until `deadline`, and forgets the request.
    Outcome wait(std::uint64_t number, Clock::time_point deadline, Message &answer);

    /// Nobody who waits now waits beyond `deadline`.
    void hurry(Clock::time_point deadline);

    /// Hands an answer to who waits for it. Answers false when nobody does.
    bool fulfil(Message answer);

    /// Nobody will answer any more.
    void loseAll();

private:
    struct Pending {
        std::optional<Message> answer;
        bool isLost = false;
        Clock::time_point deadline = Clock::time_point::max();
    };

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t lastNumber_ = 0;
    std::map<std::uint64_t, Pending> pending_;
};

} // namespace platform::effect
