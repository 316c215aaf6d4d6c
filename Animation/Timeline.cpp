#include "Animation/Timeline.hpp"

#include "Animation/Animator.hpp"
#include "Platform/Foundation/CheckedArithmetic.hpp"

#include <algorithm>
#include <utility>

namespace animation
{

Timeline::~Timeline()
{
    clear();
}

void Timeline::place(const std::shared_ptr<Animator> &animator, std::int64_t startFrame)
{
    Placement &placement = animator->extras().placement;
    if (placement.entries > 0 && placement.startFrame != startFrame) {
        ++startChanges;
        ++endChanges;
    }
    placement.startFrame = startFrame;
    if (!isInOrder())
        takeStartFrames();

    entries_.push_back({animator, startFrame});
    const bool isLast = sorted_ == 0 || !isEarlier(entries_.back(), entries_[sorted_ - 1]);
    if (sorted_ + 1 == entries_.size() && isLast)
        ++sorted_;

    if (placement.entries++ == 0)
        placement.timeline = this;
    else if (placement.timeline != this)
        placement.onSeveral = true;
    noteFrames(*animator);
}

bool Timeline::remove(const Animator &animator)
{
    sort();
    const auto entry = std::find_if(entries_.begin(), entries_.end(), [&](const Entry &candidate) {
        return candidate.animator.get() == &animator;
    });
    if (entry == entries_.end())
        return false;
    const std::shared_ptr<Animator> removed = std::move(entry->animator);
    entries_.erase(entry);
    sorted_ = entries_.size();
    const bool isLeft = std::any_of(entries_.begin(), entries_.end(),
                                    [&](const Entry &left) { return left.animator == removed; });
    if (!isLeft && std::erase(changed_, removed.get()) > 0)
        removed->_extras->placement.noted = false;
    release(*removed);
    return true;
}

void Timeline::clear()
{
    forgetChanges();
    // What an animator's end sets off finds the timeline empty.
    const std::vector<Entry> removed = std::exchange(entries_, {});
    sorted_ = 0;
    for (const Entry &entry : removed)
        release(*entry.animator);
}

const std::shared_ptr<Animator> &Timeline::at(std::size_t position)
{
    sort();
    return entries_[position].animator;
}

std::vector<std::shared_ptr<Animator>> Timeline::items()
{
    sort();
    std::vector<std::shared_ptr<Animator>> items;
    items.reserve(entries_.size());
    for (const Entry &entry : entries_)
        items.push_back(entry.animator);
    return items;
}

std::int64_t Timeline::latestEnd(std::int64_t known)
{
    const auto look = [&known](const Animator &animator) {
        known =
            std::max(known, checkedAdd(animator._extras->placement.startFrame, animator._frames));
    };
    if (lookedAt_ == endChanges) {
        for (const Animator *const animator : changed_)
            look(*animator);
    } else {
        for (const Entry &entry : entries_)
            look(*entry.animator);
        lookedAt_ = endChanges;
    }
    forgetChanges();
    return known;
}

void Timeline::noteFrames(Animator &animator)
{
    Placement &placement = animator._extras->placement;
    if (placement.onSeveral) {
        ++endChanges;
    } else if (!placement.noted) {
        placement.noted = true;
        placement.timeline->changed_.push_back(&animator);
    }
}

bool Timeline::isEarlier(const Entry &left, const Entry &right)
{
    return left.startFrame < right.startFrame;
}

/// Notes that `animator` has an entry less.
void Timeline::release(Animator &animator)
{
    Placement &placement = animator._extras->placement;
    if (--placement.entries == 0)
        placement = {.startFrame = placement.startFrame};
}

/// Another entry of an animator of ours may have changed its start frame.
void Timeline::takeStartFrames()
{
    for (Entry &entry : entries_)
        entry.startFrame = entry.animator->_extras->placement.startFrame;
    sorted_ = 0;
    sortedAt_ = startChanges;
}

void Timeline::sort()
{
    if (sorted_ == entries_.size())
        return;
    const auto middle = entries_.begin() + static_cast<std::ptrdiff_t>(sorted_);
    std::stable_sort(middle, entries_.end(), isEarlier);
    std::inplace_merge(entries_.begin(), middle, entries_.end(), isEarlier);
    sorted_ = entries_.size();
}

void Timeline::forgetChanges()
{
    for (Animator *const animator : changed_)
        animator->_extras->placement.noted = false;
    changed_.clear();
}

} // namespace animation
