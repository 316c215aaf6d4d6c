#pragma once

#include "Platform/Foundation/Data.hpp"
#include "Platform/Interface/CGGeometry.hpp"

#include <memory>

namespace Gdk // NOLINT(readability-identifier-naming): the library's
{
class Texture;
}

/// A picture in memory, unchangeable. Any thread.
class UIImage
{
public:
    /// The picture that `data` holds in PNG, JPEG, TIFF or another format that the
    /// desktop reads; null when it holds none.
    static std::shared_ptr<UIImage> create(const Data &data);

    /// The picture of a texture, which is never null.
    explicit UIImage(std::shared_ptr<Gdk::Texture> texture);

    /// In points, of which each is a pixel.
    CGSize size() const;

    /// For the platform's own use.
    const std::shared_ptr<Gdk::Texture> &texture() const { return texture_; }

private:
    std::shared_ptr<Gdk::Texture> texture_;
};
