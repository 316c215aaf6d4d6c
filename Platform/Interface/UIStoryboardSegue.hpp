#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

class UIViewController;

/// The way from one screen of a storyboard to the next, on which its new screen is
/// made. Main thread.
class UIStoryboardSegue
{
public:
    /// A way that has not been gone yet.
    UIStoryboardSegue(std::optional<std::string> identifier,
                      std::shared_ptr<UIViewController> source,
                      std::shared_ptr<UIViewController> destination)
        : identifier_(std::move(identifier)), source_(std::move(source)),
          destination_(std::move(destination))
    {
    }

    /// Its name in the storyboard.
    const std::optional<std::string> &identifier() const { return identifier_; }
    /// The screen that it leaves.
    const std::shared_ptr<UIViewController> &source() const { return source_; }
    /// The screen that it leads to, made for it.
    const std::shared_ptr<UIViewController> &destination() const { return destination_; }

private:
    std::optional<std::string> identifier_;
    std::shared_ptr<UIViewController> source_;
    std::shared_ptr<UIViewController> destination_;
};
