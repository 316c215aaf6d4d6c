#pragma once

#include <cstdint>
#include <string>

/// Learns what an engine player does.
class AUEnginePlayerDelegate
{
public:
    virtual ~AUEnginePlayerDelegate() = default;

    /// Playback started or stopped. Main queue.
    virtual void onPlayerStateChanged(bool playing) = 0;

    /// A file was loaded; `file` is its path. On the thread that loaded it.
    virtual void onFileSelect(const std::string &file) = 0;

    /// The file came to its end and was scheduled again. `count` is how often
    /// that happened before, 0 at the first time. Main queue.
    virtual void onLoop(std::int64_t count) = 0;
};
