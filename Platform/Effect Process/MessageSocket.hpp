#pragma once

#include "Platform/Effect Process/FileDescriptor.hpp"
#include "Platform/Effect Process/Messages.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include <sys/socket.h>

namespace platform::effect
{

/// What goes over the connection in one piece.
struct Message {
    MessageKind kind{}; ///< what it is about
    /// Of the request, and of its answer.
    std::uint64_t number = 0;
    std::vector<std::byte> body; ///< as `MessageWriter` lays it out
    /// What came with it, if anything.
    FileDescriptor descriptor;
};

/// One end of the connection between the host and an effect's process.
class MessageSocket
{
public:
    /// Deadlines are points of time that never jumps.
    using Clock = std::chrono::steady_clock;

    /// The longest body that a message about that is sent or taken with: what a hostile
    /// effect may cost its host. Settings may hold sounds.
    static constexpr std::size_t longestBody(MessageKind kind)
    {
        constexpr std::size_t mebibyte = 1048576;
        switch (kind) {
        case MessageKind::settings:
            return 16 * mebibyte;
        case MessageKind::instantiate: // with those settings
            return 20 * mebibyte;
        default:
            return 4 * mebibyte;
        }
    }

    /// Both ends of a new connection; the second is to be handed on. A
    /// `PlatformError` when there is none to be had.
    static std::pair<FileDescriptor, FileDescriptor> connection();

    /// One end of a connection that exists.
    explicit MessageSocket(FileDescriptor socket);
    MessageSocket(const MessageSocket &) = delete;
    MessageSocket &operator=(const MessageSocket &) = delete;

    /// Readable when there is something to receive, or the other end has gone.
    int descriptor() const { return socket_.get(); }

    /// Sends a message, with a copy of the file descriptor unless it is -1. Answers
    /// false when it is too long, the other end has gone or does not take it before
    /// `deadline`.
    /// Any thread; waits.
    bool send(MessageKind kind, std::uint64_t number, std::span<const std::byte> body,
              int descriptor, Clock::time_point deadline);

    /// Takes in some of what has come, without waiting. Answers false when no more will
    /// come. Throws a `ProtocolBreach` for a message that is too long, and for file
    /// descriptors that no message speaks of. One thread.
    bool receive();
    /// The next whole message of what was taken in. The same thread.
    std::deque<Message> &received() { return received_; }

private:
    struct Head {
        std::uint32_t size;
        MessageKind kind;
        std::uint64_t number;
        std::uint64_t hasDescriptor;
    };

    bool sendPart(std::span<const std::byte> part, int descriptor, Clock::time_point deadline);
    bool waitForRoom(Clock::time_point deadline) const;
    void keepDescriptors(const msghdr &header);
    void takeApart();

    FileDescriptor socket_;
    std::mutex sending_;
    std::vector<std::byte> incoming_;
    std::deque<FileDescriptor> descriptors_;
    std::deque<Message> received_;
};

} // namespace platform::effect
