#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class Animator;

namespace animation
{

class Timeline;

/// Where an animator stands on timelines.
struct Placement {
    /// It begins there.
    std::int64_t startFrame = 0;
    /// The timeline that has all entries, unless there are several of them.
    Timeline *timeline = nullptr;
    std::int32_t entries = 0;
    bool onSeveral = false;
    /// Waits there for `latestEnd`.
    bool noted = false;
};

/// Animators in ascending order of their start frames. It behaves as if it sorted
/// itself and looked at every animator whenever one is placed; in truth it sorts
/// when the order is asked for, and looks at those that have changed: placing n
/// animators costs n log n. The start frame is a property of the animator, so one
/// that stands on several timelines, or twice on one, can bring those out of order
/// until they are sorted again; only then is every animator looked at. One thread.
class Timeline
{
public:
    Timeline() = default;
    ~Timeline();
    Timeline(const Timeline &) = delete;
    Timeline &operator=(const Timeline &) = delete;

    /// Gives `animator` its start frame, adds an entry and sorts.
    void place(const std::shared_ptr<Animator> &animator, std::int64_t startFrame);

    /// Removes the first entry that is `animator`; false if there is none.
    bool remove(const Animator &animator);

    void clear();

    std::size_t count() const { return entries_.size(); }

    /// The animator at a position below `count()`.
    const std::shared_ptr<Animator> &at(std::size_t position);

    /// All animators, in order.
    std::vector<std::shared_ptr<Animator>> items();

    /// Whether the start frames, as they are now, ascend.
    bool isInOrder() const { return sortedAt_ == startChanges; }

    /// The greatest of `known`, the answer to the last such question, and the ends
    /// (start frame and number of steps) of all animators. An end that overflows is
    /// a fatal error.
    std::int64_t latestEnd(std::int64_t known);

    /// Has to be called when an animator with entries has been set up anew.
    static void noteFrames(Animator &animator);

private:
    struct Entry {
        std::shared_ptr<Animator> animator;
        /// As it was when this timeline was sorted, were it sorted at once.
        std::int64_t startFrame;
    };

    static bool isEarlier(const Entry &left, const Entry &right);
    static void release(Animator &animator);

    void takeStartFrames();
    void sort();
    void forgetChanges();

    /// Counts the new start frames of animators that had entries.
    inline static std::uint64_t startChanges = 0;
    /// Counts the new ends of animators whose timeline is not known.
    inline static std::uint64_t endChanges = 0;

    std::vector<Entry> entries_;
    /// So many entries from the beginning are sorted.
    std::size_t sorted_ = 0;
    std::uint64_t sortedAt_ = startChanges;
    /// Animators whose end may have changed since the last `latestEnd`.
    std::vector<Animator *> changed_;
    std::uint64_t lookedAt_ = endChanges;
};

} // namespace animation
