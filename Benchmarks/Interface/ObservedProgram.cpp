#include "Benchmarks/Interface/ObservedProgram.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

constexpr std::chrono::seconds patience{60};

std::string contentOf(const std::filesystem::path &path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// The fields of a /proc stat file behind the name, of which one may hold anything.
std::istringstream fieldsOf(const std::filesystem::path &stat, std::string &name)
{
    const std::string text = contentOf(stat);
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos)
        return {};
    name = text.substr(open + 1, close - open - 1);
    return std::istringstream(text.substr(close + 1));
}

} // namespace

ObservedProgram::ObservedProgram(const std::vector<std::string> &command,
                                 const Variables &variables, const std::string &folder)
    : process_(fork()), output_(folder + "/output")
{
    if (process_ != 0)
        return;
    const int output = open(output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    dup2(output, STDOUT_FILENO);
    for (const auto &[name, value] : variables)
        setenv(name.c_str(), value.c_str(), 1);
    std::vector<char *> arguments;
    for (const std::string &word : command)
        arguments.push_back(const_cast<char *>(word.c_str())); // NOLINT: the C interface
    arguments.push_back(nullptr);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

ObservedProgram::~ObservedProgram()
{
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

void ObservedProgram::waitFor(const std::string &text) const
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (contentOf(output_).find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("The program does not say: " + text);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

double mainThreadTime(pid_t process)
{
    const std::string number = std::to_string(process);
    std::string name;
    auto fields = fieldsOf("/proc/" + number + "/task/" + number + "/stat", name);
    // User and system time are the 12th and 13th after the name.
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

pid_t childOf(pid_t parent, const std::string &name)
{
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        const std::string number = entry.path().filename();
        if (!std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; }))
            continue;
        std::string found;
        auto fields = fieldsOf(entry.path() / "stat", found);
        char state = 0;
        pid_t above = 0;
        if (fields >> state >> above && above == parent && found == name)
            return std::stoi(number);
    }
    throw std::runtime_error("There is no process " + name + ".");
}

ScratchFolder::ScratchFolder()
{
    std::string pattern = std::filesystem::temp_directory_path() / "parvane-bench-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("There is no room for a temporary folder.");
    path_ = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace bench
