// The socket's other end is an effect that sends whatever it likes. The input is a row
// of messages: a byte for the kind, one for the number, two for the size, and the body;
// the last one is as long as there are bytes. Behind a first byte of 255 the rest goes
// over as it is.

#include "Platform/Effect Process/CheckedMessages.hpp"
#include "Platform/Effect Process/EffectView.hpp"
#include "Tests/Fuzzing/Require.hpp"

#include <algorithm>
#include <memory>
#include <vector>

#include <sys/socket.h>

namespace
{

using namespace platform::effect;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t raw = 255;
// Within what a socket holds, so that one thread can serve both ends.
constexpr std::size_t mostBytes = 60000;

template <typename T>
void append(std::vector<std::uint8_t> &stream, const T &value)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&value);
    stream.insert(stream.end(), bytes, bytes + sizeof value);
}

std::vector<std::uint8_t> streamOf(Bytes input)
{
    std::vector<std::uint8_t> stream;
    while (input.size() >= 4) {
        const std::size_t claimed = input[2] | std::size_t{input[3]} << 8U;
        const std::size_t size = std::min(claimed, input.size() - 4);
        append(stream, static_cast<std::uint32_t>(size));
        append(stream, static_cast<std::uint32_t>(input[0]));
        append(stream, std::uint64_t{input[1]});
        append(stream, std::uint64_t{0}); // no file descriptor with it
        const Bytes body = input.subspan(4, size);
        stream.insert(stream.end(), body.begin(), body.end());
        input = input.subspan(4 + size);
    }
    return stream;
}

void send(int socket, std::span<const std::uint8_t> stream)
{
    const auto part = stream.first(std::min(stream.size(), mostBytes));
    fuzzing::require(::send(socket, part.data(), part.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
                     static_cast<ssize_t>(part.size()));
}

template <typename Operation>
void mayBreach(const Operation &operation)
{
    try {
        operation();
    } catch (const ProtocolBreach &breach) {
        fuzzing::require(*breach.what() != '\0');
    }
}

/// The answer to whatever was asked.
void takeAnswer(const std::vector<std::byte> &body)
{
    mayBreach([&] { checkedDescription(body); });
    mayBreach([&] { checkedNames(body); });
    mayBreach([&] { checkedText(body); });
    mayBreach([&] { MessageReader::read<bool>(body); });
}

void takeSettings(const std::vector<std::byte> &body)
{
    mayBreach([&] {
        // They go back to the effect when it is started again.
        const auto settings = MessageReader::read<platform::lv2::State>(body);
        const auto again =
            MessageReader::read<platform::lv2::State>(MessageWriter::message(settings));
        fuzzing::require(again.properties.size() == settings.properties.size());
    });
}

void take(EffectView &view, const Message &message)
{
    switch (message.kind) {
    case MessageKind::answer:
    case MessageKind::refusal:
        return takeAnswer(message.body);
    case MessageKind::settings:
        return takeSettings(message.body);
    default:
        // It has to tell by itself what is not for it.
        mayBreach([&] { view.take(message); });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Bytes input(data, size);
    auto [ours, theirs] = MessageSocket::connection();
    const auto socket = std::make_shared<MessageSocket>(std::move(ours));
    EffectView view;
    view.effectIsUp(socket);
    view.open({1, 1.0F}, std::make_shared<int>());
    view.resize({100, 100});
    send(theirs.get(),
         !input.empty() && input[0] == raw ? input.subspan(1) : Bytes(streamOf(input)));
    mayBreach([&] {
        socket->receive();
        for (; !socket->received().empty(); socket->received().pop_front())
            take(view, socket->received().front());
    });
    const EffectView::Status status = view.status();
    fuzzing::require(status.size.width <= platform::lv2::ViewSize::largest &&
                     status.size.height <= platform::lv2::ViewSize::largest);
    return 0;
}
