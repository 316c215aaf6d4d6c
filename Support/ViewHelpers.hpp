#pragma once

#include "Platform/Interface/UIView.hpp"

/// Ties the view's edges to those of its superview: top, leading, bottom, trailing.
/// Without a superview it does nothing. Main thread.
void pinToSuperviewEdges(UIView &view);
