#pragma once

#include <string>

namespace test
{

/// The process without the rights of the superuser while it lives, whom no
/// permission stops: as the user nobody where it runs as root, else as it is.
class OrdinaryUser
{
public:
    OrdinaryUser();
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    /// Why the process has kept its rights; empty when it has given them up.
    const std::string &obstacle() const { return obstacle_; }

private:
    std::string obstacle_;
    bool wasRoot_ = false;
};

} // namespace test
