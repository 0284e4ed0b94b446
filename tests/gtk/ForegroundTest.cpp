// When windows come into sight and go out of it, and what the application says about it itself.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

GtkWidget* show(GtkWidget* window) {
  gtk_window_present(GTK_WINDOW(window));
  while (!gtk_widget_get_mapped(window)) g_main_context_iteration(nullptr, TRUE);
  return window;
}
GtkWidget* newHost() {
  auto* made = gtk_window_new();
  gtk::hostViewController(GTK_WINDOW(made));
  return show(made);
}

TEST(ForegroundTest, FollowsAllWindowsUnlessTheApplicationKnowsBetter) {
  gtk_init();
  gtk::install({.applicationIdentifier = "org.example.foreground"});
  auto& center = Platform::current().notificationCenter();
  std::string told;
  const Handle foreground =
      center.addObserver(UIApplicationWillEnterForegroundNotification, [&](const auto&) { told += 'f'; });
  const Handle background =
      center.addObserver(UIApplicationDidEnterBackgroundNotification, [&](const auto&) { told += 'b'; });
  auto* first = newHost();
  auto* second = newHost();
  gtk_widget_set_visible(first, FALSE);
  EXPECT_EQ(told, "") << "one is enough";
  gtk_widget_set_visible(second, FALSE);
  EXPECT_EQ(told, "b");
  show(first);
  show(second);
  EXPECT_EQ(told, "bf");

  gtk::setInForeground(false);
  gtk_window_destroy(GTK_WINDOW(first));
  gtk_window_destroy(GTK_WINDOW(second));
  gtk::setInForeground(std::nullopt);
  EXPECT_EQ(told, "bfb");
  auto* third = newHost();
  EXPECT_EQ(told, "bfbf");
  gtk_window_destroy(GTK_WINDOW(third));
  EXPECT_EQ(told, "bfbfb");
  gtk::uninstall();
}

}  // namespace
}  // namespace velto
