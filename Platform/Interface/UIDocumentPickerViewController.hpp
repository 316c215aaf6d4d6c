#pragma once

#include "Platform/Interface/UIDocumentPickerDelegate.hpp"
#include "Platform/Interface/UIViewController.hpp"

#include <memory>
#include <string>
#include <vector>

/// What happens to what is picked: `open` leaves it where it is.
enum class UIDocumentPickerMode { open };

/// Lets the person pick folders in the desktop's own chooser. Main thread.
class UIDocumentPickerViewController : public UIViewController
{
public:
    /// Folders are all that can be picked: any type but "public.folder" is a fatal
    /// error.
    UIDocumentPickerViewController(const std::vector<std::string> &documentTypes,
                                   UIDocumentPickerMode mode);
    ~UIDocumentPickerViewController() override;

    /// Not kept alive.
    std::weak_ptr<UIDocumentPickerDelegate> delegate;
    /// Whether several may be picked at a time; before it is presented.
    bool allowsMultipleSelection = false;

protected:
    void comeUp(UIWindow &window, UIViewController &presenting, bool animated,
                std::function<void()> done) override;
    void goAway(UIWindow &window, UIViewController &presenting, bool animated,
                std::function<void()> done) override;

private:
    class Chooser;

    void respond(bool accepted);

    std::unique_ptr<Chooser> chooser_;
};
