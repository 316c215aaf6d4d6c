// Plays every LV2 plug-in through the engine, in a process of its own and in the
// host's, and compares each sample with a bare loop on lilv alone.
//
//   plugin-conformance [--seconds S] [--jobs N] [--patience S] [--report FOLDER]
//                      [--resume] [--overhead] [--list FILE] [URI...]
//
// Without a URI or a list all that are installed. With --resume it keeps what played as
// it should according to the table in the folder, and tries the rest. With --overhead it
// measures what the engine costs beside the bare loop instead. Ends with 0 when every plug-in that
// the bare loop plays is played as well.

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Conformance/ChosenComponents.hpp"
#include "Tests/Conformance/Plug-ins/Report.hpp"
#include "Tests/Conformance/Plug-ins/SubProcess.hpp"
#include "Tests/Conformance/Plug-ins/Trial.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <malloc.h>
#include <sys/wait.h>

namespace
{

using namespace conformance;

struct Order {
    TrialSettings settings;
    unsigned jobs = std::max(std::thread::hardware_concurrency(), 1U);
    std::filesystem::path report = "plug-in-conformance";
    bool resumes = false;
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
        else if (argument == "--resume")
            order.resumes = true;
        else if (argument == "--overhead")
            order.measuresOverhead = true;
        else if (argument == "--list")
            order.plugins = listedPlugins(value());
        else
            order.plugins.push_back(argument);
    }
    return order;
}

/// What takes long to load and every performance needs, so that they share it.
class Stock
{
public:
    /// `folder` is for what is written meanwhile.
    explicit Stock(std::filesystem::path folder) : folder_(std::move(folder))
    {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        const auto wave = folder_ / "silence.wav";
        test::writeWave(wave, test::Channels(1, std::vector<float>(1)), 48000);
        // The libraries that decode.
        const AVAudioFile file(URL::fileURLWithPath(wave.string()));
        // Large memory is fresh from the system, and so zeroed, for whoever asks: some
        // plug-ins rely on that.
        ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    }

    const BareWorld &world() const { return world_; }
    std::filesystem::path folder(std::size_t number) const
    {
        return folder_ / std::to_string(number);
    }

private:
    std::filesystem::path folder_;
    BareWorld world_;
};

/// The trials, some at a time, each in a process that leaves its result in a file.
class Trials
{
public:
    Trials(const Order &order, const std::vector<AVAudioUnitComponent> &components)
        : order_(order), components_(components), stock_(order.report / "work"),
          report_(order.report, components, order.settings.seconds)
    {
        if (order.resumes)
            report_.resume();
    }

    const Report &run()
    {
        for (std::size_t number = 0; number < components_.size(); ++number) {
            if (report_.has(number))
                continue;
            if (running_.size() >= order_.jobs)
                takeOne();
            begin(number);
        }
        while (!running_.empty())
            takeOne();
        return report_;
    }

private:
    std::filesystem::path resultFile(std::size_t number) const
    {
        return stock_.folder(number).string() + ".result";
    }

    void begin(std::size_t number)
    {
        const pid_t process = fork([this, number] {
            const TrialResult result = tryPlugin(stock_.world(), components_[number],
                                                 order_.settings, stock_.folder(number));
            std::ofstream(resultFile(number)) << result.text() << '\n';
        });
        running_[process] = number;
    }

    void takeOne()
    {
        const auto ended = running_.find(::wait(nullptr));
        if (ended == running_.end())
            throw std::runtime_error("A process ended that nobody knows.");
        const std::size_t number = ended->second;
        running_.erase(ended);
        std::ifstream file(resultFile(number));
        std::string row;
        std::getline(file, row);
        const TrialResult result =
            TrialResult::fromText(row).value_or(TrialResult{.reason = "the trial broke off"});
        report_.add(number, result);
        print(fmt::format("{}\t{}", components_[number].pluginURI(), result.text()));
    }

    const Order &order_;
    const std::vector<AVAudioUnitComponent> &components_;
    const Stock stock_;
    Report report_;
    std::map<pid_t, std::size_t> running_;
};

int compare(const Order &order, const std::vector<AVAudioUnitComponent> &components)
{
    Trials trials(order, components);
    const Report &report = trials.run();
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
    const Stock stock(order.report / "work");
    std::vector<double> host;
    std::vector<double> own;
    print("plug-in\tbare loop, ns a block of 64\thost's process\town process\tratio\tratio");
    for (const AVAudioUnitComponent &component : components) {
        const auto overhead =
            tryOverhead(stock.world(), component, order.settings, stock.folder(0));
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
        const Order order = parse({argv, static_cast<std::size_t>(argc)});
        const auto components = chosenComponents(order.plugins);
        return order.measuresOverhead ? measure(order, components) : compare(order, components);
    } catch (const std::exception &error) {
        printError(error.what());
        return 2;
    }
}
