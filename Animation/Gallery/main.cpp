// Draws what the kit computes: parvane-curves FOLDER
#include "Animation/Gallery/Drawing.hpp"
#include "Animation/Gallery/Recording.hpp"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream> // IWYU pragma: keep
#include <iostream>
#include <string>
#include <system_error>

namespace
{

void write(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw std::filesystem::filesystem_error("cannot write", path,
                                                std::make_error_code(std::errc::io_error));
}

} // namespace

int main(int argc, char **argv)
{
    using namespace animation::gallery;
    if (argc != 2) {
        std::cerr << "Usage: parvane-curves FOLDER\n";
        return EXIT_FAILURE;
    }
    try {
        const std::filesystem::path folder = argv[1];
        std::filesystem::create_directories(folder);
        const auto curves = recordCurves(100);
        write(folder / "curves.svg", drawCurves(curves));
        write(folder / "index.html", writePage(curves, recordTimelines()));
    } catch (const std::exception &error) {
        std::cerr << "parvane-curves: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
