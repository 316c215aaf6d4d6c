#include "Platform/Web View/SandboxNotes.hpp"
#include "Platform/Web View/WebKitPage.hpp"

#include <memory>

/// The module's one entry; see `MakeWebPage`.
extern "C" [[gnu::visibility("default")]] void
parvaneMakeWebPage(platform::interface::WebPageObserver &observer,
                   std::unique_ptr<platform::interface::WebPage> &page) noexcept
{
    platform::interface::removeSandboxNotesAtTheEnd();
    page = std::make_unique<platform::interface::WebKitPage>(observer);
}
