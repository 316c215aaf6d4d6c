// Opens one file and tells its length, or why it cannot be opened.

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <cstdio>

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2)
        return 2;
    try {
        const AVAudioFile file(URL::fileURLWithPath(arguments[1]));
        std::printf("%lld\n", static_cast<long long>(file.length()));
    } catch (const PlatformError &error) {
        std::printf("%s\n", error.what());
        return 1;
    }
    return 0;
}
