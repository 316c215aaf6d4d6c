#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace conformance
{

/// What became of a program.
struct Ending {
    bool isLate = false; ///< it was ended by force
    int signal = 0;      ///< that it died of; 0 when it ended itself
    int code = 0;        ///< that it ended with
};

/// Runs this program again with other arguments, in a process group and with a home of
/// its own, what it says going to the file `log`, and waits for its end. After
/// `patience` it is ended by force. `withOtherMemory` fills fresh memory with other
/// bytes than usual, for a program that takes them for something.
Ending runAgain(const std::vector<std::string> &arguments, const std::filesystem::path &home,
                const std::filesystem::path &log, std::chrono::seconds patience,
                bool withOtherMemory);

} // namespace conformance
