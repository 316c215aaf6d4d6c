#include "Platform/Interface/NSLayoutConstraint.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/UIView.hpp"

#include <algorithm>

NSLayoutConstraint::NSLayoutConstraint(const std::shared_ptr<UIView> &firstItem,
                                       NSLayoutAttribute firstAttribute,
                                       const std::shared_ptr<UIView> &secondItem,
                                       NSLayoutAttribute secondAttribute)
    : firstItem_(firstItem), secondItem_(secondItem), firstAttribute_(firstAttribute),
      secondAttribute_(secondAttribute)
{
}

void NSLayoutConstraint::activate(
    const std::vector<std::shared_ptr<NSLayoutConstraint>> &constraints)
{
    for (const auto &constraint : constraints) {
        const auto holder = constraint->commonView();
        if (!holder)
            fatalError("A constraint needs a view and its superview, or two siblings.");
        if (!constraint->isActive())
            holder->constraints_.push_back(constraint);
    }
    for (const auto &constraint : constraints) {
        const auto holder = constraint->commonView();
        holder->solveConstraints();
        holder->queueLayout();
    }
}

void NSLayoutConstraint::deactivate(
    const std::vector<std::shared_ptr<NSLayoutConstraint>> &constraints)
{
    for (const auto &constraint : constraints) {
        if (const auto holder = constraint->commonView())
            std::erase(holder->constraints_, constraint);
    }
}

bool NSLayoutConstraint::isActive() const
{
    const auto holder = commonView();
    return holder && std::any_of(holder->constraints_.begin(), holder->constraints_.end(),
                                 [this](const auto &held) { return held.get() == this; });
}

std::shared_ptr<UIView> NSLayoutConstraint::commonView() const
{
    auto first = firstItem();
    auto second = secondItem();
    if (!first || !second || first == second)
        return nullptr;
    if (first->superview() == second)
        return second;
    if (second->superview() == first)
        return first;
    return first->superview() == second->superview() ? first->superview() : nullptr;
}
