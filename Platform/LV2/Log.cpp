#include "Platform/LV2/Log.hpp"

#include "Platform/Foundation/Print.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <span>
#include <utility>

namespace platform::lv2
{

namespace
{

thread_local bool onAudioCallback = false;

constexpr std::size_t longestLine = 1024;
constexpr std::size_t ringSize = 16384;

} // namespace

Log::AudioCallback::AudioCallback() noexcept
{
    onAudioCallback = true;
}

Log::AudioCallback::~AudioCallback()
{
    onAudioCallback = false;
}

Log::Log(std::string pluginName) : name_(std::move(pluginName)), kept_(ringSize)
{
    feature_.handle = this;
    feature_.printf = &Log::print;
    feature_.vprintf = [](LV2_Log_Handle handle, LV2_URID, const char *format,
                          std::va_list arguments) {
        return static_cast<Log *>(handle)->sayFormatted(format, arguments);
    };
}

int Log::print(LV2_Log_Handle handle, LV2_URID, const char *format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const int written = static_cast<Log *>(handle)->sayFormatted(format, arguments);
    va_end(arguments);
    return written;
}

int Log::sayFormatted(const char *format, std::va_list arguments)
{
    std::array<char, longestLine> buffer;
    const int wanted = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    if (wanted < 0)
        return wanted;
    std::string_view line(buffer.data(),
                          std::min(static_cast<std::size_t>(wanted), buffer.size() - 1));
    while (!line.empty() && line.back() == '\n')
        line.remove_suffix(1);
    say(line);
    return wanted;
}

void Log::say(std::string_view line)
{
    if (!onAudioCallback)
        printError(fmt::format("{}: {}", name_, line));
    else if (!kept_.write(std::as_bytes(std::span(line.data(), line.size()))))
        lost_.fetch_add(1, std::memory_order_relaxed);
}

void Log::writeOut()
{
    while (const auto line = kept_.read())
        printError(fmt::format(
            "{}: {}", name_,
            std::string_view(reinterpret_cast<const char *>(line->data()), line->size())));
    if (const std::uint64_t lost = lost_.exchange(0, std::memory_order_relaxed); lost > 0)
        printError(fmt::format("{}: {} more lines were said too fast to keep", name_, lost));
}

} // namespace platform::lv2
