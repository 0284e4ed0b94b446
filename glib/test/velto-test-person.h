// What a test does as the person before the screen, as the page of an ad, and as time.
#pragma once

#include <velto-glib.h>

G_BEGIN_DECLS

VELTO_PUBLIC void velto_test_advance(guint milliseconds);
VELTO_PUBLIC gboolean velto_test_tap(GObject* ad, double x, double y);
VELTO_PUBLIC gboolean velto_test_tap_link(GObject* ad, const char* address);
VELTO_PUBLIC gboolean velto_test_close(VeltoInterstitial* interstitial);

VELTO_PUBLIC char* velto_test_dup_markup(GObject* ad);
VELTO_PUBLIC gboolean velto_test_navigate(GObject* ad, const char* address);
VELTO_PUBLIC gboolean velto_test_finish_page(GObject* ad);
VELTO_PUBLIC gboolean velto_test_has_run(GObject* ad, const char* script_part);

G_END_DECLS
