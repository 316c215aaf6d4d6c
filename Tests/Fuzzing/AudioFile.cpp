// An audio file of anybody's: it opens or is refused, gives no more frames than it has,
// and takes neither memory nor time without bound (the fuzzer's limits see to those).

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Fuzzing/InputFile.hpp"
#include "Tests/Fuzzing/Require.hpp"

#include <algorithm>
#include <cmath>

namespace
{

using fuzzing::require;

constexpr std::uint32_t step = 4096;
// Enough for every path; a file of silence may be long.
constexpr std::int64_t mostFrames = 100'000;

void read(AVAudioFile &file)
{
    AVAudioPCMBuffer buffer(*file.processingFormat(), step);
    std::int64_t frames = 0;
    do {
        const std::int64_t before = file.framePosition();
        file.read(buffer, step);
        frames += buffer.frameLength();
        require(file.framePosition() == before + buffer.frameLength());
        require(file.framePosition() <= file.length());
    } while (buffer.frameLength() > 0 && frames < mostFrames);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const fuzzing::InputFile input;
    input.hold(data, size);
    try {
        AVAudioFile file(URL::fileURLWithPath(input.path()));
        require(file.length() >= 0);
        require(file.processingFormat()->channelCount() > 0);
        require(file.processingFormat()->sampleRate() > 0.0);
        read(file);
        file.setFramePosition(file.length() / 2);
        read(file);
        file.setFramePosition(0);
        read(file);
    } catch (const PlatformError &error) {
        require(*error.what() != '\0');
    }
    return 0;
}
