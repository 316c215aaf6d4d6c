#include "Platform/Interface/UIImage.hpp"

#include <gdkmm/texture.h>
#include <glibmm/bytes.h>
#include <glibmm/error.h>

#include <utility>

std::shared_ptr<UIImage> UIImage::create(const Data &data)
{
    try {
        const auto bytes = Glib::Bytes::create(data.bytes().data(), data.bytes().size());
        return std::make_shared<UIImage>(Gdk::Texture::create_from_bytes(bytes));
    } catch (const Glib::Error &) {
        return nullptr;
    }
}

UIImage::UIImage(std::shared_ptr<Gdk::Texture> texture) : texture_(std::move(texture)) {}

CGSize UIImage::size() const
{
    return {static_cast<CGFloat>(texture_->get_width()),
            static_cast<CGFloat>(texture_->get_height())};
}
