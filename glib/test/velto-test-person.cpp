// The person, the page and time.
#include <algorithm>

#include "velto-test-ground-private.h"
#include "velto-test-slot-private.h"

namespace {

using velto::headless::HostWindow;
using velto::headless::RecordingWebView;
using velto_test::TestGround;
using velto_test::TestSlot;

struct Page {
  RecordingWebView* web = nullptr;  // null: there is none
  std::shared_ptr<HostWindow> kept;
  HostWindow* window = nullptr;
  explicit operator bool() const { return web; }
};

Page pageOf(GObject* ad) {
  TestGround::current().settle();
  Page page;
  if (VELTO_IS_BANNER(ad)) {
    const auto* slot = TestSlot::of(gtk_widget_get_first_child(GTK_WIDGET(ad)));
    if (slot) page = {slot->page(), nullptr, slot->window()};
    return page;
  }
  page.kept = TestGround::current().windowOf(ad);
  page.window = page.kept.get();
  if (!page.window ||
      velto_interstitial_get_state(VELTO_INTERSTITIAL(ad)) != VELTO_INTERSTITIAL_STATE_PRESENTED)
    return page;
  // What is presented lies over all banners of the window.
  const auto& pages = TestGround::current().platform().webViews();
  const auto found = std::find_if(pages.rbegin(), pages.rend(), [&](const auto* web) {
    return web->webView().isDescendantOfView(page.window->view()) &&
           !TestGround::current().isInSlot(web->webView());
  });
  if (found != pages.rend()) page.web = *found;
  return page;
}

bool isAd(GObject* object) {
  return VELTO_IS_BANNER(object) || VELTO_IS_INTERSTITIAL(object);
}

// A video ad has no page; a person taps what lies over it.
bool tapVideo(GObject* ad, velto::CGPoint point) {
  TestGround::current().settle();
  const auto window = TestGround::current().windowOf(ad);
  if (!window || velto_video_ad_get_state(VELTO_VIDEO_AD(ad)) < VELTO_VIDEO_AD_STATE_PLAYING) return false;
  const auto place = TestGround::current().placeOf(ad);
  auto& view = place ? *place : window->view();
  if (!view.isInWindow() || view.isHidden() || !view.bounds().contains(point)) return false;
  window->tap(window->view().convertPointFromView(point, view));
  return true;
}

// What an ad does is over when the call returns, as far as no time passes in it.
template <class Work>
gboolean play(const char* function, Work&& work) {
  bool done = false;
  velto_glib::guarded(function, [&] {
    done = work();
    TestGround::current().settle();
  });
  return done;
}

}  // namespace

/**
 * velto_test_advance:
 * @milliseconds: how much time passes
 *
 * Lets time pass for ads, in a moment: refreshes, delays, animations, countdowns. Whatever it brings has happened when this
 * returns, also in the application's main context and in the layout of its windows. 0 does what is due.
 *
 * Sources of GLib's own, as [func@GLib.timeout_add] makes them, know nothing of this time.
 *
 * Since: 1.0
 */
void velto_test_advance(guint milliseconds) {
  velto_return_if_elsewhere();
  play(__func__, [&] {
    const auto settled = [] {
      TestGround::current().settle();
      return false;
    };
    const auto world = TestGround::current().kept();
    world->mainQueue().runUntil(settled, std::chrono::milliseconds(milliseconds));
    return true;
  });
}

/**
 * velto_test_tap:
 * @ad: a [class@Velto.Banner], [class@Velto.Interstitial] or [class@Velto.VideoAd]
 * @x: points from the ad's left edge
 * @y: points from the ad's upper edge
 *
 * Taps an ad.
 *
 * Returns: whether there is an ad, on the screen and in that place
 *
 * Since: 1.0
 */
