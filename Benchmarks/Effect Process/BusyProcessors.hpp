#pragma once

#include <vector>

#include <sys/types.h>

/// Keeps every processor of the machine busy for its lifetime, in processes of
/// ordinary priority.
class BusyProcessors
{
public:
    BusyProcessors();
    ~BusyProcessors();
    BusyProcessors(const BusyProcessors &) = delete;
    BusyProcessors &operator=(const BusyProcessors &) = delete;

private:
    std::vector<pid_t> processes_;
};
