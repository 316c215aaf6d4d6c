#include "Tests/Utilities/EnvironmentVariable.hpp"

#include <cstdlib>
#include <utility>

namespace test
{

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string> &value)
    : name_(std::move(name))
{
    if (const char *const former = std::getenv(name_.c_str()))
        former_ = former;
    set(value);
}

EnvironmentVariable::~EnvironmentVariable()
{
    set(former_);
}

void EnvironmentVariable::set(const std::optional<std::string> &value) const
{
    if (value)
        ::setenv(name_.c_str(), value->c_str(), 1);
    else
        ::unsetenv(name_.c_str());
}

} // namespace test
