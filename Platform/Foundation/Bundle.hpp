#pragma once

#include "Platform/Foundation/URL.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// A folder of resources that belongs to a program. Any thread.
class Bundle
{
public:
    /// The running program's: `share/parvane-host` beside the `bin` folder that
    /// holds the executable.
    static std::shared_ptr<Bundle> main();

    /// Replaces the main bundle, for programs whose resources lie elsewhere and
    /// for tests. Null brings back the program's own. Not while others read it.
    static void setMain(std::shared_ptr<Bundle> bundle);

    /// A bundle on any folder, which need not exist.
    explicit Bundle(URL folder);

    /// The resource folder; none when it does not exist.
    std::optional<URL> resourceURL() const;

    /// The location of the resource `name`.`extension`; none when there is no
    /// such file.
    std::optional<URL> urlForResource(std::string_view name, std::string_view extension) const;

    /// The same as a path of the file system.
    std::optional<std::string> pathForResource(std::string_view name,
                                               std::string_view extension) const;

private:
    URL folder_;
};
