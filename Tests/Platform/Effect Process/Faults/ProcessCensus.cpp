#include "ProcessCensus.hpp"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <regex>
#include <sstream>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

std::string textOf(const fs::path &path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

pid_t parentOf(const fs::path &process)
{
    // The name before it may hold blanks and parentheses.
    const std::string status = textOf(process / "stat");
    const std::size_t name = status.rfind(')');
    if (name == std::string::npos)
        return 0;
    std::istringstream rest(status.substr(name + 1));
    char state = 0;
    pid_t parent = 0;
    rest >> state >> parent;
    return parent;
}

std::vector<pid_t> children()
{
    std::vector<pid_t> all;
    for (const auto &entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
            parentOf(entry.path()) == ::getpid())
            all.push_back(std::stoi(name));
    }
    return all;
}

std::vector<std::string> descriptorKinds()
{
    static const std::regex number(R"(:\[\d+\])");
    std::vector<std::string> kinds;
    for (const auto &[descriptor, target] : openDescriptors(::getpid()))
        kinds.push_back(std::regex_replace(target, number, ""));
    std::sort(kinds.begin(), kinds.end());
    return kinds;
}

std::size_t linkMappings()
{
    std::istringstream maps(textOf("/proc/self/maps"));
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);)
        count += line.find("memfd:parvane effect") != std::string::npos ? 1 : 0;
    return count;
}

std::vector<std::string> effectThreads()
{
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator("/proc/self/task")) {
        const std::string name = textOf(entry.path() / "comm");
        if (name.starts_with("effect-"))
            names.push_back(name);
    }
    return names;
}

} // namespace

std::vector<std::pair<int, std::string>> openDescriptors(pid_t process)
{
    std::vector<std::pair<int, std::string>> all;
    const fs::path folder = "/proc/" + std::to_string(process) + "/fd";
    for (const auto &entry : fs::directory_iterator(folder)) {
        std::error_code gone;
        const fs::path target = fs::read_symlink(entry.path(), gone);
        // The iterator's own.
        if (!gone && target != "/proc/" + std::to_string(process) + "/fd")
            all.emplace_back(std::stoi(entry.path().filename()), target.string());
    }
    std::sort(all.begin(), all.end());
    return all;
}

void sendSignal(pid_t process, int signal, bool group)
{
    if (process > 1)
        ::kill(group ? -process : process, signal);
}

ProcessCensus ProcessCensus::now()
{
    return {descriptorKinds(), linkMappings(), ::children(), ::effectThreads()};
}

std::ostream &operator<<(std::ostream &stream, const ProcessCensus &census)
{
    stream << census.descriptors.size() << " descriptors:";
    for (const auto &descriptor : census.descriptors)
        stream << " " << descriptor;
    stream << "; " << census.links << " links; children:";
    for (const pid_t child : census.children)
        stream << " " << child;
    stream << "; threads:";
    for (const auto &thread : census.effectThreads)
        stream << " " << thread;
    return stream;
}
