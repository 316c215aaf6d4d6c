// Stands in for the program that holds an effect, and keeps the agreement with the
// host but in one point, which the variable LIE names.

#include "Bundle/SabotageFolder.hpp"

#include "Platform/Effect Process/ChildProcess.hpp"
#include "Platform/Effect Process/Futex.hpp"
#include "Platform/Effect Process/LinkMemory.hpp"
#include "Platform/Effect Process/MessageSocket.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using namespace platform::effect;

constexpr int socketNumber = ChildProcess::socketNumber;
const std::string lie = std::getenv("LIE");

/// As a message begins on the wire.
struct Head {
    std::uint32_t size;
    MessageKind kind;
    std::uint64_t number;
    std::uint64_t hasDescriptor;
};

void sendBytes(const void *bytes, std::size_t size)
{
    const auto *rest = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t sent = ::send(socketNumber, rest, size, MSG_NOSIGNAL);
        if (sent > 0) {
            rest += sent;
            size -= static_cast<std::size_t>(sent);
        } else if (errno == EAGAIN) {
            pollfd wait{socketNumber, POLLOUT, 0};
            ::poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            ::_exit(7);
        }
    }
}

void sendMessage(MessageKind kind, std::uint64_t number, const std::vector<std::byte> &body = {})
{
    const Head head{static_cast<std::uint32_t>(body.size()), kind, number, 0};
    sendBytes(&head, sizeof head);
    sendBytes(body.data(), body.size());
}

void answer(std::uint64_t number, const std::vector<std::byte> &body)
{
    sendMessage(MessageKind::answer, number, body);
}

[[noreturn]] void waitForEver()
{
    for (;;)
        ::pause();
}

Description description()
{
    return {"Liar", 2, 2, true, {"MIDI"}};
}

template <typename... Values>
std::vector<std::byte> bytes(const Values &...values)
{
    return MessageWriter::message(values...);
}

/// Sends `count` file descriptors with a message that speaks of `announced`.
void sendDescriptors(std::size_t count, std::uint64_t announced, std::uint64_t number)
{
    const auto body = bytes(description());
    Head head{static_cast<std::uint32_t>(body.size()), MessageKind::answer, number, announced};
    std::vector<char> control(CMSG_SPACE(sizeof(int) * count));
    iovec vector{&head, sizeof head};
    msghdr header{};
    header.msg_iov = &vector;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    auto *part = reinterpret_cast<cmsghdr *>(control.data());
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(sizeof(int) * count);
    for (std::size_t i = 0; i < count; ++i) {
        const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        std::memcpy(CMSG_DATA(part) + i * sizeof null, &null, sizeof null);
    }
    ::sendmsg(socketNumber, &header, MSG_NOSIGNAL);
    sendBytes(body.data(), body.size());
}

/// Settings of a hundred kilobytes, which the host takes whenever they come.
[[noreturn]] void flood()
{
    platform::lv2::State state;
    state.properties["urn:x"].value.resize(100000);
    const auto body = bytes(state);
    for (;;)
        sendMessage(MessageKind::settings, 0, body);
}

using Lie = std::function<void(std::uint64_t number)>;

/// What comes in place of the answer to the first request.
const std::map<std::string, Lie> liesAtTheStart{
    {"start_dies", [](auto) { ::_exit(5); }},
    {"start_hangs_up", [](auto) { ::close(socketNumber), waitForEver(); }},
    {"start_says_nothing", [](auto) { waitForEver(); }},
    {"start_endless_size",
     [](auto number) {
         const Head head{UINT32_MAX, MessageKind::answer, number, 0};
         sendBytes(&head, sizeof head);
     }},
    {"start_half_a_message",
     [](auto number) {
         const Head head{200U << 20U, MessageKind::answer, number, 0};
         sendBytes(&head, sizeof head);
         waitForEver();
     }},
    {"start_half_a_head",
     [](auto) {
         sendBytes("head", 4);
         ::close(socketNumber);
         waitForEver();
     }},
    {"start_no_description", [](auto number) { answer(number, {}); }},
    {"start_short_description",
     [](auto number) {
         auto body = bytes(description());
         body.pop_back();
         answer(number, body);
     }},
    {"start_long_description",
     [](auto number) {
         auto body = bytes(description());
         body.push_back({});
         answer(number, body);
     }},
    {"start_wrong_count",
     [](auto number) {
         answer(number, bytes(std::string("Liar"), 2U, 2U, true, std::uint64_t{1} << 60U));
     }},
    {"start_name_is_no_text",
     [](auto number) {
         auto wrong = description();
         wrong.name = "\xC3\x28";
         answer(number, bytes(wrong));
     }},
    {"start_name_without_end",
     [](auto number) {
         auto wrong = description();
         wrong.name.assign(5000, 'x');
         answer(number, bytes(wrong));
     }},
    {"start_endless_channels",
     [](auto number) {
         auto wrong = description();
         wrong.outputs = UINT32_MAX;
         answer(number, bytes(wrong));
     }},
    {"start_endless_midi_outputs",
     [](auto number) {
         auto wrong = description();
         wrong.midiOutputNames.resize(300, "MIDI");
         answer(number, bytes(wrong));
     }},
    {"start_refusal_is_no_text",
     [](auto number) {
         sendMessage(MessageKind::refusal, number, bytes(std::string("\xFF\xFE")));
     }},
    {"start_unknown_kind", [](auto number) { sendMessage(static_cast<MessageKind>(77), number); }},
    {"start_kind_of_the_host",
     [](auto number) { sendMessage(MessageKind::prepare, number, bytes(description())); }},
    {"start_answers_nobody", [](auto) { answer(999, bytes(description())); }},
    {"start_settings_out_of_order",
     [](auto) {
         sendMessage(MessageKind::settings, 0, bytes(std::uint64_t{7}, std::string("x")));
     }},
    {"start_descriptor", [](auto number) { sendDescriptors(1, 1, number); }},
    {"start_hidden_descriptor", [](auto number) { sendDescriptors(1, 0, number); }},
    {"start_many_descriptors", [](auto number) { sendDescriptors(200, 0, number); }},
    {"start_missing_descriptor",
     [](auto number) {
         const Head head{0, MessageKind::answer, number, 1};
         sendBytes(&head, sizeof head);
     }},
    {"start_floods", [](auto) { flood(); }},
};

