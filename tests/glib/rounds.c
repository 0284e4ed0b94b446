// What is left when banners and interstitials have gone: rounds KEY-FILE SHOWN EMPTY BARE. So many rounds with an ad that is
// shown, without one, and without asking for one; each fourth is over before its answer is there. Objects are counted here
// (GLib counts them by itself only where it was built for that), memory by the leak checker that this is linked with.
#include <velto-glib.h>

static guint left, waiting;

static void gone(gpointer what, GObject* object) {
  --left;
}

static void watch(gpointer object) {
  ++left;
  g_object_weak_ref(object, gone, NULL);
}

static void told(GObject* ad, GAsyncResult* result, gpointer data) {
  GError* error = NULL;
  const gboolean comes = VELTO_IS_BANNER(ad) ? velto_banner_load_finish(VELTO_BANNER(ad), result, &error)
                                             : velto_interstitial_load_finish(VELTO_INTERSTITIAL(ad), result, &error);
  const int code = GPOINTER_TO_INT(data);
  if (code < 0 ? !comes : !g_error_matches(error, VELTO_AD_ERROR, code)) g_error("round: %s", error ? error->message : "an ad");
  g_clear_error(&error);
  --waiting;
}

typedef enum { BARE, GONE_BEFORE, TO_THE_END } Load;

static void play(GtkBox* box, const char* endpoint, int code, Load load) {
  velto_client_set_endpoint(velto_client_get_default(), endpoint);
  GtkWidget* banner = velto_banner_new(VELTO_BANNER_SIZE_BANNER);
  VeltoInterstitial* between = velto_interstitial_new();
  watch(banner);
  watch(gtk_widget_get_first_child(banner));
  watch(between);
  gtk_box_append(box, banner);
  if (load == TO_THE_END) {
    waiting = 2;
    velto_banner_load_async(VELTO_BANNER(banner), NULL, told, GINT_TO_POINTER(code));
    velto_interstitial_load_async(between, NULL, told, GINT_TO_POINTER(code));
  } else if (load == GONE_BEFORE) {
    velto_banner_load(VELTO_BANNER(banner));
    velto_interstitial_load(between);
  }
  while (waiting > 0) g_main_context_iteration(NULL, TRUE);
  gtk_box_remove(box, banner);
  g_object_unref(between);
  while (left > 0) g_main_context_iteration(NULL, TRUE);
  while (g_main_context_iteration(NULL, FALSE)) continue;  // as an application that is idle now and then
}

int main(int count, char** words) {
  if (count != 5) return 2;
  gtk_init();
  GKeyFile* settings = g_key_file_new();
  GError* error = NULL;
  g_key_file_load_from_file(settings, words[1], G_KEY_FILE_NONE, &error);
  VeltoClient* client = error ? NULL : velto_client_new_from_key_file(settings, &error);
  if (!client || !velto_client_start(client, &error)) g_error("%s", error->message);
  g_object_unref(client);
  g_key_file_unref(settings);
  GtkWidget* window = gtk_window_new();
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_window_set_child(GTK_WINDOW(window), box);
  gtk_window_present(GTK_WINDOW(window));
  const struct { const char* endpoint; int code; Load load; } kinds[] = {
      {NULL, -1, TO_THE_END}, {"nofill", VELTO_AD_ERROR_NO_FILL, TO_THE_END}, {NULL, 0, BARE}};
  for (guint kind = 0; kind < G_N_ELEMENTS(kinds); ++kind) {
    const guint64 rounds = g_ascii_strtoull(words[2 + kind], NULL, 10);
    for (guint64 i = 0; i < rounds; ++i)
      if (i % 4 == 3 && kinds[kind].load != BARE)
        play(GTK_BOX(box), "late", 0, GONE_BEFORE);
      else
        play(GTK_BOX(box), kinds[kind].endpoint, kinds[kind].code, kinds[kind].load);
  }
  gtk_window_destroy(GTK_WINDOW(window));
  return 0;
}
