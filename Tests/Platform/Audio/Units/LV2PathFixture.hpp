#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

/// Gives each test an LV2 path of its own: one empty folder.
class LV2PathFixture : public testing::Test
{
protected:
    LV2PathFixture()
    {
        std::string pattern = TEST_SCRATCH_DIR "/lv2-XXXXXX";
        folder_ = ::mkdtemp(pattern.data());
        if (const char *path = std::getenv("LV2_PATH"))
            formerPath_ = path;
        usePath(folder_.string());
    }
    ~LV2PathFixture() override
    {
        if (formerPath_)
            usePath(*formerPath_);
        else
            ::unsetenv("LV2_PATH");
        std::filesystem::remove_all(folder_);
    }

    static void usePath(const std::string &path) { ::setenv("LV2_PATH", path.c_str(), 1); }
    const std::filesystem::path &folder() const { return folder_; }

    /// Installs a bundle of a manifest alone.
    void addManifest(const std::string &bundle, const std::string &text) const
    {
        std::filesystem::create_directories(folder_ / bundle);
        std::ofstream(folder_ / bundle / "manifest.ttl") << text;
    }

    /// Installs one of the bundles that were built for the tests.
    void link(const std::string &bundle) const
    {
        std::filesystem::create_directory_symlink(
            std::string(TEST_LV2_BUNDLES "/") + bundle + ".lv2", folder_ / (bundle + ".lv2"));
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
    std::filesystem::path folder_;
    std::optional<std::string> formerPath_;
};
