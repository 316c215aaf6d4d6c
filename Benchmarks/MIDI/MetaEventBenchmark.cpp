// Making and freeing a meta event of a mebibyte.

#include "MIDI/MIDIConstants.hpp"
#include "MIDI/MyMetaEvent.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

const std::vector<std::uint8_t> data(1 << 20, 0x2A);

void myMetaEvent(benchmark::State &state)
{
    for (auto _ : state) {
        const MyMetaEvent event(META_SPECIFIC, data);
        event.withMIDIMetaEventPtr(
            [](const MIDIMetaEvent *record) { benchmark::DoNotOptimize(record); });
        benchmark::ClobberMemory();
    }
}
BENCHMARK(myMetaEvent)->Unit(benchmark::kMicrosecond);

/// The peer: cleared memory, and the data copied into it.
void callocAndMemcpy(benchmark::State &state)
{
    for (auto _ : state) {
        auto *const block = static_cast<char *>(std::calloc(data.size() + 12, 1));
        if (block == nullptr)
            std::abort();
        std::memcpy(block + 8, data.data(), data.size());
        benchmark::DoNotOptimize(block);
        benchmark::ClobberMemory();
        std::free(block);
    }
}
BENCHMARK(callocAndMemcpy)->Unit(benchmark::kMicrosecond);

} // namespace
