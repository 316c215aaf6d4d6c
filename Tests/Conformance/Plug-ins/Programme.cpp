#include "Tests/Conformance/Plug-ins/Programme.hpp"

#include <algorithm>
#include <array>

namespace conformance
{

namespace
{

constexpr std::array otherRates{44100.0, 96000.0};

std::size_t framesIn(double seconds, double sampleRate)
{
    return static_cast<std::size_t>(seconds * sampleRate);
}

/// One run over a signal of its own.
class Run
{
public:
    Run(Performer &performer, Transcript &transcript, const Passage &passage, std::size_t frames)
        : performer_(performer), transcript_(transcript), block_(passage.block), frames_(frames),
          signal_(testSignal(performer.inputs(), frames, passage.sampleRate)),
          notes_(testNotes(frames, passage.sampleRate)),
          output_(performer.outputs(), std::vector<float>(passage.block))
    {
        for (auto &channel : output_)
            pointers_.push_back(channel.data());
        performer_.begin(passage.sampleRate, passage.block, signal_);
        transcript_.begin(passage);
    }

    /// Renders on to `end`, the last block shorter where it has to be.
    void renderTo(std::size_t end)
    {
        while (done_ < end)
            renderBlock(static_cast<std::uint32_t>(std::min<std::size_t>(block_, end - done_)));
    }

    std::size_t frames() const { return frames_; }

private:
    void renderBlock(std::uint32_t frames)
    {
        due_.clear();
        for (; nextNote_ < notes_.size() &&
               notes_[nextNote_].frame < static_cast<std::int64_t>(done_ + frames);
             ++nextNote_) {
            due_.push_back(notes_[nextNote_]);
            due_.back().frame -= static_cast<std::int64_t>(done_);
        }
        performer_.render(pointers_.data(), frames, due_);
        done_ += frames;
        transcript_.add({pointers_.data(), pointers_.size()}, frames);
        transcript_.add(performer_.takeEmitted());
    }

    Performer &performer_;
    Transcript &transcript_;
    std::uint32_t block_;
    std::size_t frames_;
    test::Channels signal_;
    std::vector<Note> notes_;
    test::Channels output_;
    std::vector<float *> pointers_;
    std::vector<Note> due_;
    std::size_t nextNote_ = 0;
    std::size_t done_ = 0;
};

} // namespace

void perform(const MakePerformer &make, std::uint32_t block, double seconds, Transcript &transcript)
{
    const double length = block == 1 ? seconds / 10.0 : seconds;
    const auto performer = make();
    {
        Run run(*performer, transcript, {firstRate, block}, framesIn(length, firstRate));
        run.renderTo(run.frames() / 2);
        // Another one in each length of block.
        if (performer->presetCount() > 0)
            performer->loadPreset(block % performer->presetCount());
        run.renderTo(run.frames());
    }
    for (const double rate : otherRates) {
        Run run(*performer, transcript, {rate, block}, framesIn(length / 10.0, rate));
        run.renderTo(run.frames());
    }
}

} // namespace conformance
