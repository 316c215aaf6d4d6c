// Draws what the kit computes: parvane-curves FOLDER; parvane-curves(1) describes it.
#include "Animation/Gallery/Drawing.hpp"
#include "Animation/Gallery/Recording.hpp"

#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream> // IWYU pragma: keep
#include <iostream>
#include <string>
#include <system_error>

#include <getopt.h>

namespace
{

constexpr auto usage = "Usage: parvane-curves FOLDER\n";
constexpr auto help =
    "Draws the easing curves and timelines of what runs them, all computed by the\n"
    "animation kit, into FOLDER: curves.svg and index.html.\n"
    "\n"
    "  -h, --help     print this and exit\n"
    "  -V, --version  print the version and exit\n";

void write(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw std::filesystem::filesystem_error("cannot write", path,
                                                std::make_error_code(std::errc::io_error));
}

int draw(const std::filesystem::path &folder)
{
    using namespace animation::gallery;
    try {
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

} // namespace

int main(int argc, char **argv)
{
    static constexpr std::array options{
        option{"help", no_argument, nullptr, 'h'},
        option{"version", no_argument, nullptr, 'V'},
        option{},
    };
    switch (getopt_long(argc, argv, "hV", options.data(), nullptr)) {
    case -1:
        break;
    case 'h':
        std::cout << usage << help;
        return EXIT_SUCCESS;
    case 'V':
        std::cout << "parvane-curves " PARVANE_VERSION "\n";
        return EXIT_SUCCESS;
    default:
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    if (argc - optind != 1) {
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    return draw(argv[optind]);
}