/// What comes in place of the presets' names.
const std::map<std::string, Lie> liesOnRequest{
    {"request_says_nothing", [](auto) {}},
    {"request_dies", [](auto) { ::_exit(5); }},
    {"request_hangs_up", [](auto) { ::close(socketNumber), waitForEver(); }},
    {"request_wrong_count", [](auto number) { answer(number, bytes(std::uint64_t{12345678})); }},
    {"request_no_count", [](auto number) { answer(number, {}); }},
    {"request_name_is_no_text",
     [](auto number) {
         answer(number, bytes(std::vector<std::string>{"Good", "\xED\xA0\x80"}));
     }},
    {"request_endless_names",
     [](auto number) { answer(number, bytes(std::vector<std::string>(100001))); }},
    {"request_refusal_is_no_text",
     [](auto number) {
         sendMessage(MessageKind::refusal, number, bytes(std::string("\xC0\xAF")));
     }},
    {"request_answers_another",
     [](auto number) { answer(number + 1, bytes(std::vector<std::string>{})); }},
    {"request_answers_twice",
     [](auto number) {
         answer(number, bytes(std::vector<std::string>{}));
         answer(number, bytes(std::vector<std::string>{}));
     }},
    {"request_work_hangs_at_length",
     [](auto) { sendMessage(MessageKind::workHangs, 0, bytes(std::uint64_t{30})); }},
    {"request_answers_the_start_again", [](auto) { answer(0, bytes(description())); }},
};

void sendShape(std::uint64_t number, std::uint32_t width, std::uint32_t height)
{
    sendMessage(MessageKind::viewResized, number, bytes(ViewShape{{width, height}, true}));
}

/// What comes when the view is to be opened.
const std::map<std::string, Lie> liesOfView{
    {"view_no_width", [](auto number) { sendShape(number, 0, 100); }},
    {"view_no_height", [](auto number) { sendShape(number, 100, 0); }},
    {"view_endless_width", [](auto number) { sendShape(number, UINT32_MAX, 100); }},
    {"view_just_too_high",
     [](auto number) { sendShape(number, 100, platform::lv2::ViewSize::largest + 1); }},
    {"view_short_shape",
     [](auto number) { sendMessage(MessageKind::viewResized, number, bytes(100U, 100U)); }},
    {"view_long_shape",
     [](auto number) {
         sendMessage(MessageKind::viewResized, number, bytes(100U, 100U, true, 100U));
     }},
    {"view_of_nobody", [](auto number) { sendShape(number + 1, 100, 100); }},
    {"view_closes_with_no_text",
     [](auto number) {
         sendMessage(MessageKind::viewClosed, number, bytes(std::string("\xC0\xAF")));
     }},
    {"view_says_nothing", [](auto) {}},
    // As many sizes as there is time for, each another.
    {"change_view_floods",
     [](auto number) {
         for (std::uint32_t i = 0;; ++i) {
             sendShape(number, 1 + i % 4000, 1 + i % 3000);
             sendMessage(MessageKind::viewLives, number);
         }
     }},
    {"change_view_closes_and_opens",
     [](auto number) {
         for (;;) {
             sendShape(number, 100, 100);
             sendMessage(MessageKind::viewWaits, number);
         }
     }},
};

void putEvent(LinkMemory &memory, std::int64_t time, std::uint32_t output, std::uint32_t size)
{
    std::byte *place = memory.outputEvents().data();
    std::memcpy(place, &time, sizeof time);
    std::memcpy(place + 8, &output, sizeof output);
    std::memcpy(place + 12, &size, sizeof size);
    memory.header().outputEventBytes = 16 + 8;
}

