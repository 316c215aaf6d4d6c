#include "Support/FileLocations.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/MountedMemory.hpp"
#include "Tests/Utilities/OrdinaryUser.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <sys/mount.h>

namespace
{

namespace fs = std::filesystem;

/// What is printed by what `action` sets off.
std::string printedBy(const std::function<void()> &action)
{
    const test::PrintedLines printed;
    action();
    test::drainMainQueue();
    return printed.text();
}

std::string refusal(const fs::path &path, const std::string &reason)
{
    return "ensureDirectoryExists() : ERROR: Creating required directory '" + path.string() +
           "' failed: " + reason + "\n";
}

class DirectoryTest : public ::testing::Test
{
protected:
    fs::path below(const std::string &name) const { return folder.path() / name; }

    /// Asks for `path`, and expects it to be there with nothing printed.
    static void expectMade(const fs::path &path)
    {
        bool exists = false;
        EXPECT_EQ(
            printedBy([&] { exists = ensureDirectoryExists(URL::fileURLWithPath(path.string())); }),
            "");
        EXPECT_TRUE(exists);
        EXPECT_TRUE(fs::is_directory(path)) << path;
    }

    /// Asks for `path`, and expects that it is refused, with one line that says why.
    static void expectRefused(const fs::path &path, const std::string &reason)
    {
        bool exists = true;
        EXPECT_EQ(
            printedBy([&] { exists = ensureDirectoryExists(URL::fileURLWithPath(path.string())); }),
            refusal(path, reason));
        EXPECT_FALSE(exists);
        // The path may not even be one that can be looked at.
        std::error_code error;
        EXPECT_FALSE(fs::exists(path, error));
    }

