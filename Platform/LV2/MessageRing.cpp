#include "Platform/LV2/MessageRing.hpp"

#include <algorithm>
#include <cstring>

namespace platform::lv2
{

MessageRing::MessageRing(std::size_t capacity)
    : bytes_(capacity), outgoing_(capacity), incoming_(capacity)
{
}

bool MessageRing::write(std::span<const std::byte> head, std::span<const std::byte> tail) noexcept
{
    const std::size_t room = bytes_.write_available();
    if (room < sizeof(std::uint32_t) || head.size() > room - sizeof(std::uint32_t) ||
        tail.size() > room - sizeof(std::uint32_t) - head.size())
        return false;
    const auto size = static_cast<std::uint32_t>(head.size() + tail.size());
    std::memcpy(outgoing_.data(), &size, sizeof size);
    auto end = std::copy(head.begin(), head.end(), outgoing_.data() + sizeof size);
    std::copy(tail.begin(), tail.end(), end);
    return bytes_.push(outgoing_.data(), sizeof size + size) == sizeof size + size;
}

std::optional<std::span<const std::byte>> MessageRing::read() noexcept
{
    std::uint32_t size = 0;
    if (bytes_.read_available() < sizeof size)
        return std::nullopt;
    bytes_.pop(incoming_.data(), sizeof size);
    std::memcpy(&size, incoming_.data(), sizeof size);
    bytes_.pop(incoming_.data(), size);
    return std::span<const std::byte>(incoming_.data(), size);
}

} // namespace platform::lv2
