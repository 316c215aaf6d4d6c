#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace
{

using namespace std::string_literals;

class BundleTest : public ::testing::Test
{
protected:
    ~BundleTest() override { Bundle::setMain(nullptr); }

    void write(const std::string &name) const { std::ofstream(folder.path() / name) << "text"; }

    test::TemporaryFolder folder;
    Bundle bundle{URL::fileURLWithPath(folder.path().string())};
};

TEST_F(BundleTest, FindsAResourceByNameAndExtension)
{
    write("1.m4a");
    write("plain");
    const std::string root = folder.path().string();
    EXPECT_EQ(bundle.urlForResource("1", "m4a"), URL::fileURLWithPath(root + "/1.m4a"));
    EXPECT_EQ(bundle.pathForResource("1", "m4a"), root + "/1.m4a");
    EXPECT_EQ(bundle.pathForResource("plain", ""), root + "/plain");
}

TEST_F(BundleTest, AbsentResourcesAreNone)
{
    std::filesystem::create_directory(folder.path() / "folder.m4a");
    EXPECT_EQ(bundle.urlForResource("2", "m4a"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("2", "m4a"), std::nullopt);
    EXPECT_EQ(bundle.urlForResource("folder", "m4a"), std::nullopt);
    EXPECT_EQ(bundle.urlForResource("", ""), std::nullopt);
    EXPECT_EQ(bundle.urlForResource("a\0b"s, "m4a"), std::nullopt);
}

TEST_F(BundleTest, AnswersItsFolderWhileItExists)
{
    EXPECT_EQ(bundle.resourceURL()->path(), folder.path().string());
    const Bundle absent(URL::fileURLWithPath((folder.path() / "none").string()));
    EXPECT_EQ(absent.resourceURL(), std::nullopt);
    EXPECT_EQ(absent.urlForResource("1", "m4a"), std::nullopt);
}

TEST_F(BundleTest, FindsItsFolderOnceItIsThere)
{
    const Bundle late(URL::fileURLWithPath((folder.path() / "late").string()));
    ASSERT_EQ(late.resourceURL(), std::nullopt);
    std::filesystem::create_directory(folder.path() / "late");
    write("late/1.m4a");
    EXPECT_TRUE(late.resourceURL());
    EXPECT_TRUE(late.urlForResource("1", "m4a"));
}

TEST_F(BundleTest, TheMainBundleIsTheProgramsUnlessReplaced)
{
    const auto program = Bundle::main();
    const auto other = std::make_shared<Bundle>(URL::fileURLWithPath(folder.path().string()));
    Bundle::setMain(other);
    EXPECT_EQ(Bundle::main(), other);
    Bundle::setMain(nullptr);
    EXPECT_EQ(Bundle::main(), program);
}

TEST_F(BundleTest, TheMainBundleLiesBesideTheProgram)
{
    const std::filesystem::path share = ProcessInfo::processInfo().installationPrefix() + "/share";
    const auto resources = share / "parvane-host";
    const bool existed = std::filesystem::exists(resources);
    std::filesystem::create_directories(resources);
    EXPECT_EQ(Bundle::main()->resourceURL()->path(), resources.string());
    if (!existed)
        std::filesystem::remove(resources);
}

TEST(ProcessInfo, KnowsTheRunningProgram)
{
    const auto executable = std::filesystem::read_symlink("/proc/self/exe");
    const ProcessInfo &info = ProcessInfo::processInfo();
    EXPECT_EQ(info.processName(), executable.filename().string());
    EXPECT_EQ(info.processIdentifier(), getpid());
    EXPECT_EQ(info.installationPrefix(), executable.parent_path().parent_path().string());
}

class FileManagerTest : public ::testing::Test
{
protected:
    ~FileManagerTest() override { FileManager::setDefaultManager(nullptr); }
    test::TemporaryFolder folder;
};

TEST_F(FileManagerTest, TellsWhatExists)
{
    const auto manager = FileManager::defaultManager();
    EXPECT_TRUE(manager->fileExists(folder.path().string()));
    EXPECT_FALSE(manager->fileExists((folder.path() / "file").string()));
    std::ofstream(folder.path() / "file") << "text";
    EXPECT_TRUE(manager->fileExists((folder.path() / "file").string()));
    EXPECT_FALSE(manager->fileExists(""));
    EXPECT_FALSE(manager->fileExists(folder.path().string() + "\0x"s));
}

TEST_F(FileManagerTest, ALinkToNothingDoesNotExist)
{
    std::filesystem::create_symlink(folder.path() / "nothing", folder.path() / "link");
    EXPECT_FALSE(FileManager::defaultManager()->fileExists((folder.path() / "link").string()));
}

TEST_F(FileManagerTest, MakesOneFolderOrAllThatAreMissing)
{
    const auto manager = FileManager::defaultManager();
    const auto make = [&](const std::string &name, bool withIntermediateDirectories) {
        manager->createDirectory(URL::fileURLWithPath((folder.path() / name).string()),
                                 withIntermediateDirectories);
        return std::filesystem::is_directory(folder.path() / name);
    };
    EXPECT_TRUE(make("one", false));
    EXPECT_TRUE(make("a/b/c", true));
    EXPECT_TRUE(make("a/b/c", true));
    EXPECT_THROW(make("a", false), PlatformError);
    EXPECT_THROW(make("x/y", false), PlatformError);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "x"));
}

