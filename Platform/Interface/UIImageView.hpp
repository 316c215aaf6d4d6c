#pragma once

#include "Platform/Interface/UIImage.hpp"
#include "Platform/Interface/UIView.hpp"

#include <memory>

namespace Gtk // NOLINT(readability-identifier-naming): the library's
{
class Picture;
}

/// Shows a picture, as large as its frame allows without distortion. Main thread.
class UIImageView : public UIView
{
public:
    /// A view with `image`; null shows nothing.
    explicit UIImageView(std::shared_ptr<UIImage> image = nullptr);
    /// A view in an empty box of a storyboard.
    explicit UIImageView(std::unique_ptr<platform::interface::Widget> box);

    /// What is shown; null for nothing.
    const std::shared_ptr<UIImage> &image() const { return image_; }
    /// Shows another picture; null for nothing.
    void setImage(std::shared_ptr<UIImage> image);

private:
    std::shared_ptr<UIImage> image_;
    /// The view's content, which lives as long.
    Gtk::Picture *picture_;
};
