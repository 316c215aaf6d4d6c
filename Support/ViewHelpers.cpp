#include "Support/ViewHelpers.hpp"

#include "Platform/Interface/NSLayoutConstraint.hpp"

void pinToSuperviewEdges(UIView &view)
{
    const auto superview = view.superview();
    if (!superview)
        return;
    view.translatesAutoresizingMaskIntoConstraints = false;
    NSLayoutConstraint::activate(
        {view.topAnchor().constraintEqualTo(superview->topAnchor()),
         view.leadingAnchor().constraintEqualTo(superview->leadingAnchor()),
         view.bottomAnchor().constraintEqualTo(superview->bottomAnchor()),
         view.trailingAnchor().constraintEqualTo(superview->trailingAnchor())});
}