TEST_F(FileManagerTest, SaysWhyAFolderCannotBeMade)
{
    std::ofstream(folder.path() / "file") << "text";
    const auto reason = [&](const URL &url) -> std::string {
        try {
            FileManager::defaultManager()->createDirectory(url, true);
        } catch (const PlatformError &error) {
            return error.what();
        }
        return "none";
    };
    const std::string root = folder.path().string();
    EXPECT_EQ(reason(URL::fileURLWithPath(root + "/file")), "Not a directory");
    EXPECT_EQ(reason(URL::fileURLWithPath(root + "/file/a")), "Not a directory");
    EXPECT_EQ(reason(URL::fileURLWithPath(root + "/a\0b"s)), "Invalid argument");
    EXPECT_EQ(reason(*URL::fromString("https://qrvx.example" + root + "/a")), "Invalid argument");
}

TEST_F(FileManagerTest, CanBeReplaced)
{
    class Everything : public FileManager
    {
    public:
        bool fileExists(std::string_view /*path*/) const override { return true; }
    };
    const auto original = FileManager::defaultManager();
    FileManager::setDefaultManager(std::make_shared<Everything>());
    EXPECT_TRUE(FileManager::defaultManager()->fileExists("/no/such/file"));
    FileManager::setDefaultManager(nullptr);
    EXPECT_EQ(FileManager::defaultManager(), original);
}

/// The desktop's folders are read once a process, so each case has one of its own.
class DocumentsFolderTest : public FileManagerTest
{
protected:
    DocumentsFolderTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// Ends the process with 0 when the documents folder is `expected`.
    [[noreturn]] void answer(const std::filesystem::path &expected) const
    {
        setenv("HOME", folder.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (folder.path() / "config").c_str(), 1);
        const auto urls = FileManager::defaultManager()->urls(
            SearchPathDirectory::documentDirectory, SearchPathDomainMask::userDomainMask);
        std::_Exit(urls.size() == 1 && urls[0].path() == expected.string() ? 0 : 1);
    }
};

TEST_F(DocumentsFolderTest, IsDocumentsInTheHomeFolderByDefault)
{
    EXPECT_EXIT(answer(folder.path() / "Documents"), ::testing::ExitedWithCode(0), "");
}

TEST_F(DocumentsFolderTest, IsTheOneTheDesktopHasConfigured)
{
    EXPECT_EXIT(
        {
            std::filesystem::create_directory(folder.path() / "config");
            std::ofstream(folder.path() / "config/user-dirs.dirs")
                << "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n";
            answer(folder.path() / "Papers");
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace
