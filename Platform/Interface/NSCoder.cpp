#include "Platform/Interface/NSCoder.hpp"

#include <utility>

NSCoder::NSCoder(std::shared_ptr<platform::interface::Scene> scene) : scene_(std::move(scene)) {}
