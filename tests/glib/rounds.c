// What is left when banners, interstitials and, on the test kit, video ads have gone: rounds KEY-FILE SHOWN EMPTY BARE. So many
// rounds with an ad that is shown, without one, and without asking for one; each fourth is over before its answer is there.
// Objects are counted here (GLib counts them by itself only where it was built for that), memory by the leak checker that this
// is linked with.
#include <velto-glib.h>

static guint left, waiting;

static void gone(gpointer what, GObject* object) {
  --left;
}

static void watch(gpointer object) {
  ++left;
  g_object_weak_ref(object, gone, NULL);
}

#ifdef ON_KIT
#include <velto-test-glib.h>
#define AT_ONCE 20

static void turn(void) {
  velto_test_advance(20);
}

static VeltoClient* make_client(const char* settings, GError** error) {
  VeltoTestServer* server = velto_test_server_new();
  VeltoTestAnswer* answers[] = {velto_test_answer_new_ad("Tea", 320, 50), velto_test_answer_new_no_fill(),
                                velto_test_answer_new_no_fill()};
  const char* const endpoints[] = {NULL, "nofill", "late"};
  velto_test_answer_set_delay(answers[2], 20);
  for (guint i = 0; i < G_N_ELEMENTS(answers); g_object_unref(answers[i++]))
    velto_test_server_respond(server, endpoints[i], answers[i]);
  VeltoClient* client = velto_client_new("org.example.test");
  velto_client_set_publisher_key(client, "key");
  return client;  // the server is for all of the process
}

static void show(VeltoInterstitial* between, GtkBox* box, gboolean closes) {
  velto_interstitial_present(between, GTK_WIDGET(box));
  velto_test_advance(1000);
  if (velto_interstitial_get_state(between) != VELTO_INTERSTITIAL_STATE_PRESENTED)
    g_error("round: not presented");
  if (!closes) return;
  if (!velto_test_close(between)) g_error("round: not closed");
  velto_test_advance(1000);
}

static const char document[] =
    "<VAST><Ad><InLine><Creatives><Creative><Linear><Duration>00:00:10</Duration><MediaFiles>"
    "<MediaFile type='video/webm'>https://v.example/</MediaFile></MediaFiles></Linear></Creative>"
    "<Creative><CompanionAds><Companion width='300' height='60'><HTMLResource>Tea</HTMLResource>"
    "</Companion></CompanionAds></Creative></Creatives></InLine></Ad></VAST>";

static void show_video(GtkBox* box, guint seconds) {
  VeltoVideoAd* ad = velto_video_ad_new();
  watch(ad);
  velto_video_ad_load_document(ad, document);
  velto_test_advance(0);
  if (!velto_video_ad_play_in(ad, GTK_WIDGET(box), NULL)) g_error("round: no video ad plays");
  velto_test_advance(500);
  GList* companions = velto_video_ad_get_companions(ad);
  GtkWidget* companion = companions->data;
  g_list_free(companions);
  watch(companion);
  gtk_box_append(box, companion);
  velto_test_advance(seconds * 1000);
  if ((velto_video_ad_get_state(ad) == VELTO_VIDEO_AD_STATE_EMPTY) != (seconds > 10))
    g_error("round: the video ad is in state %d", velto_video_ad_get_state(ad));
  gtk_box_remove(box, companion);
  g_object_unref(ad);
}
#else
#define AT_ONCE 1

static void turn(void) {
  g_main_context_iteration(NULL, waiting + left > 0);
}

static VeltoClient* make_client(const char* settings, GError** error) {
  GKeyFile* file = g_key_file_new();
  VeltoClient* client = g_key_file_load_from_file(file, settings, G_KEY_FILE_NONE, error)
                            ? velto_client_new_from_key_file(file, error)
                            : NULL;
  g_key_file_unref(file);
  return client;
}

static void show(VeltoInterstitial* between, GtkBox* box, gboolean closes) {}  // which takes a second
static void show_video(GtkBox* box, guint seconds) {}
#endif

static void told(GObject* ad, GAsyncResult* result, gpointer data) {
  GError* error = NULL;
  const gboolean comes = VELTO_IS_BANNER(ad)
                             ? velto_banner_load_finish(VELTO_BANNER(ad), result, &error)
                             : velto_interstitial_load_finish(VELTO_INTERSTITIAL(ad), result, &error);
  const int code = GPOINTER_TO_INT(data);
  if (code < 0 ? !comes : !g_error_matches(error, VELTO_AD_ERROR, code))
    g_error("round: %s", error ? error->message : "an ad");
  g_clear_error(&error);
  --waiting;
}

typedef enum { BARE, GONE_BEFORE, TO_THE_END } Load;

static void play(GtkBox* box, const char* endpoint, int code, Load load) {
  velto_client_set_endpoint(velto_client_get_default(), endpoint);
  GtkWidget* banners[AT_ONCE];
  VeltoInterstitial* betweens[AT_ONCE];
  for (int i = 0; i < AT_ONCE; ++i) {
    watch(banners[i] = velto_banner_new(VELTO_BANNER_SIZE_BANNER));
    watch(gtk_widget_get_first_child(banners[i]));
    watch(betweens[i] = velto_interstitial_new());
    gtk_box_append(box, banners[i]);
    if (load == TO_THE_END) {
      waiting += 2;
      velto_banner_load_async(VELTO_BANNER(banners[i]), NULL, told, GINT_TO_POINTER(code));
      velto_interstitial_load_async(betweens[i], NULL, told, GINT_TO_POINTER(code));
    } else if (load == GONE_BEFORE) {
      velto_banner_load(VELTO_BANNER(banners[i]));
      velto_interstitial_load(betweens[i]);
    }
  }
  while (waiting > 0) turn();
  for (int i = 0; i < AT_ONCE; ++i) {
    if (load == TO_THE_END && code < 0) show(betweens[i], box, i % 2);
    gtk_box_remove(box, banners[i]);
    g_object_unref(betweens[i]);
    if (load == TO_THE_END) turn();  // one that is on the screen leaves it
  }
  if (load == TO_THE_END && code < 0)
    for (guint i = 0; i < AT_ONCE; ++i) show_video(box, i % 2 ? 2 : 12);
  while (left > 0) turn();
  while (g_main_context_iteration(NULL, FALSE)) continue;  // as an application that is idle now and then
}

int main(int count, char** words) {
  if (count != 5) return 2;
  gtk_init();
  GError* error = NULL;
  VeltoClient* client = make_client(words[1], &error);
  if (!client || !velto_client_start(client, &error)) g_error("%s", error->message);
  g_object_unref(client);
  GtkWidget* window = gtk_window_new();
  GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_window_set_child(GTK_WINDOW(window), box);
  gtk_window_present(GTK_WINDOW(window));
  const struct {
    const char* endpoint;
    int code;
    Load load;
  } kinds[] = {{NULL, -1, TO_THE_END}, {"nofill", VELTO_AD_ERROR_NO_FILL, TO_THE_END}, {NULL, 0, BARE}};
  for (guint kind = 0; kind < G_N_ELEMENTS(kinds); ++kind) {
    const guint64 rounds = g_ascii_strtoull(words[2 + kind], NULL, 10);
    for (guint64 i = 0; i < rounds / AT_ONCE; ++i)
      if (i % 4 == 3 && kinds[kind].load != BARE)
        play(GTK_BOX(box), "late", 0, GONE_BEFORE);
      else
        play(GTK_BOX(box), kinds[kind].endpoint, kinds[kind].code, kinds[kind].load);
  }
  gtk_window_destroy(GTK_WINDOW(window));
  return 0;
}
