#include "Platform/Effect Process/MessageSocket.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace platform::effect
{

namespace
{

constexpr std::size_t readSize = 65536;
constexpr int mostReads = 64;

// One descriptor comes with a message, but several messages with one read.
constexpr std::size_t mostDescriptors = 8;

union ControlBuffer {
    cmsghdr aligned;
    std::array<char, CMSG_SPACE(sizeof(int) * mostDescriptors)> bytes;
};

} // namespace

std::pair<FileDescriptor, FileDescriptor> MessageSocket::connection()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        throw PlatformError("No connection to an effect's process can be made: " +
                            std::generic_category().message(errno));
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

MessageSocket::MessageSocket(FileDescriptor socket) : socket_(std::move(socket)) {}

bool MessageSocket::send(MessageKind kind, std::uint64_t number, std::span<const std::byte> body,
                         int descriptor, Clock::time_point deadline)
{
    if (body.size() > longestBody(kind))
        return false;
    const Head head{static_cast<std::uint32_t>(body.size()), kind, number,
                    descriptor < 0 ? 0U : 1U};
    const std::lock_guard lock(sending_);
    return sendPart(std::as_bytes(std::span(&head, 1)), descriptor, deadline) &&
           sendPart(body, -1, deadline);
}

bool MessageSocket::sendPart(std::span<const std::byte> part, int descriptor,
                             Clock::time_point deadline)
{
    while (!part.empty()) {
        iovec vector{const_cast<std::byte *>(part.data()), part.size()};
        msghdr header{};
        header.msg_iov = &vector;
        header.msg_iovlen = 1;
        ControlBuffer control{};
        if (descriptor >= 0) {
            header.msg_control = &control;
            header.msg_controllen = CMSG_SPACE(sizeof descriptor);
            control.aligned.cmsg_level = SOL_SOCKET;
            control.aligned.cmsg_type = SCM_RIGHTS;
            control.aligned.cmsg_len = CMSG_LEN(sizeof descriptor);
            std::memcpy(CMSG_DATA(&control.aligned), &descriptor, sizeof descriptor);
        }
        const ssize_t sent = ::sendmsg(socket_.get(), &header, MSG_NOSIGNAL);
        if (sent >= 0) {
            part = part.subspan(static_cast<std::size_t>(sent));
            descriptor = -1;
        } else if (errno != EINTR && (errno != EAGAIN || !waitForRoom(deadline))) {
            return false;
        }
    }
    return true;
}

bool MessageSocket::waitForRoom(Clock::time_point deadline) const
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (left <= milliseconds(0))
        return false;
    pollfd wait{socket_.get(), POLLOUT, 0};
    ::poll(&wait, 1, static_cast<int>(std::min(left, milliseconds(60000)).count()));
    return true;
}

bool MessageSocket::receive()
{
    // Not all there is: somebody might go on sending for ever.
    for (int reads = 0; reads < mostReads; ++reads) {
        const std::size_t before = incoming_.size();
        incoming_.resize(before + readSize);
        iovec vector{incoming_.data() + before, readSize};
        ControlBuffer control{};
        msghdr header{};
        header.msg_iov = &vector;
        header.msg_iovlen = 1;
        header.msg_control = &control;
        header.msg_controllen = sizeof control;
        const ssize_t count = ::recvmsg(socket_.get(), &header, MSG_CMSG_CLOEXEC);
        const int error = errno;
        incoming_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count > 0) {
            keepDescriptors(header);
            takeApart();
        } else if (count == 0 || (error != EINTR && error != EAGAIN)) {
            return false;
        } else if (error == EAGAIN) {
            return true;
        }
    }
    return true;
}

void MessageSocket::keepDescriptors(const msghdr &header)
{
    auto &mutableHeader = const_cast<msghdr &>(header);
    for (cmsghdr *part = CMSG_FIRSTHDR(&mutableHeader); part;
         part = CMSG_NXTHDR(&mutableHeader, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(part) + i * sizeof number, sizeof number);
            descriptors_.emplace_back(number);
        }
    }
    // Nobody sends more than the messages say, unless to run us out of them.
    if (descriptors_.size() > mostDescriptors || (header.msg_flags & MSG_CTRUNC) != 0)
        throw ProtocolBreach("it sends file descriptors that nobody asked for");
}

void MessageSocket::takeApart()
{
    std::size_t used = 0;
    Head head{};
    while (incoming_.size() - used >= sizeof head) {
        std::memcpy(&head, incoming_.data() + used, sizeof head);
        if (head.size > longestBody(head.kind))
            throw ProtocolBreach("a message is too long");
        if (incoming_.size() - used - sizeof head < head.size)
            break;
        Message message{head.kind, head.number, {}, {}};
        const auto *body = incoming_.data() + used + sizeof head;
        message.body.assign(body, body + head.size);
        if (head.hasDescriptor != 0) {
            if (descriptors_.empty())
                throw ProtocolBreach("a message lacks its file descriptor");
            message.descriptor = std::move(descriptors_.front());
            descriptors_.pop_front();
        }
        received_.push_back(std::move(message));
        used += sizeof head + head.size;
    }
    incoming_.erase(incoming_.begin(), incoming_.begin() + static_cast<std::ptrdiff_t>(used));
    // What one long message took is not kept for ever.
    if (incoming_.empty() && incoming_.capacity() > 2 * readSize)
        incoming_.shrink_to_fit();
    // One comes with the first byte of its message.
    if (incoming_.empty() && !descriptors_.empty())
        throw ProtocolBreach("it sends file descriptors that nobody asked for");
}

} // namespace platform::effect
