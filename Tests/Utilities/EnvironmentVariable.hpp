#pragma once

#include <optional>
#include <string>

namespace test
{

/// Sets a variable of the environment while it lives, or unsets it; what was
/// there before comes back. No other thread may look meanwhile at its ends.
class EnvironmentVariable
{
public:
    EnvironmentVariable(std::string name, const std::optional<std::string> &value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable &) = delete;
    EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

    /// Another value, or none.
    void set(const std::optional<std::string> &value) const;

private:
    std::string name_;
    std::optional<std::string> former_;
};

} // namespace test
