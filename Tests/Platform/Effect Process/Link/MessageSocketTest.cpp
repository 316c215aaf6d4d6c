#include "Platform/Effect Process/MessageSocket.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace platform::effect;

namespace
{

using Clock = MessageSocket::Clock;

Clock::time_point soon()
{
    return Clock::now() + std::chrono::seconds(10);
}

std::vector<std::byte> bytes(std::size_t size)
{
    std::vector<std::byte> result(size);
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<std::byte>(i * 7);
    return result;
}

class MessageSockets : public testing::Test
{
protected:
    MessageSockets() : MessageSockets(MessageSocket::connection()) {}

    /// Waits until the right socket has a message, and takes it.
    Message next()
    {
        while (right.received().empty()) {
            pollfd wait{right.descriptor(), POLLIN, 0};
            EXPECT_GT(::poll(&wait, 1, 10000), 0);
            if (!right.receive())
                break;
        }
        if (right.received().empty())
            return {};
        Message message = std::move(right.received().front());
        right.received().pop_front();
        return message;
    }

    MessageSocket left;
    MessageSocket right;

private:
    explicit MessageSockets(std::pair<FileDescriptor, FileDescriptor> ends)
        : left(std::move(ends.first)), right(std::move(ends.second))
    {
    }
};

} // namespace

TEST_F(MessageSockets, BringMessagesAcrossInOrder)
{
    EXPECT_TRUE(left.send(MessageKind::answer, 5, bytes(10), -1, soon()));
    EXPECT_TRUE(left.send(MessageKind::refusal, 6, {}, -1, soon()));
    Message message = next();
    EXPECT_EQ(message.kind, MessageKind::answer);
    EXPECT_EQ(message.number, 5U);
    EXPECT_EQ(message.body, bytes(10));
    EXPECT_FALSE(message.descriptor);
    message = next();
    EXPECT_EQ(message.kind, MessageKind::refusal);
    EXPECT_EQ(message.number, 6U);
    EXPECT_TRUE(message.body.empty());
}

TEST_F(MessageSockets, BringMessagesAcrossThatAreLongerThanTheSystemHolds)
{
    const auto body = bytes(std::size_t{8} << 20U);
    std::thread sender([&] { EXPECT_TRUE(left.send(MessageKind::settings, 1, body, -1, soon())); });
    EXPECT_EQ(next().body, body);
    sender.join();
}

TEST_F(MessageSockets, BringFileDescriptorsAcrossWithTheirMessages)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const FileDescriptor reading(ends[0]);
    const FileDescriptor writing(ends[1]);
    left.send(MessageKind::answer, 1, bytes(3), -1, soon());
    left.send(MessageKind::answer, 2, bytes(3), writing.get(), soon());
    EXPECT_FALSE(next().descriptor);
    const Message message = next();
    ASSERT_TRUE(message.descriptor);
    ASSERT_EQ(::write(message.descriptor.get(), "x", 1), 1);
    char letter = 0;
    ASSERT_EQ(::read(reading.get(), &letter, 1), 1);
    EXPECT_EQ(letter, 'x');
}

TEST_F(MessageSockets, TellWhenTheOtherEndHasGone)
{
    ASSERT_EQ(::shutdown(left.descriptor(), SHUT_RDWR), 0);
    EXPECT_FALSE(right.receive());
    EXPECT_FALSE(right.send(MessageKind::answer, 1, {}, -1, soon()));
}

TEST_F(MessageSockets, GiveUpOnAReaderThatDoesNotRead)
{
    const auto begun = Clock::now();
    EXPECT_FALSE(left.send(MessageKind::settings, 1, bytes(std::size_t{8} << 20U), -1,
                           begun + std::chrono::milliseconds(50)));
    EXPECT_GE(Clock::now() - begun, std::chrono::milliseconds(50));
    EXPECT_LT(Clock::now() - begun, std::chrono::seconds(10));
}

TEST_F(MessageSockets, RefuseMessagesThatAreTooLong)
{
    const auto claim = [this](MessageKind kind, std::size_t size) {
        const struct {
            std::uint32_t size;
            MessageKind kind;
            std::uint64_t number = 0;
            std::uint64_t hasDescriptor = 0;
        } head{static_cast<std::uint32_t>(size), kind};
        ASSERT_EQ(::send(left.descriptor(), &head, sizeof head, 0), ssize_t{sizeof head});
    };
    claim(MessageKind::viewLives, MessageSocket::longestBody(MessageKind::viewLives) + 1);
    EXPECT_THROW(next(), ProtocolBreach);
}

TEST_F(MessageSockets, TakeLongerMessagesThatHoldSettings)
{
    const auto longest = MessageSocket::longestBody(MessageKind::settings);
    EXPECT_GT(longest, MessageSocket::longestBody(MessageKind::answer));
    const auto body = bytes(longest);
    std::thread sender([&] { EXPECT_TRUE(left.send(MessageKind::settings, 1, body, -1, soon())); });
    EXPECT_EQ(next().body, body);
    sender.join();
    EXPECT_FALSE(left.send(MessageKind::settings, 1, bytes(longest + 1), -1, soon()));
}

TEST_F(MessageSockets, RefuseMessagesWhoseFileDescriptorIsMissing)
{
    const struct {
        std::uint32_t size = 0;
        std::uint32_t kind = 0;
        std::uint64_t number = 0;
        std::uint64_t hasDescriptor = 1;
    } head;
    ASSERT_EQ(::send(left.descriptor(), &head, sizeof head, 0), ssize_t{sizeof head});
    EXPECT_THROW(next(), ProtocolBreach);
}
