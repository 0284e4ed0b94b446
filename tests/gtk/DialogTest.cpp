// Dialogs and sheets that libadwaita draws into the window, over all of its content: what they leave of an ad, and who
// has the keyboard while an interstitial comes and goes below them.
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/Viewability.h"
#include "velto/platform/ui/WKWebView.h"

#include <adwaita.h>

#include "DisplayTest.h"

namespace velto::test {
namespace {

constexpr CGSize adSize{320, 50};
constexpr uint32_t red = 0xff0000;

class DialogTest : public DisplayTest {
 protected:
  DialogTest() {
    adw_init();
    window = GTK_WINDOW(
        g_object_new(ADW_TYPE_APPLICATION_WINDOW, "default-width", 480, "default-height", 600, nullptr));
  }
  ~DialogTest() override { gtk_window_destroy(window); }

  void present(GtkWidget* content) {
    adw_application_window_set_content(ADW_APPLICATION_WINDOW(window), content);
    gtk_window_present(window);
    ASSERT_TRUE(runUntil([&] { return gtk_widget_get_width(content) > 0; }));
  }
  AdwDialog* openDialog(GtkWidget* child) {
    auto* dialog = adw_dialog_new();
    adw_dialog_set_child(dialog, child);
    adw_dialog_present(dialog, GTK_WIDGET(window));
    return dialog;
  }

  GtkWidget* focus() { return gtk_window_get_focus(window); }
  bool isFocusIn(GtkWidget* widget) { return focus() && gtk_widget_is_ancestor(focus(), widget); }
  static std::string textOf(GtkWidget* entry) { return gtk_editable_get_text(GTK_EDITABLE(entry)); }
  static double redOf(const Picture& picture, uint32_t darkest) {
    return double(std::count_if(picture.pixels.begin(), picture.pixels.end(), [&](uint32_t pixel) {
      return (pixel & 0xffff) == 0 && (pixel & 0xff0000) >= darkest;
    }));
  }

  GtkWindow* window;
};

TEST_F(DialogTest, WhatDialogsAndSheetsCoverIsMeasuredAsThePictureShowsIt) {
  auto* slot = gtk::adSlot();
  gtk_widget_set_valign(slot, GTK_ALIGN_END);
  gtk_widget_set_margin_bottom(slot, 40);  // off the window's round corners
  auto* sheet = ADW_BOTTOM_SHEET(adw_bottom_sheet_new());
  adw_bottom_sheet_set_content(sheet, slot);
  adw_bottom_sheet_set_sheet(sheet, painted(260, 200, 0, 0, 1));
  adw_bottom_sheet_set_full_width(sheet, FALSE);
  adw_bottom_sheet_set_align(sheet, 0);
  present(GTK_WIDGET(sheet));
  const auto ads = std::make_shared<RecordingDelegate>();
  const auto host = gtk::hostViewController(slot);
  ads->host = host;
  auto banner =
      VeltoBannerViewController::initWithDelegate(ads, VeltoBannerSize320x50, VeltoBannerPositionTop);
  auto ad = VeltoAd::adWithHTML("<body style='background:#f00'>", {}, nullptr);
  ad->size = adSize;
  banner->vc()->fetchBannerSuccess(ad);
  const auto agrees = [&](const std::vector<std::string>& reasons, int least, int most,
                          uint32_t darkest = red) {
    Viewability now;
    double share = 0;
    const bool agreed = runUntil([&] {
      now = viewabilityOf(sightOf(banner->vc()->webView().get(), {}));
      share = 100 * redOf(pictureOf(window), darkest) / (adSize.width * adSize.height);
      return now.reasons == reasons && now.percentageInView >= least && now.percentageInView <= most &&
             std::abs(now.percentageInView - share) <= 2;
    });
    EXPECT_TRUE(agreed) << now.percentageInView << "% measured, " << share << "% red";
    return agreed;
  };
  EXPECT_TRUE(agrees({}, 100, 100));
  adw_bottom_sheet_set_modal(sheet, FALSE);
  adw_bottom_sheet_set_open(sheet, TRUE);
  EXPECT_TRUE(agrees({"obstructed"}, 20, 80, 0x800000)) << "a shadow falls on the rest";
  adw_bottom_sheet_set_modal(sheet, TRUE);  // what is not covered gets dark
  adw_bottom_sheet_set_open(sheet, FALSE);
  EXPECT_TRUE(agrees({}, 100, 100));
  adw_bottom_sheet_set_open(sheet, TRUE);
  EXPECT_TRUE(agrees({"obstructed"}, 0, 0));
  adw_bottom_sheet_set_open(sheet, FALSE);
  EXPECT_TRUE(agrees({}, 100, 100));
  auto* dialog = openDialog(painted(200, 100, 0, 0, 1));
  EXPECT_TRUE(agrees({"obstructed"}, 0, 0));
  adw_dialog_close(dialog);
  EXPECT_TRUE(agrees({}, 100, 100));
}

// The dialog is on top, whichever of the two came first.
TEST_F(DialogTest, TheKeyboardIsTheDialogsWhileAnInterstitialIsBelowIt) {
  auto* below = gtk_entry_new();
  present(below);
  giveKeyboard(window);
  gtk_widget_grab_focus(below);
  const auto told = std::make_shared<RecordingInterstitialDelegate>();
  told->host = gtk::hostViewController(window);
  for (const bool dialogFirst : {true, false}) {
    SCOPED_TRACE(dialogFirst);
    const auto interstitial = ready(told);
    const auto show = [&] {
      interstitial->show();
      EXPECT_TRUE(heardLast(*told, "appear"));
    };
    if (!dialogFirst) show();
    GtkWidget* entries[] = {gtk_entry_new(), gtk_entry_new()};
    auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    for (auto* entry : entries) gtk_box_append(GTK_BOX(box), entry);
    auto* dialog = openDialog(box);
    bool closed = false;
    g_signal_connect_swapped(dialog, "closed", G_CALLBACK(+[](bool* flag) { *flag = true; }), &closed);
    EXPECT_TRUE(runUntil([&] { return gtk_widget_get_mapped(box); }));
    if (dialogFirst) show();
    runFrames(GTK_WIDGET(window));
    xdotool("key x key Tab key y");
    EXPECT_TRUE(runUntil([&] { return textOf(entries[1]) == "y"; }));
    EXPECT_EQ(textOf(entries[0]), "x");
    xdotool("key Escape");
    EXPECT_TRUE(runUntil([&] { return closed; }));
    EXPECT_TRUE(told->heardLast("appear"));
    EXPECT_TRUE(runUntil(
        [&] { return focus() && !isFocusIn(below) && !gtk_widget_get_ancestor(focus(), ADW_TYPE_DIALOG); }));
    xdotool("key Escape");
    EXPECT_TRUE(heardLast(*told, "dismissed")) << "now it is its turn";
    EXPECT_TRUE(runUntil([&] { return isFocusIn(below); })) << "as before both";
  }
}

}  // namespace
}  // namespace velto::test
