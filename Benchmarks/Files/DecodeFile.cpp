// Decodes one file from end to end, to be timed as a whole process beside other
// decoders: decode-file FILE

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <cstdio>

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2) {
        std::fputs("usage: decode-file FILE\n", stderr);
        return 2;
    }
    try {
        AVAudioFile file(URL::fileURLWithPath(arguments[1]));
        constexpr std::uint32_t framesAtOnce = 4'096;
        AVAudioPCMBuffer buffer(*file.processingFormat(), framesAtOnce);
        std::int64_t frames = 0;
        do {
            file.read(buffer, framesAtOnce);
            frames += buffer.frameLength();
        } while (buffer.frameLength() > 0);
        std::printf("%s: %lld of %lld frames\n", file.processingFormat()->description().c_str(),
                    static_cast<long long>(frames), static_cast<long long>(file.length()));
    } catch (const PlatformError &error) {
        std::fprintf(stderr, "decode-file: %s\n", error.what());
        return 1;
    }
    return 0;
}