    test::TemporaryFolder folder;
};

TEST_F(DirectoryTest, AFolderThatExistsIsLeftAsItIs)
{
    std::ofstream(below("kept")) << "text";
    const auto changed = fs::last_write_time(folder.path());
    expectMade(folder.path());
    EXPECT_TRUE(fs::exists(below("kept")));
    EXPECT_EQ(fs::last_write_time(folder.path()), changed);
}

TEST_F(DirectoryTest, APlainFileCountsAsExisting)
{
    std::ofstream(below("file")) << "text";
    bool exists = false;
    EXPECT_EQ(printedBy([&] {
                  exists = ensureDirectoryExists(URL::fileURLWithPath(below("file").string()));
              }),
              "");
    EXPECT_TRUE(exists);
    EXPECT_TRUE(fs::is_regular_file(below("file")));
    EXPECT_EQ(fs::file_size(below("file")), 4U);
}

TEST_F(DirectoryTest, MakesEveryMissingLevel)
{
    expectMade(below("a/b/c/d"));
    expectMade(below("a/b/c/e"));
    expectMade(below("one"));
}

TEST_F(DirectoryTest, MakesNamesOfAllKinds)
{
    expectMade(below("with blanks in it/ at both ends "));
    expectMade(below("Äpfel über Öl/♫"));
    expectMade(below("two\nlines/tab\there"));
    expectMade(below("50%/100%25/#1?x=y;z"));
    expectMade(below(".hidden/..."));
}

TEST_F(DirectoryTest, MakesAFolderThroughALink)
{
    fs::create_directory(below("real"));
    fs::create_directory_symlink(below("real"), below("link"));
    expectMade(below("link/new"));
    EXPECT_TRUE(fs::is_directory(below("real/new")));
}

TEST_F(DirectoryTest, ASlashAtTheEndMakesNoDifference)
{
    const URL url = *URL::fromString("file://" + below("slash").string() + "/");
    EXPECT_TRUE(ensureDirectoryExists(url));
    EXPECT_TRUE(fs::is_directory(below("slash")));
}

TEST_F(DirectoryTest, NothingIsMadeBelowAPlainFile)
{
    std::ofstream(below("file")) << "text";
    expectRefused(below("file/a"), "Not a directory");
    expectRefused(below("file/a/b"), "Not a directory");
    EXPECT_TRUE(fs::is_regular_file(below("file")));
}

TEST_F(DirectoryTest, ALinkToNothingIsRefused)
{
    fs::create_symlink(below("nothing"), below("link"));
    expectRefused(below("link"), "File exists");
    EXPECT_TRUE(fs::is_symlink(below("link")));
    EXPECT_FALSE(fs::exists(below("nothing")));
}

TEST_F(DirectoryTest, ALinkToItselfIsRefused)
{
    fs::create_symlink(below("circle"), below("circle"));
    expectRefused(below("circle/a"), "Too many levels of symbolic links");
}

TEST_F(DirectoryTest, ANameThatIsTooLongIsRefused)
{
    expectRefused(below(std::string(256, 'x')), "File name too long");
}

TEST_F(DirectoryTest, TheLineHoldsThePathAsItIs)
{
    std::ofstream(below("file")) << "text";
    expectRefused(below("file/ö \n%20'"), "Not a directory");
}

TEST_F(DirectoryTest, APathWithANULIsRefusedWhole)
{
    const std::string text = "file://" + below("cut").string() + "%00off";
    const std::string printed =
        printedBy([&] { EXPECT_FALSE(ensureDirectoryExists(*URL::fromString(text))); });
    EXPECT_EQ(printed,
              refusal(below("cut").string() + std::string("\0off", 4), "Invalid argument"));
    EXPECT_FALSE(fs::exists(below("cut")));
}

TEST_F(DirectoryTest, OnlyAFileURLNamesAFolder)
{
    const std::string path = below("page").string();
    const std::string printed = printedBy([&] {
        EXPECT_FALSE(ensureDirectoryExists(*URL::fromString("https://qrvx.example" + path)));
    });
    EXPECT_EQ(printed, refusal(path, "Invalid argument"));
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(DirectoryTest, WithoutPermissionNothingIsMade)
{
    fs::create_directory(below("closed"));
    fs::permissions(below("closed"), fs::perms(0555));
    fs::permissions(folder.path(), fs::perms(0755));
    const test::OrdinaryUser user;
    if (!user.obstacle().empty())
        GTEST_SKIP() << user.obstacle();
    expectMade(below("closed"));
    expectRefused(below("closed/a"), "Permission denied");
    expectRefused(below("closed/a/b"), "Permission denied");
}

TEST_F(DirectoryTest, WhatCannotBeLookedIntoIsRefused)
{
    fs::create_directories(below("locked/a"));
    fs::permissions(below("locked"), fs::perms(0));
    fs::permissions(folder.path(), fs::perms(0755));
    {
        const test::OrdinaryUser user;
        if (!user.obstacle().empty())
            GTEST_SKIP() << user.obstacle();
        expectRefused(below("locked/a"), "Permission denied");
        expectRefused(below("locked/b/c"), "Permission denied");
    }
    fs::permissions(below("locked"), fs::perms(0755));
    EXPECT_FALSE(fs::exists(below("locked/b")));
}

TEST_F(DirectoryTest, OnAReadOnlyFileSystemNothingIsMade)
{
    const test::MountedMemory memory(folder.path(), MS_RDONLY, "size=64k");
    if (!memory.obstacle().empty())
        GTEST_SKIP() << memory.obstacle();
    expectMade(folder.path());
    expectRefused(below("a"), "Read-only file system");
    expectRefused(below("a/b"), "Read-only file system");
}

TEST_F(DirectoryTest, OnAFullFileSystemTheMissingLevelIsRefused)
{
    // Its own root and one folder are all that it holds.
    const test::MountedMemory memory(folder.path(), 0, "nr_inodes=2");
    if (!memory.obstacle().empty())
        GTEST_SKIP() << memory.obstacle();
    expectRefused(below("a/b"), "No space left on device");
    EXPECT_TRUE(fs::is_directory(below("a")));
    expectRefused(below("c"), "No space left on device");
}

TEST_F(DirectoryTest, ManyThreadsMayAskForTheSameFolder)
{
    const URL url = URL::fileURLWithPath(below("a/b/c/d/e/f").string());
    std::atomic<int> succeeded = 0;
    const std::string printed = printedBy([&] {
        std::vector<std::thread> threads;
        threads.reserve(8);
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&] { succeeded += ensureDirectoryExists(url) ? 1 : 0; });
        for (auto &thread : threads)
            thread.join();
    });
    EXPECT_EQ(printed, "");
    EXPECT_EQ(succeeded, 8);
    EXPECT_TRUE(fs::is_directory(below("a/b/c/d/e/f")));
}

TEST_F(DirectoryTest, TheLineComesOnTheMainQueue)
{
    const test::PrintedLines printed;
    std::ofstream(below("file")) << "text";
    EXPECT_FALSE(ensureDirectoryExists(URL::fileURLWithPath(below("file/a").string())));
    print("what the task prints itself");
    test::drainMainQueue();
    EXPECT_EQ(printed.text(),
              "what the task prints itself\n" + refusal(below("file/a"), "Not a directory"));
}

/// Answers the documents folders that a test names.
class DocumentsAt : public FileManager
{
public:
    explicit DocumentsAt(std::vector<URL> folders) : folders_(std::move(folders)) {}

