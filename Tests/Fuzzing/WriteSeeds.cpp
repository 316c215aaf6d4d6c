// Writes what fuzzers begin with where it is no text: messages and memory as a proper
// effect leaves them.
//   write_seeds FOLDER

#include "Platform/Effect Process/LinkEvents.hpp"
#include "Platform/Effect Process/Messages.hpp"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace
{

using namespace platform::effect;
using Bytes = std::vector<std::byte>;

const std::filesystem::path *folder = nullptr;

void write(const std::string &target, const std::string &name, const Bytes &bytes)
{
    std::filesystem::create_directories(*folder / target);
    std::ofstream file(*folder / target / name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

void operator+=(Bytes &bytes, const Bytes &more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// As the fuzzer of messages takes them.
Bytes message(MessageKind kind, std::uint8_t number, const Bytes &body)
{
    Bytes bytes = MessageWriter::message(static_cast<std::uint8_t>(kind), number,
                                         static_cast<std::uint16_t>(body.size()));
    bytes += body;
    return bytes;
}

platform::lv2::State state()
{
    platform::lv2::State state;
    state.properties["urn:test:settings:number"] = {"http://lv2plug.in/ns/ext/atom#Float", 3,
                                                    std::string(4, '\0')};
    state.properties["urn:test:settings:path"] = {"http://lv2plug.in/ns/ext/atom#Path", 1, "/a/b"};
    state.controls["set"] = 12.5F;
    return state;
}

void writeMessages()
{
    const auto text = [](const std::string &line) { return MessageWriter::message(line); };
    const Description description{"Effect", 2, 2, true, {"one", "two"}, true};
    const std::vector<std::string> names{"Soft", "Loud", "\xC3\xA4"};
    const auto shape = MessageWriter::message(ViewShape{{320, 200}, true});
    Bytes all = message(MessageKind::answer, 0, MessageWriter::message(description));
    all += message(MessageKind::answer, 1, MessageWriter::message(names));
    all += message(MessageKind::settings, 0, MessageWriter::message(state()));
    all += message(MessageKind::viewResized, 1, shape);
    all += message(MessageKind::viewLives, 1, {});
    all += message(MessageKind::viewWaits, 1, {});
    all += message(MessageKind::viewClosed, 1, text("It does not like it here."));
    all += message(MessageKind::refusal, 2, text("no"));
    write("effect-messages", "a-life", all);
    Bytes raw{std::byte{255}};
    raw += MessageWriter::message(static_cast<std::uint32_t>(shape.size()),
                                  MessageKind::viewResized, std::uint64_t{1}, std::uint64_t{0});
    raw += shape;
    write("effect-messages", "as-it-is", raw);
}

void writeMemory()
{
    Bytes room(64);
    LinkEventWriter events{room};
    const std::vector<std::uint8_t> note{0x90, 60, 100};
    events.append({0, 0, note});
    events.append({63, 1, note});
    Bytes answer = MessageWriter::message(std::uint32_t{1}, events.size(), std::uint32_t{0}, 12.0F,
                                          static_cast<std::uint16_t>(events.size()));
    answer.insert(answer.end(), room.begin(), room.begin() + events.size());
    write("effect-memory", "two-notes", answer);
    answer += answer;
    write("effect-memory", "again", answer);
}

void writeState()
{
    Bytes bytes{std::byte{'1'}};
    bytes += MessageWriter::message(state());
    write("effect-state", "message", bytes);
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: write_seeds FOLDER\n";
        return 2;
    }
    const std::filesystem::path given = arguments[1];
    folder = &given;
    writeMessages();
    writeMemory();
    writeState();
    return 0;
}
