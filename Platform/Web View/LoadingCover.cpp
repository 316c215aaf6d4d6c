#include "Platform/Web View/LoadingCover.hpp"

#include <utility>

namespace platform::interface
{

namespace
{

/// What comes sooner needs no word. In milliseconds.
constexpr guint moment = 400;
constexpr int spacing = 14;
constexpr int spinnerSize = 24;

} // namespace

LoadingCover::LoadingCover(GtkWidget *page)
    : both_(takeFloating<GtkOverlay>(gtk_overlay_new())),
      cover_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      notice_(gtk_box_new(GTK_ORIENTATION_VERTICAL, spacing)), spinner_(gtk_spinner_new())
{
    gtk_widget_add_css_class(cover_, "page-cover");
    gtk_widget_set_visible(cover_, FALSE);
    gtk_widget_set_halign(notice_, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(notice_, GTK_ALIGN_CENTER);
    gtk_widget_set_vexpand(notice_, TRUE);
    gtk_widget_set_size_request(spinner_, spinnerSize, spinnerSize);
    gtk_box_append(GTK_BOX(notice_), spinner_);
    gtk_box_append(GTK_BOX(notice_), gtk_label_new("Loading…"));
    gtk_box_append(GTK_BOX(cover_), notice_);
    gtk_overlay_set_child(both_.get(), page);
    gtk_overlay_add_overlay(both_.get(), cover_);
}

LoadingCover::~LoadingCover()
{
    hide();
    gtk_overlay_set_child(both_.get(), nullptr);
}

void LoadingCover::show()
{
    hide();
    gtk_widget_set_visible(cover_, TRUE);
    later_ = g_timeout_add(
        moment,
        [](gpointer self) -> gboolean {
            static_cast<LoadingCover *>(self)->later_ = 0;
            static_cast<LoadingCover *>(self)->setTellsOfLoading(true);
            return G_SOURCE_REMOVE;
        },
        this);
}

void LoadingCover::hide()
{
    if (const guint later = std::exchange(later_, 0))
        g_source_remove(later);
    setTellsOfLoading(false);
    gtk_widget_set_visible(cover_, FALSE);
}

void LoadingCover::setTellsOfLoading(bool tells)
{
    gtk_widget_set_visible(notice_, tells ? TRUE : FALSE);
    gtk_spinner_set_spinning(GTK_SPINNER(spinner_), tells ? TRUE : FALSE);
}

} // namespace platform::interface
