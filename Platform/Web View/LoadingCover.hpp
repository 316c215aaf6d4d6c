#pragma once

#include "Platform/Web View/GObjectHandle.hpp"

#include <gtk/gtk.h>

namespace platform::interface
{

/// Lies over a page until there is something to be seen of it: in the colour of the
/// window, since an empty page is a glaring white, and with a word about it when that
/// takes longer than a moment, as the start of the web engine does.
class LoadingCover
{
public:
    explicit LoadingCover(GtkWidget *page);
    ~LoadingCover();
    LoadingCover(const LoadingCover &) = delete;
    LoadingCover &operator=(const LoadingCover &) = delete;

    /// The page with its cover.
    GtkWidget *widget() const { return GTK_WIDGET(both_.get()); }

    void show();
    void hide();

private:
    void setTellsOfLoading(bool tells);

    GObjectHandle<GtkOverlay> both_;
    GtkWidget *cover_;
    GtkWidget *notice_;
    GtkWidget *spinner_;
    guint later_ = 0;
};

} // namespace platform::interface
