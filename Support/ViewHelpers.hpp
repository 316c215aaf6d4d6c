#pragma once

#include "Platform/Interface/CGGeometry.hpp"
#include "Platform/Interface/UIColor.hpp"
#include "Platform/Interface/UIImageView.hpp"
#include "Platform/Interface/UIView.hpp"

#include <optional>
#include <string>

/// Text that no other call answers, behind `prefix` and a hyphen where there is a
/// prefix, be it empty. Any thread.
std::string uniqueName(const std::optional<std::string> &prefix = std::nullopt);

/// Ties the view's edges to those of its superview: top, leading, bottom, trailing.
/// Without a superview it does nothing. Main thread.
void pinToSuperviewEdges(UIView &view);

/// Shows the picture that is at an address, a file or one of the web. It is read on
/// the main queue, which waits for it; what goes wrong is printed, and the view stays
/// as it is. Main thread.
void loadFrom(UIImageView &view, const std::string &urlAddress);

/// The same without anybody waiting. The view lives until the end of it. Of an answer
/// with the status 200 it shows the picture, or none where there is no picture in it;
/// other answers change nothing, and an error is printed. Main thread.
void getImageFromURLString(UIImageView &view, const std::string &imageURLString);

/// A colour's components, from 0 to 1.
CGFloat redValue(const UIColor &color);
CGFloat greenValue(const UIColor &color);
CGFloat blueValue(const UIColor &color);
CGFloat alphaValue(const UIColor &color);
