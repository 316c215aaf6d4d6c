#pragma once

#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

/// Gives each test an LV2 path of its own: one empty folder.
class LV2PathFixture : public testing::Test
{
protected:
    void usePath(const std::optional<std::string> &path) const { path_.set(path); }
    const std::filesystem::path &folder() const { return folder_.path(); }

    /// Installs a bundle of a manifest alone.
    void addManifest(const std::string &bundle, const std::string &text) const
    {
        std::filesystem::create_directories(folder() / bundle);
        std::ofstream(folder() / bundle / "manifest.ttl") << text;
    }

    /// Installs one of the bundles that were built for the tests.
    void link(const std::string &bundle) const
    {
        std::filesystem::create_directory_symlink(
            test::buildPath(TEST_LV2_BUNDLES "/" + bundle + ".lv2"), folder() / (bundle + ".lv2"));
    }

    /// A manifest with one plug-in, registered under the words given.
    static std::string manifest(const std::string &uri, const std::string &componentKey = "")
    {
        return "@prefix au: <urn:qrvx:audio-component#> .\n"
               "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n<" +
               uri + "> a lv2:Plugin ; lv2:binary <none.so> " + componentKey + ".\n";
    }

    static constexpr const char *key =
        R"(; au:type "aumf" ; au:subtype "zvqr" ; au:manufacturer "QRVX" ; au:flags 2 )";

private:
    const test::TemporaryFolder folder_;
    const test::EnvironmentVariable path_{"LV2_PATH", folder_.path().string()};
};
