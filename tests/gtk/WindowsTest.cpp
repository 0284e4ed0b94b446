// Every kind of window that applications have can be wrapped, or says that it cannot.
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <adwaita.h>

#include <stdexcept>

#include "DisplayTest.h"

namespace velto::test {
namespace {

// All that differs: how a window is made, and how its content is told.
struct Kind {
  const char* name;
  GtkWidget* (*make)(GtkApplication*);
  const char* content;
};
const Kind kinds[] = {
    {"window", [](auto*) { return gtk_window_new(); }, "child"},
    {"application window", [](auto* app) { return gtk_application_window_new(app); }, "child"},
    {"Adwaita window", [](auto*) { return adw_window_new(); }, "content"},
    {"Adwaita application window", [](auto* app) { return adw_application_window_new(app); }, "content"},
    {"dialog", [](auto*) { return GTK_WIDGET(g_object_new(GTK_TYPE_DIALOG, nullptr)); }, "child"},
    {"Adwaita message dialog",
     [](auto*) { return GTK_WIDGET(g_object_new(ADW_TYPE_MESSAGE_DIALOG, nullptr)); }, "child"}};

class WindowsTest : public test::DisplayTest {
 protected:
  WindowsTest() { adw_init(); }

  static bool isShown(UIViewController& host) {
    return runUntil([&] { return host.view()->isInWindow() && host.view()->bounds().size.width > 100; });
  }
  std::shared_ptr<VeltoInterstitialViewController> shownIn(GtkWindow* window) {
    delegate->host = gtk::hostViewController(window);
    auto interstitial = ready(delegate);
    interstitial->show();
    EXPECT_TRUE(heardLast(*delegate, "appear"));
    return interstitial;
  }

