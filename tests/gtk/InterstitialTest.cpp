// Interstitials in a real window: whose the keyboard is, and what happens when the window goes.
#include "DisplayTest.h"

namespace velto::test {
namespace {

class GtkInterstitialTest : public DisplayTest {
 protected:
  GtkInterstitialTest() {
    entry = gtk_entry_new();
    gtk_widget_set_valign(entry, GTK_ALIGN_CENTER);
    window = newWindow(480, 640, entry);
    g_object_add_weak_pointer(G_OBJECT(window), reinterpret_cast<gpointer*>(&window));
    delegate->host = present(window);
    giveKeyboard(window);
    gtk_widget_grab_focus(entry);
  }
  ~GtkInterstitialTest() override {
    interstitial.reset();
    auto* left = window;
    g_clear_weak_pointer(&window);
    if (left) gtk_window_destroy(left);
  }

  // Gets a key through to the window, and everything that it does there done: the key that follows it, which
  // nobody uses, has come.
  void press(const std::string& key) {
    bool arrived = false;
    auto* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    const auto see = +[](GtkEventControllerKey*, guint pressed, guint, GdkModifierType,
                         bool* flag) -> gboolean { return *flag |= pressed == GDK_KEY_F9; };
    g_signal_connect(keys, "key-pressed", G_CALLBACK(see), &arrived);
    gtk_widget_add_controller(GTK_WIDGET(window), keys);
    xdotool("key " + key + " key F9");
    EXPECT_TRUE(runUntil([&] { return arrived; })) << key;
    gtk_widget_remove_controller(GTK_WIDGET(window), keys);
  }
  std::string text() const { return gtk_editable_get_text(GTK_EDITABLE(entry)); }
  bool entryHasFocus() const {
    auto* focus = gtk_window_get_focus(window);
    return focus && gtk_widget_is_ancestor(focus, entry);
  }

  void show(double seconds) {
    interstitial = ready(delegate, seconds);
    interstitial->show();
    EXPECT_TRUE(heardLast("appear"));
  }
  bool heardLast(const std::string& what) { return DisplayTest::heardLast(*delegate, what); }

  GtkWindow* window = nullptr;
  GtkWidget* entry = nullptr;
  std::shared_ptr<RecordingInterstitialDelegate> delegate = std::make_shared<RecordingInterstitialDelegate>();
  std::shared_ptr<VeltoInterstitialViewController> interstitial;
};

TEST_F(GtkInterstitialTest, HasTheKeyboardWhileItIsShown) {
  press("a");
  EXPECT_EQ(text(), "a");
  show(8);
  press("b");
  press("Escape");
  EXPECT_EQ(delegate->heard, Heard{"appear"}) << "the close button is not active yet";
  const auto clickBeside = [&] { click(window, {100, 320}); };
  const std::function<void()> takes[] = {
      [&] { gtk_widget_grab_focus(entry); },
      [&] { gtk_window_set_focus(window, entry); },
      [&] { gtk_window_set_focus(window, nullptr); },
      [&] { press("Tab"); },
      [&] { press("shift+Tab"); },
      clickBeside,
  };
  for (const auto& take : takes) {
    take();
    EXPECT_FALSE(entryHasFocus());
    press("c");
  }
  EXPECT_EQ(text(), "a");

  // The application changes its page meanwhile.
  entry = gtk_entry_new();
  gtk_window_set_child(window, entry);
  gtk_widget_grab_focus(entry);
  EXPECT_FALSE(entryHasFocus());

  EXPECT_TRUE(runUntil([&] { return interstitial->vc()->veltoCloseButton()->isEnabled(); }));
  press("Escape");
  EXPECT_TRUE(heardLast("dismissed"));
  EXPECT_EQ(delegate->heard, (Heard{"appear", "press", "close", "dismissed"}));
  gtk_widget_grab_focus(entry);
  press("d");
  EXPECT_EQ(text(), "d") << "the page can be used again";
}

// What another network's adapter does.
TEST_F(GtkInterstitialTest, HandsTheKeyboardToWhatIsPresentedOverIt) {
  struct Screen : UIViewController {
    int escapes = 0;
    bool accessibilityPerformEscape() override { return ++escapes; }
  };
  auto* before = gtk_window_get_focus(window);
  show(0);
  const auto screen = std::make_shared<Screen>();
  bool done = false;
  interstitial->vc()->presentViewController(screen, false, [&] { done = true; });
  EXPECT_TRUE(runUntil([&] { return done; }));
  press("Escape");
  EXPECT_EQ(screen->escapes, 1);
  EXPECT_EQ(delegate->heard, Heard{"appear"});
  done = false;
  screen->dismissViewControllerAnimated(false, [&] { done = true; });
  EXPECT_TRUE(runUntil([&] { return done; }));
  press("Escape");
  EXPECT_TRUE(heardLast("dismissed"));
  EXPECT_EQ(screen->escapes, 1);
  runFrames(entry);
  EXPECT_EQ(gtk_window_get_focus(window), before) << "the focus is back and stays";
}

TEST_F(GtkInterstitialTest, AWindowThatGoesTakesItAlong) {
  interstitial = ready(delegate);
  interstitial->setAnimation(VeltoAnimationFromLeft);
  interstitial->show();
  EXPECT_TRUE(runUntil([this] { return interstitial->vc()->presentingViewController() != nullptr; }));
  const auto kept = delegate->host.lock();  // the application may hold the controller beyond its window
  gtk_window_destroy(window);
  EXPECT_TRUE(heardLast("fail 2"));
  EXPECT_EQ(delegate->heard, Heard{"fail 2"});
}

}  // namespace
}  // namespace velto::test