/// What is wrong in the memory when a block is answered.
const std::map<std::string, std::function<void(LinkMemory &)>> liesInMemory{
    {"memory_endless_events",
     [](LinkMemory &memory) { memory.header().outputEventBytes = UINT32_MAX; }},
    {"memory_events_beyond_their_room",
     [](LinkMemory &memory) { memory.header().outputEventBytes = LinkMemory::eventCapacity + 1; }},
    {"memory_half_an_event", [](LinkMemory &memory) { memory.header().outputEventBytes = 7; }},
    {"memory_event_without_end",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime, 0, UINT32_MAX); }},
    {"memory_event_of_just_too_much",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime, 0, 9); }},
    {"memory_event_of_nothing",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime, 0, 0); }},
    {"memory_event_of_no_output",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime, 1, 3); }},
    {"memory_event_of_endless_output",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime, 256, 3); }},
    {"memory_event_before_the_block",
     [](LinkMemory &memory) { putEvent(memory, memory.header().sampleTime - 1, 0, 3); }},
    {"memory_event_behind_the_block",
     [](LinkMemory &memory) {
         putEvent(memory, memory.header().sampleTime + memory.header().frames, 0, 3);
     }},
    {"memory_event_at_no_time",
     [](LinkMemory &memory) { putEvent(memory, std::numeric_limits<std::int64_t>::min(), 0, 3); }},
    {"memory_latency_is_no_number",
     [](LinkMemory &memory) { memory.header().latency = std::numeric_limits<float>::quiet_NaN(); }},
    {"memory_latency_without_end",
     [](LinkMemory &memory) { memory.header().latency = std::numeric_limits<float>::infinity(); }},
    {"memory_latency_below_zero", [](LinkMemory &memory) { memory.header().latency = -1.0F; }},
    {"memory_neither_rendered_nor_not", [](LinkMemory &memory) { memory.header().isRendered = 2; }},
    {"memory_wrong_answer", [](LinkMemory &) {}},
    {"memory_overwritten", [](LinkMemory &) {}},
};

/// All that the effect can reach, at once.
void overwrite(LinkMemory &memory)
{
    auto *const begin = reinterpret_cast<std::byte *>(&memory.header());
    const auto *const end =
        reinterpret_cast<std::byte *>(memory.outputs()[1] + memory.shape().maximumFrames);
    std::fill(begin, const_cast<std::byte *>(end), std::byte{0xA5});
}

/// Renders silence, and lies.
[[noreturn]] void render(LinkMemory &memory)
{
    LinkHeader &header = memory.header();
    const auto found = liesInMemory.find(lie);
    for (std::uint32_t served = 0;;) {
        while (header.request.load() == served)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        served = header.request.load();
        header.isRendered = 1;
        if (found != liesInMemory.end())
            found->second(memory);
        if (lie == "memory_overwritten")
            overwrite(memory);
        else
            header.answer = lie == "memory_wrong_answer" ? served + 1000 : served;
        futexWake(header.answer);
    }
}

/// The host's memory keeps its size whatever the effect does.
void resize(int descriptor)
{
    if (::ftruncate(descriptor, 0) == 0 || ::ftruncate(descriptor, 1 << 24) == 0)
        ::_exit(9);
}

void prepare(Message &request)
{
    const auto preparation = MessageReader::read<Preparation>(request.body);
    resize(request.descriptor.get());
    // Never given back: its thread goes on.
    auto *memory =
        std::make_unique<LinkMemory>(std::move(request.descriptor), preparation.shape).release();
    std::thread([memory] { render(*memory); }).detach();
    answer(request.number, {});
}

void instantiate(const Message &request)
{
    const SabotageFolder folder(std::getenv("SABOTAGE_FOLDER"));
    folder.noteStart();
    auto described = description();
    if (lie == "change_becomes_another" && folder.starts().size() > 1)
        described.inputs = 1;
    if (lie == "change_writes_on_the_terminal")
        described.name = "Two\nlines and \x1B[31mcolour";
    answer(request.number, bytes(described));
}

void handle(Message &request)
{
    if (request.kind == MessageKind::instantiate) {
        const auto found = liesAtTheStart.find(lie);
        found == liesAtTheStart.end() ? instantiate(request) : found->second(request.number);
    } else if (request.kind == MessageKind::prepare) {
        prepare(request);
    } else if (request.kind == MessageKind::listPresets) {
        const auto found = liesOnRequest.find(lie);
        if (found == liesOnRequest.end())
            answer(request.number, bytes(std::vector<std::string>{}));
        else
            found->second(request.number);
        if (lie == "change_floods")
            flood();
    } else if (request.kind == MessageKind::openView) {
        const auto found = liesOfView.find(lie);
        if (found != liesOfView.end())
            found->second(request.number);
        else
            sendShape(request.number, 300, 200);
    } else if (request.kind == MessageKind::end) {
        ::_exit(0);
    } else {
        answer(request.number, {});
    }
}

} // namespace

int main()
{
    MessageSocket socket{FileDescriptor(socketNumber)};
    for (;;) {
        pollfd wait{socketNumber, POLLIN, 0};
        ::poll(&wait, 1, -1);
        if (!socket.receive())
            ::_exit(1);
        for (auto &requests = socket.received(); !requests.empty(); requests.pop_front())
            handle(requests.front());
    }
}
