#include "Platform/Effect Process/LinkEvents.hpp"

#include <algorithm>

namespace platform::effect
{

namespace
{

struct Head {
    std::int64_t time;
    std::uint32_t output;
    std::uint32_t size;
};

constexpr std::size_t paddedSize(std::size_t size)
{
    return (size + 7) / 8 * 8;
}

} // namespace

bool LinkEventWriter::append(const LinkEvent &event) noexcept
{
    const std::size_t needed = sizeof(Head) + paddedSize(event.bytes.size());
    if (needed > room_.size() - used_)
        return false;
    const Head head{event.time, event.output, static_cast<std::uint32_t>(event.bytes.size())};
    std::memcpy(room_.data() + used_, &head, sizeof head);
    std::transform(event.bytes.begin(), event.bytes.end(),
                   room_.subspan(used_ + sizeof head).begin(),
                   [](std::uint8_t byte) { return std::byte{byte}; });
    used_ += needed;
    return true;
}

bool readLinkEvent(std::span<const std::byte> &events, LinkEvent &event) noexcept
{
    Head head{};
    if (events.size() < sizeof head)
        return false;
    std::memcpy(&head, events.data(), sizeof head);
    const auto rest = events.subspan(sizeof head);
    if (head.size > rest.size() || paddedSize(head.size) > rest.size())
        return false;
    event = {
        head.time, head.output, {reinterpret_cast<const std::uint8_t *>(rest.data()), head.size}};
    events = rest.subspan(paddedSize(head.size));
    return true;
}

} // namespace platform::effect
