#include "Animation/Gallery/Drawing.hpp"
#include "Animation/Gallery/Recording.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>

namespace
{

std::string contents(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Outcome {
    int status;
    std::string said;
};

constexpr auto onBothOutputs = "2>&1";
constexpr auto onStandardOutput = "2>/dev/null";

/// Runs the program as a shell would, in a folder, and listens to it.
Outcome run(const std::string &arguments, const std::filesystem::path &folder,
            const std::string &listening)
{
    const std::string command =
        "cd '" + folder.string() + "' && '" CURVES_PROGRAM "' " + arguments + " " + listening;
    FILE *const output = popen(command.c_str(), "r");
    Outcome outcome{};
    std::array<char, 4096> piece{};
    while (const std::size_t length = fread(piece.data(), 1, piece.size(), output))
        outcome.said.append(piece.data(), length);
    const int status = pclose(output);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class CurvesProgram : public testing::Test
{
protected:
    Outcome run(const std::string &arguments, const std::string &listening = onBothOutputs)
    {
        return ::run(arguments, folder.path(), listening);
    }
    bool leftNothing() const { return std::filesystem::is_empty(folder.path()); }

    const test::TemporaryFolder folder;
};

TEST_F(CurvesProgram, DrawsIntoAFolderThatItMakes)
{
    using namespace animation::gallery;
    const Outcome outcome = run("new/pictures");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.said, "");
    const auto curves = recordCurves(100);
    EXPECT_TRUE(contents(folder.path() / "new/pictures/curves.svg") == drawCurves(curves));
    EXPECT_TRUE(contents(folder.path() / "new/pictures/index.html") ==
                writePage(curves, recordTimelines()));
}

TEST_F(CurvesProgram, ReplacesWhatItDrewBefore)
{
    std::ofstream(folder.path() / "curves.svg") << std::string(1'000'000, 'x');
    EXPECT_EQ(run(".").status, 0);
    EXPECT_TRUE(contents(folder.path() / "curves.svg").ends_with("</svg>\n"));
}

TEST_F(CurvesProgram, SaysWhatItDoesWhenAsked)
{
    for (const std::string option : {"--help", "-h"}) {
        const Outcome outcome = run(option, onStandardOutput);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.said.find("Usage: parvane-curves FOLDER\n"), 0U);
        EXPECT_NE(outcome.said.find("--version"), std::string::npos);
    }
    EXPECT_TRUE(leftNothing());
}

TEST_F(CurvesProgram, SaysItsVersionWhenAsked)
{
    for (const std::string option : {"--version", "-V"}) {
        const Outcome outcome = run(option, onStandardOutput);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.said, "parvane-curves " PARVANE_VERSION "\n");
    }
    EXPECT_TRUE(leftNothing());
}

TEST_F(CurvesProgram, SaysHowItIsUsedWhenItIsNotUsedThatWay)
{
    for (const std::string arguments : {"", "one two", "--verbose", "-x folder"}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_TRUE(outcome.said.ends_with("Usage: parvane-curves FOLDER\n")) << outcome.said;
        EXPECT_EQ(run(arguments, onStandardOutput).said, "") << "that is for standard error";
    }
    EXPECT_TRUE(leftNothing());
}

TEST_F(CurvesProgram, TakesAFolderThatLooksLikeAnOption)
{
    EXPECT_EQ(run("-- --help").status, 0);
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "--help" / "index.html"));
}

TEST_F(CurvesProgram, TellsOfAFolderThatItCannotWriteTo)
{
    std::ofstream(folder.path() / "file") << "no folder";
    const Outcome inFile = run("file/below");
    EXPECT_EQ(inFile.status, 1);
    EXPECT_EQ(inFile.said.find("parvane-curves: "), 0U) << inFile.said;
    EXPECT_NE(inFile.said.find("file/below"), std::string::npos) << inFile.said;

    std::filesystem::create_directories(folder.path() / "full" / "index.html");
    const Outcome inTheWay = run("full");
    EXPECT_EQ(inTheWay.status, 1);
    EXPECT_NE(inTheWay.said.find("full/index.html"), std::string::npos) << inTheWay.said;
}

} // namespace
