#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace platform::audio
{

class FileInput;

/// Which part of a track's decoded sound is the sound that was encoded. In units
/// of 1 / `timescale` seconds from the first decoded frame.
struct MP4Timing {
    std::int64_t start = 0;
    std::int64_t duration = 0;
    std::int64_t timescale = 1;
};

/// The boxes of an MP4 or QuickTime file (ISO/IEC 14496-12) that tell times.
///
/// Read here because FFmpeg honours an edit list's start but not its end, and
/// drops what an edit of less than one movie tick holds. Reading them first also
/// keeps tables from FFmpeg that claim more samples than the file has bytes, for
/// which it would allocate gigabytes.
class MP4Layout
{
public:
    /// Walks the boxes, in time bounded by the file's size. A file that claims
    /// the impossible is a `PlatformError`.
    explicit MP4Layout(const FileInput &input);

    /// None where the boxes do not say it: fragments, several edits, no such track.
    std::optional<MP4Timing> timing(std::uint32_t trackId) const;

private:
    struct Edit {
        std::int64_t duration = 0;
        std::int64_t start = 0;
    };
    struct Track {
        std::int64_t timescale = 0;
        std::int64_t duration = 0;
        std::vector<Edit> edits;
        std::uint32_t id = 0;
    };
    /// What iTunes writes beside, or instead of, an edit list.
    struct GaplessInfo {
        std::int64_t priming = 0;
        std::int64_t frames = 0;
    };
    struct Box {
        std::uint32_t type = 0;
        std::int64_t begin = 0;
        std::int64_t end = 0;
    };

    void walk(std::int64_t begin, std::int64_t end, int depth);
    void readBox(const Box &box, int depth);
    void readMovieHeader(const Box &box);
    void readTrackHeader(const Box &box);
    void readMediaHeader(const Box &box);
    void readEdits(const Box &box);
    void readTimes(const Box &box);
    void readSizes(const Box &box);
    void readRun(const Box &box);
    void readFreeForm(const Box &box);
    std::optional<MP4Timing> gaplessTiming(const Track &track) const;
    void claimSamples(std::int64_t count);
    std::uint64_t number(std::int64_t offset, int bytes) const;

    const FileInput &input_;
    std::int64_t fileSize_;
    std::int64_t movieTimescale_ = 0;
    std::int64_t claimedSamples_ = 0;
    bool fragmented_ = false;
    int movies_ = 0;
    int boxes_ = 0;
    std::vector<Track> tracks_;
    std::optional<GaplessInfo> gapless_;
};

} // namespace platform::audio
