#pragma once

#include "Tests/Platform/Interface/ShownScreen.hpp"

#include <gtk/gtk.h>

namespace test
{

/// The dialog that is shown; null when there is none.
inline GtkDialog *shownDialog()
{
    GListModel *windows = gtk_window_get_toplevels();
    for (guint index = 0; index < g_list_model_get_n_items(windows); ++index) {
        auto *window = static_cast<GtkWidget *>(g_list_model_get_item(windows, index));
        g_object_unref(window);
        if (GTK_IS_DIALOG(window) && gtk_widget_get_mapped(window))
            return GTK_DIALOG(window);
    }
    return nullptr;
}

/// Waits for a dialog.
inline GtkDialog *dialogToCome()
{
    EXPECT_TRUE(shows([] { return shownDialog() != nullptr; }));
    return shownDialog();
}

/// The text of the button for `response`.
inline std::string buttonText(GtkDialog *dialog, int response)
{
    GtkWidget *button = gtk_dialog_get_widget_for_response(dialog, response);
    return button ? gtk_button_get_label(GTK_BUTTON(button)) : "";
}

} // namespace test
