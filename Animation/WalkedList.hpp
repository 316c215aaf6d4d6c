#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace animation
{

/// The number of entries in lists, as far as it can count: past its end it stays
/// there. Elements of a `WalkedList` have one as their member `_entries`.
class EntryCount
{
public:
    void add()
    {
        if (count_ < uncounted)
            ++count_;
    }
    void remove()
    {
        if (count_ < uncounted)
            --count_;
    }
    bool isOne() const { return count_ == 1; }

private:
    static constexpr std::uint16_t uncounted = std::numeric_limits<std::uint16_t>::max();

    std::uint16_t count_ = 0;
};

/// An ordered list of shared objects, each of which may stand in it several times,
/// that may change while it is walked. A walk visits what the list held when it
/// began, as if it had taken a copy. It takes one only when it has to: a removed
/// element leaves a gap that is closed at the walk's end, so that any number of
/// removals costs linear time. One thread.
template <typename Element>
class WalkedList
{
public:
    using Pointer = std::shared_ptr<Element>;

    WalkedList() = default;
    ~WalkedList() { clear(); }
    WalkedList(const WalkedList &) = delete;
    WalkedList &operator=(const WalkedList &) = delete;

    void append(Pointer element)
    {
        slots_.push_back(std::move(element));
        slots_.back()->_entries.add();
    }

    /// The number of elements.
    std::size_t count() const { return slots_.size() - gaps_; }

    std::vector<Pointer> items() const
    {
        std::vector<Pointer> items;
        items.reserve(count());
        std::copy_if(slots_.begin(), slots_.end(), std::back_inserter(items),
                     [](const Pointer &slot) { return slot != nullptr; });
        return items;
    }

    /// Removes all elements; a walk goes on over those that it was to visit.
    void clear()
    {
        detachWalk();
        // What an element's end sets off finds the list empty.
        const std::vector<Pointer> removed = std::exchange(slots_, {});
        for (const Pointer &element : removed)
            element->_entries.remove();
    }

    /// Removes the first entry that is `element` and answers it, or none. Within a
    /// walk it has to be the element that is visited.
    Pointer removeFirst(const Element &element)
    {
        const auto known = static_cast<std::ptrdiff_t>(walk_ ? walk_->firstSlotOf(element) : 0);
        const auto slot =
            std::find_if(slots_.begin() + known, slots_.end(),
                         [&](const Pointer &candidate) { return candidate.get() == &element; });
        if (slot == slots_.end())
            return nullptr;
        Pointer removed = std::move(*slot);
        removed->_entries.remove();
        if (walk_)
            ++gaps_;
        else
            slots_.erase(slot);
        return removed;
    }

    /// Calls `visit(Element &)` for each element that the list holds now, in order,
    /// whatever `visit` does to the list, another walk included. The list has to
    /// outlive the walk.
    template <typename Visitor>
    void walk(Visitor visit)
    {
        Walk walk(*this);
        while (Element *element = walk.next())
            visit(*element);
    }

private:
    class Walk
    {
    public:
        explicit Walk(WalkedList &list) : list_(&list)
        {
            list.detachWalk();
            list.walk_ = this;
            end_ = list.slots_.size();
        }
        ~Walk()
        {
            if (list_)
                leaveList();
        }
        Walk(const Walk &) = delete;
        Walk &operator=(const Walk &) = delete;

        /// The first slot that had the element that is visited when a repeated one
        /// was asked for first: no earlier one has it now. Only in the list itself.
        std::size_t firstSlotOf(const Element &element)
        {
            const std::size_t visited = next_ - 1;
            // A walk's gaps are no later than what it visits. So many of them leave
            // nothing else in front of it.
            if (element._entries.isOne() || list_->gaps_ == visited)
                return visited;
            if (firstOfRepeated_.empty())
                findRepeated();
            const auto first = firstOfRepeated_.find(&element);
            return first == firstOfRepeated_.end() ? visited : first->second;
        }

        Element *next()
        {
            const std::vector<Pointer> &slots = list_ ? list_->slots_ : rest_;
            while (next_ < end_) {
                const std::size_t slot = next_++;
                if (Element *const element = slots[slot].get())
                    return element;
            }
            return nullptr;
        }

        /// Goes on with a copy of what is still to be visited, since the list is
        /// about to change in earnest.
        void detach()
        {
            // The element that is being visited has to outlive its visit.
            const std::size_t first = next_ > 0 ? next_ - 1 : 0;
            rest_.assign(list_->slots_.begin() + static_cast<std::ptrdiff_t>(first),
                         list_->slots_.begin() + static_cast<std::ptrdiff_t>(end_));
            next_ -= first;
            end_ = rest_.size();
            leaveList();
        }

    private:
        void findRepeated()
        {
            for (std::size_t slot = 0; slot < end_; ++slot) {
                const Element *const element = list_->slots_[slot].get();
                if (element && !element->_entries.isOne())
                    firstOfRepeated_.try_emplace(element, slot);
            }
        }

        void leaveList()
        {
            if (std::exchange(list_->gaps_, 0) > 0)
                std::erase(list_->slots_, nullptr);
            list_->walk_ = nullptr;
            list_ = nullptr;
        }

        WalkedList *list_;
        std::vector<Pointer> rest_;
        std::size_t next_ = 0;
        std::size_t end_ = 0;
        std::unordered_map<const Element *, std::size_t> firstOfRepeated_;
    };

    void detachWalk()
    {
        if (walk_)
            walk_->detach();
    }

    std::vector<Pointer> slots_;
    std::size_t gaps_ = 0;
    /// The walk under way in these slots, if any.
    Walk *walk_ = nullptr;
};

} // namespace animation
