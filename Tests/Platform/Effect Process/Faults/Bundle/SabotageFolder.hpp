#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

/// Where a test tells the sabotaging plug-in, in a process of its own, when to fail,
/// and hears from it. One of each looks at a time.
class SabotageFolder
{
public:
    using Clock = std::chrono::steady_clock;

    explicit SabotageFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// The test: the next `faults` moments are faults.
    void arm(int faults) const { std::ofstream(folder_ / "armed") << faults; }

    /// The plug-in: whether to fail now; if so, the moment is noted.
    bool takeFault() const
    {
        int left = 0;
        std::ifstream(folder_ / "armed") >> left;
        if (left <= 0)
            return false;
        arm(left - 1);
        note("faults");
        return true;
    }

    /// The plug-in: an instance is being made.
    void noteStart() const { note("starts"); }

    /// When faults were provoked, and instances made.
    std::vector<Clock::time_point> faults() const { return moments("faults"); }
    std::vector<Clock::time_point> starts() const { return moments("starts"); }

private:
    // All processes of a machine have one steady clock.
    void note(const char *file) const
    {
        std::ofstream(folder_ / file, std::ios::app)
            << Clock::now().time_since_epoch().count() << std::endl;
    }

    std::vector<Clock::time_point> moments(const char *file) const
    {
        std::ifstream stream(folder_ / file);
        std::vector<Clock::time_point> all;
        for (Clock::rep count = 0; stream >> count;)
            all.emplace_back(Clock::duration(count));
        return all;
    }

    std::filesystem::path folder_;
};
