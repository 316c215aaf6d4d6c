#include "Platform/Audio/LV2Path.hpp"

#include "Platform/Foundation/ProcessInfo.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform::audio
{

namespace
{

std::string environmentValue(const std::string &name)
{
    const char *value = std::getenv(name.c_str());
    return value ? value : "";
}

bool isNameCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

std::string expanded(const std::string &folder)
{
    std::string result;
    for (std::size_t i = 0; i < folder.size();) {
        if (i == 0 && folder[0] == '~' && (folder.size() == 1 || folder[1] == '/')) {
            result += environmentValue("HOME");
            ++i;
        } else if (folder[i] == '$') {
            std::size_t end = i + 1;
            while (end < folder.size() && isNameCharacter(folder[end]))
                ++end;
            result += environmentValue(folder.substr(i + 1, end - i - 1));
            i = end;
        } else {
            result += folder[i++];
        }
    }
    return result;
}

using Directory = std::unique_ptr<DIR, decltype([](DIR *directory) { ::closedir(directory); })>;
using FileIdentity = std::pair<dev_t, ino_t>;

} // namespace

std::vector<std::string> lv2Folders()
{
    const char *path = std::getenv("LV2_PATH");
    std::istringstream parts(path ? path : LV2_DEFAULT_PATH);
    std::vector<std::string> folders;
    for (std::string part; std::getline(parts, part, ':');)
        if (!part.empty())
            folders.push_back(expanded(part));
    if (path == nullptr)
        for (const std::string &folder : ProcessInfo::processInfo().libraryFolders())
            folders.push_back(folder + "/lv2");
    return folders;
}

std::vector<std::string> lv2Bundles()
{
    std::vector<std::string> bundles;
    std::set<FileIdentity> seen;
    for (const std::string &folder : lv2Folders()) {
        const Directory directory(::opendir(folder.c_str()));
        if (!directory)
            continue;
        std::vector<std::string> names;
        while (const dirent *entry = ::readdir(directory.get()))
            names.emplace_back(entry->d_name);
        std::sort(names.begin(), names.end());
        for (const std::string &name : names) {
            struct stat status {
            };
            if (name != "." && name != ".." &&
                ::fstatat(::dirfd(directory.get()), name.c_str(), &status, 0) == 0 &&
                S_ISDIR(status.st_mode) && seen.emplace(status.st_dev, status.st_ino).second)
                bundles.push_back(std::string(folder).append("/").append(name));
        }
    }
    return bundles;
}

} // namespace platform::audio
