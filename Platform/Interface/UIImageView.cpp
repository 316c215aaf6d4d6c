#include "Platform/Interface/UIImageView.hpp"

#include "Platform/Interface/Widget.hpp"

#include <gdkmm/texture.h>
#include <gtkmm/box.h>
#include <gtkmm/picture.h>

#include <utility>

using platform::interface::Widget;

UIImageView::UIImageView(std::shared_ptr<UIImage> image)
    : UIImageView(std::make_unique<Widget>(*Gtk::make_managed<Gtk::Box>()))
{
    setImage(std::move(image));
}

UIImageView::UIImageView(std::unique_ptr<Widget> box)
    : UIView(Box{std::move(box)}), picture_(Gtk::make_managed<Gtk::Picture>())
{
    setContent(std::make_unique<Widget>(*picture_));
}

void UIImageView::setImage(std::shared_ptr<UIImage> image)
{
    image_ = std::move(image);
    picture_->set_paintable(image_ ? image_->texture() : nullptr);
}
