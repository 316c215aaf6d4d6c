#pragma once

#include "Platform/Interface/UIViewController.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// How a choice is meant: `cancel` leaves things unchanged, and Escape stands for it.
/// What a choice means; a destructive one is drawn as a warning.
enum class UIAlertActionStyle { defaultStyle, cancel, destructive };
/// How an alert is shown: as a dialog of its own.
enum class UIAlertControllerStyle { alert };

/// One of the choices that an alert gives.
class UIAlertAction
{
public:
    /// Is called when the action was chosen.
    using Handler = std::function<void(UIAlertAction &)>;

    /// A choice under `title`; the handler may be null.
    UIAlertAction(std::string title, UIAlertActionStyle style, Handler handler)
        : title_(std::move(title)), style_(style), handler_(std::move(handler))
    {
    }

    /// What stands on the button.
    const std::string &title() const { return title_; }
    /// What the choice means.
    UIAlertActionStyle style() const { return style_; }

    /// Does what choosing it does.
    void choose()
    {
        if (handler_)
            handler_(*this);
    }

private:
    std::string title_;
    UIAlertActionStyle style_;
    Handler handler_;
};

/// A message in a dialog of the desktop that waits for one of its actions to be
/// chosen. Chosen, it is dismissed, and then the action's handler runs. Main thread.
class UIAlertController : public UIViewController
{
public:
    /// An alert without choices; not shown yet.
    UIAlertController(std::string title, std::string message, UIAlertControllerStyle style);
    ~UIAlertController() override;

    /// Adds a choice behind those added before; before it is presented.
    void addAction(UIAlertAction action);
    /// The choices in their order.
    const std::vector<UIAlertAction> &actions() const { return actions_; }
    /// What it says in large.
    const std::string &title() const { return title_; }
    /// What it says below.
    const std::string &message() const { return message_; }

protected:
    void comeUp(UIWindow &window, UIViewController &presenting, bool animated,
                std::function<void()> done) override;
    void goAway(UIWindow &window, UIViewController &presenting, bool animated,
                std::function<void()> done) override;

private:
    class Dialog;

    void respond(std::optional<std::size_t> index);

    std::string title_;
    std::string message_;
    std::vector<UIAlertAction> actions_;
    std::unique_ptr<Dialog> dialog_;
};
