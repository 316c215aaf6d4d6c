#pragma once

#include "Platform/Effect Process/MessageSocket.hpp"
#include "Platform/Effect Process/Messages.hpp"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

/// What an effect's process sends, believed only after a look at it: counts within
/// reason, texts that are UTF-8, numbers that are numbers. All throw a
/// `ProtocolBreach` for anything else.
namespace platform::effect
{

///@{
/// What a message's body says, once it has been looked at.
Description checkedDescription(std::span<const std::byte> body);
std::vector<std::string> checkedNames(std::span<const std::byte> body);
std::string checkedText(std::span<const std::byte> body);
ViewShape checkedViewShape(std::span<const std::byte> body);
///@}

/// Whether two descriptions are of effects that one link serves.
bool hasSameShape(const Description &one, const Description &other);

} // namespace platform::effect
