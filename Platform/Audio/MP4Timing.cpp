#include "Platform/Audio/MP4Timing.hpp"

#include "Platform/Audio/FileInput.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace platform::audio
{
namespace
{

constexpr std::uint32_t code(std::string_view text)
{
    std::uint32_t value = 0;
    for (const char character : text)
        value = value << 8 | static_cast<std::uint8_t>(character);
    return value;
}

constexpr int deepestBox = 10;
constexpr std::size_t mostTracks = 256;
constexpr std::int64_t mostEdits = 64;
constexpr int mostBoxes = 1'000'000;

/// Boxes whose content is boxes, as far as FFmpeg looks for tables in them.
constexpr std::array containers = {code("moov"), code("trak"), code("mdia"), code("minf"),
                                   code("stbl"), code("edts"), code("moof"), code("traf"),
                                   code("dinf"), code("udta"), code("wave"), code("mvex"),
                                   code("ilst")};

std::uint64_t bigEndian(const std::uint8_t *bytes, int count)
{
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

[[noreturn]] void throwDamaged()
{
    throw PlatformError("The file is damaged: its tables claim more than it can hold");
}

} // namespace

MP4Layout::MP4Layout(const FileInput &input) : input_(input), fileSize_(input.size())
{
    walk(0, fileSize_, 0);
}

std::optional<MP4Timing> MP4Layout::timing(std::uint32_t trackId) const
{
    const auto hasId = [trackId](const Track &track) { return track.id == trackId; };
    const auto found = std::find_if(tracks_.begin(), tracks_.end(), hasId);
    if (found == tracks_.end() || std::count_if(tracks_.begin(), tracks_.end(), hasId) != 1)
        return std::nullopt;

    const Track &track = *found;
    if (fragmented_ || movies_ != 1 || track.timescale < 1 || track.edits.size() > 1)
        return std::nullopt;
    if (const auto gapless = gaplessTiming(track))
        return gapless;
    if (track.edits.empty())
        return MP4Timing{0, track.duration, track.timescale};

    const Edit &edit = track.edits.front();
    if (edit.duration < 0 || edit.start < 0 || edit.start > track.duration || movieTimescale_ < 1)
        return std::nullopt;
    const std::int64_t rest = track.duration - edit.start;

    // An edit is measured in the movie's ticks, often of a millisecond. When the
    // rest of the media is the same to the tick, the media's own count is meant;
    // a duration of 0 means all of the rest.
    const long double ticks = static_cast<long double>(rest) *
                              static_cast<long double>(movieTimescale_) /
                              static_cast<long double>(track.timescale);
    if (edit.duration == 0 || static_cast<long double>(edit.duration) > ticks - 1.0L)
        return MP4Timing{edit.start, rest, track.timescale};
    const long double exact = static_cast<long double>(edit.duration) *
                              static_cast<long double>(track.timescale) /
                              static_cast<long double>(movieTimescale_);
    return MP4Timing{edit.start, static_cast<std::int64_t>(exact + 0.5L), track.timescale};
}

/// The gapless information where the track's tables bear it out.
std::optional<MP4Timing> MP4Layout::gaplessTiming(const Track &track) const
{
    if (!gapless_ || gapless_->frames < 1)
        return std::nullopt;
    const bool fits = gapless_->priming <= track.duration &&
                      gapless_->frames <= track.duration - gapless_->priming;
    const bool agrees = track.edits.empty() || track.edits.front().start == gapless_->priming;
    if (!fits || !agrees)
        return std::nullopt;
    return MP4Timing{gapless_->priming, gapless_->frames, track.timescale};
}

void MP4Layout::walk(std::int64_t begin, std::int64_t end, int depth)
{
    if (depth > deepestBox)
        throwDamaged();
    while (end - begin >= 8) {
        if (++boxes_ > mostBoxes)
            throwDamaged();
        std::int64_t header = 8;
        auto size = static_cast<std::int64_t>(number(begin, 4));
        const auto type = static_cast<std::uint32_t>(number(begin + 4, 4));
        if (size == 1) {
            header = 16;
            const std::uint64_t large = number(begin + 8, 8);
            size = large > static_cast<std::uint64_t>(end) ? end : static_cast<std::int64_t>(large);
        } else if (size == 0) {
            size = end - begin;
        }
        if (size < header)
            return;
        const std::int64_t boxEnd = size > end - begin ? end : begin + size;
        readBox({type, begin + header, boxEnd}, depth);
        begin = boxEnd;
    }
}

void MP4Layout::readBox(const Box &box, int depth)
{
    switch (box.type) {
    case code("moov"):
        ++movies_;
        break;
    case code("moof"):
        fragmented_ = true;
        break;
    case code("trak"):
        if (tracks_.size() >= mostTracks)
            throwDamaged();
        tracks_.emplace_back();
        break;
    case code("cmov"):
        throw PlatformError("Files with a compressed header are not supported");
    case code("mvhd"):
        return readMovieHeader(box);
    case code("tkhd"):
        return readTrackHeader(box);
    case code("mdhd"):
        return readMediaHeader(box);
    case code("elst"):
        return readEdits(box);
    case code("stts"):
        return readTimes(box);
    case code("stsz"):
    case code("stz2"):
        return readSizes(box);
    case code("trun"):
        return readRun(box);
    case code("----"):
        return readFreeForm(box);
    case code("meta"):
        // QuickTime has boxes at once, ISO has a version before them.
        return walk(box.begin + (number(box.begin, 4) == 0 ? 4 : 0), box.end, depth + 1);
    default:
        break;
    }
    if (std::find(containers.begin(), containers.end(), box.type) != containers.end()) {
        walk(box.begin, box.end, depth + 1);
    }
}

void MP4Layout::readMovieHeader(const Box &box)
{
    const bool isLong = number(box.begin, 1) == 1;
    movieTimescale_ = static_cast<std::int64_t>(number(box.begin + (isLong ? 20 : 12), 4));
}

void MP4Layout::readTrackHeader(const Box &box)
{
    if (tracks_.empty())
        return;
    const bool isLong = number(box.begin, 1) == 1;
    tracks_.back().id = static_cast<std::uint32_t>(number(box.begin + (isLong ? 20 : 12), 4));
}

void MP4Layout::readMediaHeader(const Box &box)
{
    if (tracks_.empty())
        return;
    const bool isLong = number(box.begin, 1) == 1;
    tracks_.back().timescale = static_cast<std::int64_t>(number(box.begin + (isLong ? 20 : 12), 4));
}

void MP4Layout::readEdits(const Box &box)
{
    if (tracks_.empty())
        return;
    const bool isLong = number(box.begin, 1) == 1;
    const std::int64_t rowSize = isLong ? 20 : 12;
    const auto claimed = static_cast<std::int64_t>(number(box.begin + 4, 4));
    const std::int64_t rows = std::min({claimed, (box.end - box.begin - 8) / rowSize, mostEdits});
    for (std::int64_t row = 0; row < rows; ++row) {
        const std::int64_t place = box.begin + 8 + row * rowSize;
        Edit edit;
        if (isLong) {
            edit.duration = static_cast<std::int64_t>(number(place, 8));
            edit.start = static_cast<std::int64_t>(number(place + 8, 8));
        } else {
            edit.duration = static_cast<std::int64_t>(number(place, 4));
            edit.start = static_cast<std::int32_t>(number(place + 4, 4));
        }
        // An edit without media delays the track against others: nothing to hear.
        if (edit.start != -1)
            tracks_.back().edits.push_back(edit);
    }
}

void MP4Layout::readTimes(const Box &box)
{
    if (tracks_.empty())
        return;
    constexpr std::int64_t rowSize = 8;
    constexpr std::int64_t rowsAtOnce = 512;
    std::array<std::uint8_t, rowSize *rowsAtOnce> bytes = {};

    std::int64_t duration = 0;
    const auto claimed = static_cast<std::int64_t>(number(box.begin + 4, 4));
    std::int64_t rows = std::min(claimed, (box.end - box.begin - 8) / rowSize);
    for (std::int64_t place = box.begin + 8; rows > 0; place += rowSize * rowsAtOnce) {
        const std::int64_t count = std::min(rows, rowsAtOnce);
        const std::size_t size = static_cast<std::size_t>(count * rowSize);
        if (input_.readAt(place, std::span(bytes).first(size)) != size)
            return;
        for (std::int64_t row = 0; row < count; ++row) {
            const std::uint8_t *at = bytes.data() + row * rowSize;
            const std::uint64_t time = bigEndian(at, 4) * bigEndian(at + 4, 4);
            if (time >
                static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - duration))
                throwDamaged();
            duration += static_cast<std::int64_t>(time);
        }
        rows -= count;
    }
    tracks_.back().duration = duration;
}

void MP4Layout::readSizes(const Box &box)
{
    claimSamples(static_cast<std::int64_t>(number(box.begin + 8, 4)));
}

void MP4Layout::readRun(const Box &box)
{
    claimSamples(static_cast<std::int64_t>(number(box.begin + 4, 4)));
}

/// Takes the priming and the count out of iTunSMPB, whose text is a row of
/// hexadecimal numbers: zero, priming, padding, frames, and more zeros.
void MP4Layout::readFreeForm(const Box &box)
{
    std::array<char, 512> bytes = {};
    const std::size_t size =
        std::min(bytes.size() - 1, static_cast<std::size_t>(box.end - box.begin));
    const std::size_t count =
        input_.readAt(box.begin, {reinterpret_cast<std::uint8_t *>(bytes.data()), size});
    const std::string_view text(bytes.data(), count);
    const std::size_t name = text.find("iTunSMPB");
    const std::size_t data = text.find("data", name == text.npos ? count : name);
    constexpr std::size_t typeAndLocale = 8;
    if (data == text.npos || data + 4 + typeAndLocale >= count)
        return;

    const char *place = bytes.data() + data + 4 + typeAndLocale;
    std::array<std::uint64_t, 4> numbers = {};
    for (std::uint64_t &value : numbers) {
        char *end = nullptr;
        value = std::strtoull(place, &end, 16);
        if (end == place)
            return;
        place = end;
    }
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    if (numbers[1] <= most && numbers[3] <= most)
        gapless_ = {static_cast<std::int64_t>(numbers[1]), static_cast<std::int64_t>(numbers[3])};
}

void MP4Layout::claimSamples(std::int64_t count)
{
    // No sample is smaller than a byte.
    claimedSamples_ += count;
    if (claimedSamples_ > fileSize_)
        throwDamaged();
}

std::uint64_t MP4Layout::number(std::int64_t offset, int bytes) const
{
    std::array<std::uint8_t, 8> buffer = {};
    const auto size = static_cast<std::size_t>(bytes);
    if (input_.readAt(offset, std::span(buffer).first(size)) != size)
        return 0;
    return bigEndian(buffer.data(), bytes);
}

} // namespace platform::audio
