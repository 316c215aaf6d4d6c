#include "Tests/Conformance/ChosenComponents.hpp"

#include "Platform/Audio/AVAudioUnitComponentManager.hpp"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace conformance
{

std::vector<AVAudioUnitComponent> chosenComponents(const std::vector<std::string> &uris)
{
    std::vector<AVAudioUnitComponent> all = AVAudioUnitComponentManager::shared().components({});
    if (uris.empty())
        return all;
    for (const std::string &uri : uris)
        if (std::none_of(all.begin(), all.end(),
                         [&](const auto &each) { return each.pluginURI() == uri; }))
            throw std::runtime_error("No plug-in <" + uri + "> is installed.");
    std::erase_if(all, [&](const auto &each) {
        return std::find(uris.begin(), uris.end(), each.pluginURI()) == uris.end();
    });
    return all;
}

std::vector<std::string> listedPlugins(const std::string &path)
{
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("There is no list " + path);
    std::vector<std::string> plugins;
    for (std::string line; std::getline(file, line);)
        if (!line.empty())
            plugins.push_back(line);
    return plugins;
}

} // namespace conformance
