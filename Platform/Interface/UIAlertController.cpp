#include "Platform/Interface/UIAlertController.hpp"

#include "Platform/Interface/DisposeLater.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtkmm/label.h>
#include <gtkmm/messagedialog.h>

#include <algorithm>
#include <utility>

/// The GTK dialog; a choice's response is its place among the actions.
class UIAlertController::Dialog
{
public:
    Dialog(const UIAlertController &alert, Gtk::Window &parent)
        : dialog_(alert.title_, false, Gtk::MessageType::OTHER, Gtk::ButtonsType::NONE, true)
    {
        dialog_.set_transient_for(parent);
        dialog_.set_secondary_text(alert.message_);
        centreText();
        // By the desktop's custom what cancels stands first, what confirms last.
        for (const bool cancelling : {true, false})
            addButtons(alert.actions_, cancelling);
        if (Gtk::Widget *expected = dialog_.get_default_widget())
            expected->add_css_class("suggested-action");
    }

    Gtk::MessageDialog &get() { return dialog_; }

private:
    void centreText()
    {
        Gtk::Widget *text = dialog_.get_message_area()->get_first_child();
        for (; text; text = text->get_next_sibling())
            if (auto *label = dynamic_cast<Gtk::Label *>(text))
                label->set_justify(Gtk::Justification::CENTER);
    }

    void addButtons(const std::vector<UIAlertAction> &actions, bool cancelling)
    {
        for (std::size_t index = 0; index < actions.size(); ++index) {
            const UIAlertActionStyle style = actions[index].style();
            if ((style == UIAlertActionStyle::cancel) != cancelling)
                continue;
            const int response = static_cast<int>(index);
            auto *button = dialog_.add_button(actions[index].title(), response);
            if (style == UIAlertActionStyle::destructive)
                button->add_css_class("destructive-action");
            if (style == UIAlertActionStyle::defaultStyle)
                dialog_.set_default_response(response);
        }
    }

    Gtk::MessageDialog dialog_;
};

UIAlertController::UIAlertController(std::string title, std::string message,
                                     UIAlertControllerStyle /*style*/)
    : UIViewController(std::nullopt, nullptr), title_(std::move(title)),
      message_(std::move(message))
{
}

UIAlertController::~UIAlertController() = default;

void UIAlertController::addAction(UIAlertAction action)
{
    actions_.push_back(std::move(action));
}

void UIAlertController::comeUp(UIWindow &window, UIViewController & /*presenting*/,
                               bool /*animated*/, std::function<void()> done)
{
    dialog_ = std::make_unique<Dialog>(*this, dynamic_cast<Gtk::Window &>(window.widget().get()));
    const auto self = std::static_pointer_cast<UIAlertController>(shared_from_this());
    dialog_->get().signal_response().connect([weakSelf = std::weak_ptr(self)](int response) {
        const auto alert = weakSelf.lock();
        if (!alert)
            return;
        // Escape and the window manager's button have negative numbers.
        const auto index =
            response < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(response));
        alert->respond(index);
    });
    dialog_->get().present();
    if (done)
        done();
}

void UIAlertController::goAway(UIWindow & /*window*/, UIViewController & /*presenting*/,
                               bool /*animated*/, std::function<void()> done)
{
    dialog_->get().set_visible(false);
    platform::interface::disposeLater(std::move(dialog_));
    done();
}

void UIAlertController::respond(std::optional<std::size_t> index)
{
    auto chosen = index ? actions_.begin() + static_cast<std::ptrdiff_t>(*index) : actions_.end();
    if (!index)
        chosen = std::find_if(actions_.begin(), actions_.end(), [](const UIAlertAction &action) {
            return action.style() == UIAlertActionStyle::cancel;
        });
    const auto self = shared_from_this();
    dismiss(true);
    if (chosen != actions_.end())
        chosen->choose();
}