  std::shared_ptr<RecordingInterstitialDelegate> delegate = std::make_shared<RecordingInterstitialDelegate>();
};

TEST_F(WindowsTest, AreWrappedWhateverTheirKindAndContentComesLater) {
  auto* app = gtk_application_new("org.example.windows", G_APPLICATION_NON_UNIQUE);
  g_application_register(G_APPLICATION(app), nullptr, nullptr);
  for (const auto& kind : kinds) {
    SCOPED_TRACE(kind.name);
    auto* window = GTK_WINDOW(kind.make(app));
    gtk_window_set_default_size(window, 400, 300);
    const auto host = gtk::hostViewController(window);
    EXPECT_EQ(gtk::hostViewController(window), host);
    GtkWidget* entry = nullptr;
    for (int i = 0; i < 2; ++i) {  // content, and then other content
      entry = gtk_entry_new();
      g_object_set(window, kind.content, entry, nullptr);
      GtkWidget* wrapped = nullptr;
      g_object_get(window, kind.content, &wrapped, nullptr);
      ASSERT_TRUE(GTK_IS_OVERLAY(wrapped));
      EXPECT_EQ(gtk_overlay_get_child(GTK_OVERLAY(wrapped)), entry);
      g_object_unref(wrapped);
      gtk_window_present(window);
      EXPECT_TRUE(isShown(*host));
    }
    gtk_window_set_hide_on_close(window, TRUE);
    gtk_window_close(window);
    EXPECT_TRUE(runUntil([&] { return !host->view()->isInWindow(); }));
    gtk_window_present(window);
    EXPECT_TRUE(isShown(*host));
    EXPECT_EQ(gtk_widget_get_root(entry), GTK_ROOT(window));
    gtk_window_destroy(window);
    EXPECT_FALSE(host->view()->isInWindow());
  }
  g_object_unref(app);
}

// An interstitial in one of two windows, while that shows a popover; the other stays as it is.
TEST_F(WindowsTest, APopoverMayBeOpenWhileAnInterstitialComesAndGoes) {
  std::vector<GtkWindow*> windows;
  for (int i = 0; i < 2; ++i) {
    windows.push_back(GTK_WINDOW(adw_window_new()));
    gtk_window_set_default_size(windows[i], 400, 300);
    auto* button = gtk_menu_button_new();
    auto* popover = gtk_popover_new();
    gtk_popover_set_child(GTK_POPOVER(popover), gtk_entry_new());
    gtk_menu_button_set_popover(GTK_MENU_BUTTON(button), popover);
    adw_window_set_content(ADW_WINDOW(windows[i]), button);
    gtk::hostViewController(windows[i]);
    gtk_window_present(windows[i]);
    EXPECT_TRUE(isShown(*gtk::hostViewController(windows[i])));
  }
  auto* overlay = adw_window_get_content(ADW_WINDOW(windows[0]));
  auto* button = GTK_MENU_BUTTON(gtk_overlay_get_child(GTK_OVERLAY(overlay)));
  gtk_menu_button_popup(button);
  auto* popover = GTK_WIDGET(gtk_menu_button_get_popover(button));
  EXPECT_TRUE(runUntil([&] { return gtk_widget_get_mapped(popover); }));

  const auto interstitial = shownIn(windows[0]);
  EXPECT_EQ(gtk::hostViewController(windows[1])->presentedViewController(), nullptr);
  gtk_menu_button_popdown(button);
  gtk_window_fullscreen(windows[0]);
  interstitial->vc()->accessibilityPerformEscape();
  EXPECT_TRUE(heardLast(*delegate, "dismissed"));
  gtk_menu_button_popup(button);
  EXPECT_TRUE(runUntil([&] { return gtk_widget_get_mapped(popover); })) << "the window can be used again";
  for (auto* window : windows) gtk_window_destroy(window);
}

// As large as the screen, by a real window manager.
TEST_F(WindowsTest, AnInterstitialCoversAFullScreenAndWhatIsLeftAfterIt) {
  const WindowManager manager;
  auto* window = GTK_WINDOW(adw_window_new());
  gtk_window_set_default_size(window, 400, 300);
  adw_window_set_content(ADW_WINDOW(window), gtk_label_new("content"));
  const auto host = gtk::hostViewController(window);
  gtk_window_present(window);
  EXPECT_TRUE(runUntil([&] { return gtk_window_is_active(window); })) << "the window manager is there";
  const auto interstitial = shownIn(window);
  const auto covers = [&](bool fullscreen) {  // but for the edge that a window has without compositor
    return runUntil([&] {
      const CGSize size = interstitial->vc()->view()->bounds().size;
      return bool(gtk_window_is_fullscreen(window)) == fullscreen && (size.width > 1200) == fullscreen &&
             (size.height > 1000) == fullscreen && size == host->view()->bounds().size;
    });
  };
  gtk_window_fullscreen(window);
  EXPECT_TRUE(covers(true));
  gtk_window_unfullscreen(window);
  EXPECT_TRUE(covers(false));
  interstitial->vc()->accessibilityPerformEscape();
  EXPECT_TRUE(heardLast(*delegate, "dismissed"));
  gtk_window_destroy(window);
}

TEST_F(WindowsTest, OneThatKeepsItsContentToItselfSaysSoAndStaysAsItIs) {
  auto* window = GTK_WINDOW(gtk_window_new());
  auto* own = gtk_label_new("own");
  gtk_window_set_child(window, own);
  const auto keep = +[](GtkWindow* changed, GParamSpec*, GtkWidget* child) {
    if (gtk_window_get_child(changed) == child) return;
    if (gtk_widget_get_parent(child))
      gtk_overlay_set_child(GTK_OVERLAY(gtk_widget_get_parent(child)), nullptr);
    gtk_window_set_child(changed, child);
  };
  g_object_ref(own);
  g_signal_connect(window, "notify::child", G_CALLBACK(keep), own);
  EXPECT_THROW(gtk::hostViewController(window), std::invalid_argument);
  EXPECT_EQ(gtk_window_get_child(window), own);
  EXPECT_THROW(gtk::hostViewController(own), std::invalid_argument) << "neither window nor slot";
  g_signal_handlers_disconnect_by_data(window, own);
  g_object_unref(own);
  EXPECT_NO_THROW(gtk::hostViewController(window)) << "later it may be possible";
  gtk_window_destroy(window);
}

TEST_F(WindowsTest, TheForegroundFollowsThemAllUnlessTheApplicationKnowsBetter) {
  auto& center = Platform::current().notificationCenter();
  std::string told;
  const Handle foreground =
      center.addObserver(UIApplicationWillEnterForegroundNotification, [&](const auto&) { told += 'f'; });
  const Handle background =
      center.addObserver(UIApplicationDidEnterBackgroundNotification, [&](const auto&) { told += 'b'; });
  const auto show = [](GtkWindow* window) {
    present(window);
    return window;
  };
  auto* first = show(newWindow(100, 100));
  auto* second = show(newWindow(100, 100));
  gtk_widget_set_visible(GTK_WIDGET(first), FALSE);
  EXPECT_EQ(told, "") << "one is enough";
  gtk_widget_set_visible(GTK_WIDGET(second), FALSE);
  EXPECT_EQ(told, "b");
  show(first);
  show(second);
  EXPECT_EQ(told, "bf");

  gtk::setInForeground(false);
  gtk_window_destroy(first);
  gtk_window_destroy(second);
  gtk::setInForeground(std::nullopt);
  EXPECT_EQ(told, "bfb");
  auto* third = newWindow(100, 100);
  gtk_window_present(third);
  show(third);
  EXPECT_EQ(told, "bfbf") << "also one that was on the screen before it was given a controller";
  gtk_window_destroy(third);
  EXPECT_EQ(told, "bfbfb");
}

}  // namespace
}  // namespace velto::test
