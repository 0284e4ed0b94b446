// When windows come into sight and go out of it, and what the application says about it itself.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace velto {
namespace {

class ForegroundTest : public testing::Test {
 protected:
  ForegroundTest() {
    gtk_init();
    gtk::install({.applicationIdentifier = "org.example.foreground"});
    auto& center = Platform::current().notificationCenter();
    foreground_ = center.addObserver(UIApplicationWillEnterForegroundNotification,
                                     [this](const auto&) { told += 'f'; });
    background_ =
        center.addObserver(UIApplicationDidEnterBackgroundNotification, [this](const auto&) { told += 'b'; });
  }
  ~ForegroundTest() override { gtk::uninstall(); }

  static GtkWidget* window() {
    auto* made = gtk_window_new();
    gtk::hostViewController(GTK_WINDOW(made));
    show(made);
    return made;
  }
  static void show(GtkWidget* window) {
    gtk_window_present(GTK_WINDOW(window));
    while (!gtk_widget_get_mapped(window)) g_main_context_iteration(nullptr, TRUE);
  }

  std::string told;

 private:
  Handle foreground_, background_;
};

TEST_F(ForegroundTest, FollowsAllWindowsUnlessTheApplicationKnowsBetter) {
  auto* first = window();
  auto* second = window();
  gtk_widget_set_visible(first, FALSE);
  EXPECT_EQ(told, "") << "one is enough";
  gtk_widget_set_visible(second, FALSE);
  EXPECT_EQ(told, "b");
  show(first);
  show(second);
  EXPECT_EQ(told, "bf");

  gtk::setInForeground(false);
  EXPECT_EQ(told, "bfb");
  gtk_window_destroy(GTK_WINDOW(first));
  gtk_window_destroy(GTK_WINDOW(second));
  gtk::setInForeground(std::nullopt);
  EXPECT_EQ(told, "bfb");
  gtk::setInForeground(true);
  EXPECT_EQ(told, "bfbf");
  gtk::setInForeground(std::nullopt);
  EXPECT_EQ(told, "bfbfb") << "no window is left";
  auto* third = window();
  EXPECT_EQ(told, "bfbfbf");
  gtk_window_destroy(GTK_WINDOW(third));
  EXPECT_EQ(told, "bfbfbfb");
}

}  // namespace
}  // namespace velto
