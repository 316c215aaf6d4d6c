#pragma once

#include "Platform/Foundation/URL.hpp"

#include <vector>

class UIDocumentPickerViewController;

/// Hears what was picked. Main thread.
class UIDocumentPickerDelegate
{
public:
    virtual ~UIDocumentPickerDelegate() = default;

    /// One document was picked, where the operation for several is not overridden.
    virtual void documentPicker(UIDocumentPickerViewController & /*controller*/,
                                const URL & /*url*/)
    {
    }

    /// Documents were picked, one or several. Unless overridden it tells of each alone.
    virtual void documentPicker(UIDocumentPickerViewController &controller,
                                const std::vector<URL> &urls)
    {
        for (const URL &url : urls)
            documentPicker(controller, url);
    }

    /// The dialog was closed and nothing picked.
    virtual void documentPickerWasCancelled(UIDocumentPickerViewController & /*controller*/) {}
};
