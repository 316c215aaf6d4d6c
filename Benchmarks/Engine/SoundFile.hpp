#pragma once

#include <string>

/// A stereo AAC file at 48 kHz that is never silent, removed with the object.
class SoundFile
{
public:
    explicit SoundFile(int seconds);
    ~SoundFile();
    SoundFile(const SoundFile &) = delete;
    SoundFile &operator=(const SoundFile &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string path_;
};