    std::vector<URL> urls(SearchPathDirectory /*directory*/,
                          SearchPathDomainMask /*domain*/) const override
    {
        return folders_;
    }

private:
    std::vector<URL> folders_;
};

class FileLocationsTest : public ::testing::Test
{
protected:
    ~FileLocationsTest() override
    {
        FileManager::setDefaultManager(nullptr);
        Bundle::setMain(nullptr);
        for (auto *location : {&documentsURL, &resourcesURL, &sharedURLAudio, &sharedURLMIDI})
            location->store(std::nullopt);
    }

    /// Puts the bundle into the temporary folder, or beside it where nothing is.
    void setBundle(const std::string &name) const
    {
        Bundle::setMain(std::make_shared<Bundle>(at(name)));
    }

    URL at(const std::string &name) const
    {
        return URL::fileURLWithPath((folder.path() / name).string());
    }

    static void setDocuments(std::vector<URL> folders)
    {
        FileManager::setDefaultManager(std::make_shared<DocumentsAt>(std::move(folders)));
    }

    const std::string prefix = "AudioUnitViewController::getPaths() : ";
    test::TemporaryFolder folder;
};

TEST_F(FileLocationsTest, AreNoneAtFirst)
{
    EXPECT_EQ(documentsURL.load(), std::nullopt);
    EXPECT_EQ(resourcesURL.load(), std::nullopt);
    EXPECT_EQ(sharedURLAudio.load(), std::nullopt);
    EXPECT_EQ(sharedURLMIDI.load(), std::nullopt);
}

TEST_F(FileLocationsTest, AreTheUsersDocumentsAndTheBundlesResources)
{
    setBundle(".");
    const URL documents = FileManager::defaultManager()->urls(
        SearchPathDirectory::documentDirectory, SearchPathDomainMask::userDomainMask)[0];
    const std::string resources = Bundle::main()->resourceURL()->path();
    EXPECT_EQ(printedBy(getPaths), prefix + "Audio Unit's documents path is: " + documents.path() +
                                       "\n" + prefix +
                                       "Audio Unit's resources path is: " + resources + "\n");
    EXPECT_EQ(documentsURL.load(), documents);
    EXPECT_EQ(resourcesURL.load(), Bundle::main()->resourceURL());
}

TEST_F(FileLocationsTest, TheSharedFoldersStayNone)
{
    setBundle(".");
    printedBy(getPaths);
    EXPECT_EQ(sharedURLAudio.load(), std::nullopt);
    EXPECT_EQ(sharedURLMIDI.load(), std::nullopt);
}

TEST_F(FileLocationsTest, TheFirstOfSeveralDocumentsFoldersCounts)
{
    setBundle(".");
    setDocuments({at("first folder"), at("second")});
    EXPECT_EQ(printedBy(getPaths), prefix + "Audio Unit's documents path is: " +
                                       (folder.path() / "first folder").string() + "\n" + prefix +
                                       "Audio Unit's resources path is: " +
                                       Bundle::main()->resourceURL()->path() + "\n");
    EXPECT_EQ(documentsURL.load(), at("first folder"));
}

TEST_F(FileLocationsTest, ABundleWithoutResourcesLeavesNone)
{
    setDocuments({at("documents")});
    setBundle("missing");
    resourcesURL.store(at("former"));
    EXPECT_EQ(printedBy(getPaths),
              prefix + "Audio Unit's documents path is: " + (folder.path() / "documents").string() +
                  "\n" + prefix + "ERROR: Audio Unit's resources path is nil.\n");
    EXPECT_EQ(resourcesURL.load(), std::nullopt);
    EXPECT_EQ(documentsURL.load(), at("documents"));
}

TEST(FileLocationsDeathTest, NoDocumentsFolderAtAllIsFatal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto getPathsWithout = [] {
        FileManager::setDefaultManager(std::make_shared<DocumentsAt>(std::vector<URL>()));
        getPaths();
    };
    EXPECT_DEATH(getPathsWithout(), "Fatal error: Index out of range");
}

TEST_F(FileLocationsTest, TakeReadersAndWritersOfManyThreads)
{
    const URL first = at("the first of two locations");
    const URL second = at("the second, which is longer than the first");
    documentsURL.store(first);
    std::atomic<bool> whole = true;
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            for (int turn = 0; turn < 2'000; ++turn) {
                if (i % 2 == 0)
                    documentsURL.store(turn % 2 == 0 ? first : second);
                const std::optional<URL> seen = documentsURL.load();
                whole = whole && (seen == first || seen == second);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_TRUE(whole);
}

} // namespace
