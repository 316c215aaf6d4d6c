#pragma once

#include <gtk/gtk.h>

namespace platform::interface
{

/// Shows one page of a stack and tells assistive technology that the others are
/// hidden. GTK 4.8 does not: a screen reader would find the controls of all pages.
inline void showPageOf(GtkStack *stack, GtkWidget *page)
{
    for (GtkWidget *each = gtk_widget_get_first_child(GTK_WIDGET(stack)); each;
         each = gtk_widget_get_next_sibling(each))
        gtk_accessible_update_state(GTK_ACCESSIBLE(each), GTK_ACCESSIBLE_STATE_HIDDEN,
                                    each == page ? FALSE : TRUE, -1);
    gtk_stack_set_visible_child(stack, page);
}

} // namespace platform::interface
