#include "Platform/Interface/UIDocumentPickerViewController.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/DisposeLater.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gio/gio.h>
#include <gtkmm/filechoosernative.h>

#include <memory>
#include <utility>

/// The desktop's chooser.
class UIDocumentPickerViewController::Chooser
{
public:
    Chooser(Gtk::Window &parent, bool several)
        : chooser_(Gtk::FileChooserNative::create(several ? "Choose Folders" : "Choose a Folder",
                                                  parent, Gtk::FileChooser::Action::SELECT_FOLDER,
                                                  "_Choose", "_Cancel"))
    {
        chooser_->set_modal(true);
        chooser_->set_select_multiple(several);
    }

    Gtk::FileChooserNative &get() { return *chooser_.get(); }

    /// Folders of this machine; what has no path is left out.
    std::vector<URL> picked() const
    {
        std::vector<URL> urls;
        const auto files = chooser_->get_files();
        for (guint index = 0; index < files->get_n_items(); ++index) {
            const std::unique_ptr<void, decltype(&g_object_unref)> file(
                g_list_model_get_item(files->gobj(), index), &g_object_unref);
            if (const char *path = g_file_peek_path(G_FILE(file.get())))
                urls.push_back(URL::fileURLWithPath(path));
        }
        return urls;
    }

private:
    Glib::RefPtr<Gtk::FileChooserNative> chooser_;
};

UIDocumentPickerViewController::UIDocumentPickerViewController(
    const std::vector<std::string> &documentTypes, UIDocumentPickerMode /*mode*/)
    : UIViewController(std::nullopt, nullptr)
{
    if (documentTypes != std::vector<std::string>{"public.folder"})
        fatalError("Nothing but folders can be picked.");
}

UIDocumentPickerViewController::~UIDocumentPickerViewController() = default;

void UIDocumentPickerViewController::comeUp(UIWindow &window, UIViewController & /*presenting*/,
                                            bool /*animated*/, std::function<void()> done)
{
    chooser_ = std::make_unique<Chooser>(dynamic_cast<Gtk::Window &>(window.widget().get()),
                                         allowsMultipleSelection);
    const auto self = std::static_pointer_cast<UIDocumentPickerViewController>(shared_from_this());
    chooser_->get().signal_response().connect([weakSelf = std::weak_ptr(self)](int response) {
        if (const auto picker = weakSelf.lock())
            picker->respond(response == Gtk::ResponseType::ACCEPT);
    });
    chooser_->get().show();
    if (done)
        done();
}

void UIDocumentPickerViewController::goAway(UIWindow & /*window*/,
                                            UIViewController & /*presenting*/, bool /*animated*/,
                                            std::function<void()> done)
{
    chooser_->get().hide();
    platform::interface::disposeLater(std::move(chooser_));
    done();
}

void UIDocumentPickerViewController::respond(bool accepted)
{
    const auto self = shared_from_this();
    const std::vector<URL> urls = accepted ? chooser_->picked() : std::vector<URL>();
    dismiss(true);
    const auto receiver = delegate.lock();
    if (!receiver)
        return;
    if (accepted)
        receiver->documentPicker(*this, urls);
    else
        receiver->documentPickerWasCancelled(*this);
}
