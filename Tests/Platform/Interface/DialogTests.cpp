#include "Platform/Interface/UIAlertController.hpp"
#include "Platform/Interface/UIDocumentPickerViewController.hpp"
#include "Tests/Platform/Interface/Dialogs.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/LeakCheck.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using test::buttonText;
using test::dialogToCome;
using test::PlainScreen;
using test::shownDialog;
using test::ShownScreen;
using test::shows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DialogTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_EQ(controller->presentedViewController(), nullptr);
        EXPECT_TRUE(shows([] { return shownDialog() == nullptr; }));
    }

    std::shared_ptr<PlainScreen> controller = std::make_shared<PlainScreen>();
    ShownScreen screen{controller};
};

class Alert : public DialogTest
{
protected:
    void present()
    {
        const auto alert =
            std::make_shared<UIAlertController>("Title", "Message", UIAlertControllerStyle::alert);
        for (const auto &[title, style] : {std::pair("Go", UIAlertActionStyle::defaultStyle),
                                           std::pair("Erase", UIAlertActionStyle::destructive),
                                           std::pair("Leave", UIAlertActionStyle::cancel)}) {
            alert->addAction(UIAlertAction(title, style, [this](UIAlertAction &action) {
                EXPECT_EQ(controller->presentedViewController(), nullptr);
                chosen.push_back(action.title());
            }));
        }
        controller->present(alert, true, [this] { presented = true; });
        EXPECT_TRUE(presented);
        dialog = dialogToCome();
        ASSERT_NE(dialog, nullptr);
    }

    GtkDialog *dialog = nullptr;
    bool presented = false;
    std::vector<std::string> chosen;
};

TEST_F(Alert, SaysItsMessageAndGivesItsChoices)
{
    present();
    gchar *text = nullptr;
    gchar *secondary = nullptr;
    gboolean modal = FALSE;
    g_object_get(dialog, "text", &text, "secondary-text", &secondary, "modal", &modal, nullptr);
    EXPECT_STREQ(text, "Title");
    EXPECT_STREQ(secondary, "Message");
    EXPECT_TRUE(modal);
    g_free(text);
    g_free(secondary);
    EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(dialog)), screen.gtkWindow().gobj());
    EXPECT_EQ(buttonText(dialog, 0), "Go");
    EXPECT_EQ(buttonText(dialog, 1), "Erase");
    EXPECT_EQ(buttonText(dialog, 2), "Leave");
    GtkWidget *leave = gtk_dialog_get_widget_for_response(dialog, 2);
    EXPECT_EQ(gtk_widget_get_prev_sibling(leave), nullptr) << "What cancels stands first.";
    EXPECT_TRUE(gtk_widget_has_css_class(gtk_dialog_get_widget_for_response(dialog, 1),
                                         "destructive-action"));
    GtkWidget *go = gtk_dialog_get_widget_for_response(dialog, 0);
    EXPECT_TRUE(gtk_widget_has_css_class(go, "suggested-action"));
    EXPECT_EQ(gtk_window_get_default_widget(GTK_WINDOW(dialog)), go);
    gtk_dialog_response(dialog, 0);
    EXPECT_THAT(chosen, ElementsAre("Go"));
}

TEST_F(Alert, IsAnsweredByAPress)
{
    present();
    g_signal_emit_by_name(gtk_dialog_get_widget_for_response(dialog, 1), "clicked");
    EXPECT_THAT(chosen, ElementsAre("Erase"));
}

TEST_F(Alert, IsCancelledWhenItIsClosed)
{
    present();
    gtk_window_close(GTK_WINDOW(dialog));
    ASSERT_TRUE(shows([&] { return !chosen.empty(); }));
    EXPECT_THAT(chosen, ElementsAre("Leave"));
}

TEST_F(Alert, CanBeDismissed)
{
    present();
    controller->dismiss(true);
    EXPECT_THAT(chosen, IsEmpty());
}

namespace
{

class Picked : public UIDocumentPickerDelegate
{
public:
    void documentPicker(UIDocumentPickerViewController & /*controller*/, const URL &url) override
    {
        paths.push_back(url.path());
    }
    void documentPickerWasCancelled(UIDocumentPickerViewController & /*controller*/) override
    {
        ++cancelled;
    }

    std::vector<std::string> paths;
    int cancelled = 0;
};

} // namespace

class Picker : public DialogTest
{
protected:
    void present(bool several)
    {
        test::outgrowTheTableOfNames();
        const auto picker = std::make_shared<UIDocumentPickerViewController>(
            std::vector<std::string>{"public.folder"}, UIDocumentPickerMode::open);
        picker->delegate = picked;
        picker->allowsMultipleSelection = several;
        controller->present(picker, true);
        dialog = dialogToCome();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(gtk_file_chooser_get_action(GTK_FILE_CHOOSER(dialog)),
                  GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER);
        EXPECT_EQ(gtk_file_chooser_get_select_multiple(GTK_FILE_CHOOSER(dialog)) != FALSE, several);
    }

    bool isIn(const std::string &path) const
    {
        GFile *folder = gtk_file_chooser_get_current_folder(GTK_FILE_CHOOSER(dialog));
        gchar *now = folder ? g_file_get_path(folder) : nullptr;
        const bool there = now && path == now;
        g_free(now);
        g_clear_object(&folder);
        return there;
    }

    void choose(const std::string &path)
    {
        GFile *file = g_file_new_for_path(path.c_str());
        gtk_file_chooser_set_current_folder(GTK_FILE_CHOOSER(dialog), file, nullptr);
        g_object_unref(file);
        ASSERT_TRUE(shows([&] { return isIn(path); }));
        gtk_dialog_response(dialog, GTK_RESPONSE_ACCEPT);
    }

    GtkDialog *dialog = nullptr;
    std::shared_ptr<Picked> picked = std::make_shared<Picked>();
};

TEST_F(Picker, HandsOverTheFolder)
{
    const auto folder =
        std::filesystem::canonical(test::sourcePath("Tests/Platform/Interface/Bundle")).string();
    present(false);
    choose(folder);
    ASSERT_TRUE(shows([&] { return !picked->paths.empty(); }));
    EXPECT_THAT(picked->paths, ElementsAre(folder));
    EXPECT_EQ(picked->cancelled, 0);
}

TEST_F(Picker, SaysThatItWasCancelled)
{
    present(true);
    gtk_dialog_response(dialog, GTK_RESPONSE_CANCEL);
    EXPECT_EQ(picked->cancelled, 1);
    EXPECT_THAT(picked->paths, IsEmpty());
}

TEST_F(Picker, SaysNothingToNobody)
{
    present(false);
    picked.reset();
    gtk_dialog_response(dialog, GTK_RESPONSE_CANCEL);
}

TEST(PickerDeathTest, PicksFoldersOnly)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(UIDocumentPickerViewController({"public.image"}, UIDocumentPickerMode::open),
                 "Fatal error: Nothing but folders can be picked");
}