gboolean velto_test_tap(GObject* ad, double x, double y) {
  g_return_val_if_fail(isAd(ad) || VELTO_IS_VIDEO_AD(ad), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return play(__func__, [&] {
    if (VELTO_IS_VIDEO_AD(ad)) return tapVideo(ad, {x, y});
    const auto page = pageOf(ad);
    if (!page || !page.window || !page.window->view().isInWindow()) return false;
    auto& web = page.web->webView();
    const auto point = page.window->view().convertPointFromView({x, y}, web);
    if (!web.bounds().contains({x, y}) || !page.window->view().bounds().contains(point)) return false;
    page.window->tap(point);
    return true;
  });
}

/**
 * velto_test_tap_link:
 * @ad: a [class@Velto.Banner] or [class@Velto.Interstitial]
 * @address: where the link leads
 *
 * Taps an ad in its middle, where the page has a link.
 *
 * [method@VeltoTest.Server.dup_opened] tells what that has opened.
 *
 * Returns: whether there is an ad on the screen
 *
 * Since: 1.0
 */
gboolean velto_test_tap_link(GObject* ad, const char* address) {
  g_return_val_if_fail(isAd(ad), FALSE);
  g_return_val_if_fail(address, FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return play(__func__, [&] {
    const auto page = pageOf(ad);
    if (!page || !page.window || !page.window->view().isInWindow()) return false;
    page.window->tapLink(*page.web, address);
    return true;
  });
}

/**
 * velto_test_close:
 * @interstitial: an interstitial
 *
 * Closes an interstitial as a person does. An ad can be closed from the moment on at which its close button comes, and is
 * gone when the button's animation is over, so let some time pass before and after.
 *
 * Returns: whether it is on the screen
 *
 * Since: 1.0
 */
gboolean velto_test_close(VeltoInterstitial* interstitial) {
  g_return_val_if_fail(VELTO_IS_INTERSTITIAL(interstitial), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return play(__func__, [&] {
    TestGround::current().settle();
    const auto window = TestGround::current().windowOf(G_OBJECT(interstitial));
    const bool isThere = velto_interstitial_get_state(interstitial) == VELTO_INTERSTITIAL_STATE_PRESENTED;
    return window && isThere && window->pressEscape();
  });
}

/**
 * velto_test_dup_markup:
 * @ad: a [class@Velto.Banner] or [class@Velto.Interstitial]
 *
 * Gets the page of an ad as it was loaded. That of an interstitial is there once it is presented.
 *
 * Returns: (nullable) (transfer full): the markup
 *
 * Since: 1.0
 */
char* velto_test_dup_markup(GObject* ad) {
  g_return_val_if_fail(isAd(ad), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto page = pageOf(ad);
  return page ? g_strdup(page.web->html().c_str()) : nullptr;
}

/**
 * velto_test_navigate:
 * @ad: a [class@Velto.Banner] or [class@Velto.Interstitial]
 * @address: an address, such as "mraid://expand"
 *
 * Plays the page: its script goes to an address. This is how pages give commands.
 *
 * Returns: whether there is a page
 *
 * Since: 1.0
 */
gboolean velto_test_navigate(GObject* ad, const char* address) {
  g_return_val_if_fail(isAd(ad), FALSE);
  g_return_val_if_fail(address, FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return play(__func__, [&] {
    const auto page = pageOf(ad);
    if (page) page.web->navigate(address);
    return bool(page);
  });
}

/**
 * velto_test_finish_page:
 * @ad: a [class@Velto.Banner] or [class@Velto.Interstitial]
 *
 * Plays the page: it has loaded, and says so. Needed where [property@VeltoTest.Server:pages-finish] is off.
 *
 * Returns: whether there is a page
 *
 * Since: 1.0
 */
gboolean velto_test_finish_page(GObject* ad) {
  g_return_val_if_fail(isAd(ad), FALSE);
  velto_return_val_if_elsewhere(FALSE);
  return play(__func__, [&] {
    if (const auto page = pageOf(ad)) page.web->finish();
    const auto page = pageOf(ad);
    if (page) page.web->navigate("velto://loadFinished");
    return bool(page);
  });
}

/**
 * velto_test_has_run:
 * @ad: a [class@Velto.Banner] or [class@Velto.Interstitial]
 * @script_part: a part of a script
 *
 * Gets whether the page was given a script that contains a text, such as one that tells it of a new state.
 *
 * Returns: whether it was
 *
 * Since: 1.0
 */
gboolean velto_test_has_run(GObject* ad, const char* script_part) {
  g_return_val_if_fail(isAd(ad), FALSE);
  g_return_val_if_fail(script_part, FALSE);
  velto_return_val_if_elsewhere(FALSE);
  const auto page = pageOf(ad);
  return page && page.web->hasRun(script_part);
}
