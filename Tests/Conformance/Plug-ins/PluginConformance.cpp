// Plays every LV2 plug-in through the engine, in a process of its own and in the
// host's, and compares each sample with a bare loop on lilv alone.
//
//   plugin-conformance [--seconds S] [--jobs N] [--patience S] [--report FOLDER]
//                      [--overhead] [--list FILE] [URI...]
//
// Without a URI or a list all that are installed. With --overhead it measures what the
// engine costs beside the bare loop instead. Ends with 0 when every plug-in that the
// bare loop plays is played as well.

#include "Platform/Foundation/Print.hpp"
#include "Tests/Conformance/ChosenComponents.hpp"
#include "Tests/Conformance/Plug-ins/Report.hpp"
#include "Tests/Conformance/Plug-ins/Trial.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace conformance;

struct Order {
    TrialSettings settings;
    unsigned jobs = std::max(std::thread::hardware_concurrency(), 1U);
    std::filesystem::path report = "plug-in-conformance";
    bool measuresOverhead = false;
    std::vector<std::string> plugins;
};

Order parse(std::span<char *const> arguments)
{
    Order order;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        const auto value = [&]() -> std::string {
            if (i + 1 >= arguments.size())
                throw std::runtime_error(argument + " needs a value");
            return arguments[++i];
        };
        if (argument == "--seconds")
            order.settings.seconds = std::stod(value());
        else if (argument == "--patience")
            order.settings.patience = std::chrono::seconds(std::stol(value()));
        else if (argument == "--jobs")
            order.jobs = static_cast<unsigned>(std::max(std::stoul(value()), 1UL));
        else if (argument == "--report")
            order.report = value();
        else if (argument == "--overhead")
            order.measuresOverhead = true;
        else if (argument == "--list")
            order.plugins = listedPlugins(value());
        else
            order.plugins.push_back(argument);
    }
    return order;
}

/// Calls `take` with every number below `count`, on several threads.
void share(std::size_t count, unsigned jobs, const std::function<void(std::size_t)> &take)
{
    std::atomic<std::size_t> next{0};
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < jobs; ++i)
        threads.emplace_back([&] {
            for (std::size_t number = next++; number < count; number = next++)
                take(number);
        });
}

int compare(const Order &order, const std::vector<AVAudioUnitComponent> &components)
{
    Report report(order.report, components, order.settings.seconds);
    share(components.size(), order.jobs, [&](std::size_t number) {
        const TrialResult result = tryPlugin(components[number], order.settings);
        report.add(number, result);
        print(fmt::format("{}\t{}\t{}\t{}", components[number].pluginURI(),
                          wordsFor(result.ownProcess), wordsFor(result.hostProcess),
                          result.reason));
    });
    print(report.summary());
    return report.isClean() ? 0 : 1;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

int measure(const Order &order, const std::vector<AVAudioUnitComponent> &components)
{
    std::vector<double> host;
    std::vector<double> own;
    print("plug-in\tbare loop, ns a block of 64\thost's process\town process\tratio\tratio");
    for (const AVAudioUnitComponent &component : components) {
        const auto overhead = tryOverhead(component, order.settings);
        if (!overhead)
            continue;
        host.push_back(overhead->hostProcessRatio);
        own.push_back(overhead->ownProcessRatio);
        print(fmt::format("{}\t{:.0f}\t{:.0f}\t{:.0f}\t{:.3f}\t{:.3f}", component.pluginURI(),
                          overhead->bareLoop, overhead->hostProcess, overhead->ownProcess,
                          overhead->hostProcessRatio, overhead->ownProcessRatio));
    }
    print(fmt::format("Processor time over the bare loop's, blocks of 64, median of {} plug-ins: "
                      "{:.3f} in the host's process, {:.3f} in one of their own (both together)",
                      host.size(), median(host), median(own)));
    return host.empty() ? 1 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        if (playPart(argc, argv))
            return 0;
        const Order order = parse({argv, static_cast<std::size_t>(argc)});
        const auto components = chosenComponents(order.plugins);
        return order.measuresOverhead ? measure(order, components) : compare(order, components);
    } catch (const std::exception &error) {
        printError(error.what());
        return 2;
    }
}
