// A game of levels with a banner below and an interstitial between two levels: first-banner [KEY FILE]
#include <velto-glib.h>

typedef struct {
  const char *settings;  // the key file of a server for tests, or NULL
  int level;
  GtkWidget *label;
  GtkWidget *window;
  VeltoInterstitial *between;
} Game;

static void say_event (GObject *ad, const char *words) { g_print ("%s\n", words); }

static void say_failed (VeltoBanner *banner, GError *error, Game *game)
{
  g_print ("banner: failed: %s\n", error->message);
}

static void say_loaded (VeltoBanner *banner, Game *game)
{
  g_print ("banner: loaded %d x %d\n", velto_banner_get_ad_width (banner), velto_banner_get_ad_height (banner));
}

static void interstitial_loaded (GObject *ad, GAsyncResult *result, gpointer game)
{
  g_autoptr (GError) error = NULL;
  if (velto_interstitial_load_finish (VELTO_INTERSTITIAL (ad), result, &error))
    g_print ("interstitial: loaded\n");
  else
    g_print ("interstitial: failed: %s\n", error->message);
}

static void begin_level (Game *game)
{
  g_autofree char *text = g_strdup_printf ("Level %d", ++game->level);
  gtk_label_set_label (GTK_LABEL (game->label), text);
}

static void interstitial_closed (GObject *ad, GAsyncResult *result, gpointer game)
{
  if (velto_interstitial_present_finish (VELTO_INTERSTITIAL (ad), result, NULL))
    g_print ("interstitial: closed\n");
  velto_interstitial_load_async (VELTO_INTERSTITIAL (ad), NULL, interstitial_loaded, game);
  begin_level (game);
}

static void end_level (GtkButton *button, Game *game)
{
  if (velto_interstitial_get_ready (game->between))
    velto_interstitial_present_async (game->between, game->window, NULL, interstitial_closed, game);
  else
    begin_level (game);
}

static void startup (GApplication *application, Game *game)
{
  g_autoptr (GError) error = NULL;
  g_autoptr (GKeyFile) settings = g_key_file_new ();
  g_autoptr (VeltoClient) client = NULL;
  if (!game->settings) {
    client = velto_client_new (g_application_get_application_id (application));
    velto_client_set_publisher_key (client, "your-publisher-key");
  } else if (g_key_file_load_from_file (settings, game->settings, G_KEY_FILE_NONE, &error)) {
    client = velto_client_new_from_key_file (settings, &error);
  }
  if (!client || !velto_client_start (client, &error))
    g_error ("no ads: %s", error->message);
}

static void activate (GtkApplication *application, Game *game)
{
  if (game->window)
    return gtk_window_present (GTK_WINDOW (game->window));
  game->label = gtk_label_new ("Level 1");
  gtk_widget_set_vexpand (game->label, TRUE);
  GtkWidget *button = gtk_button_new_with_label ("Next level");
  g_signal_connect (button, "clicked", G_CALLBACK (end_level), game);

  GtkWidget *banner = velto_banner_new (VELTO_BANNER_SIZE_BANNER);
  velto_banner_set_auto_refresh (VELTO_BANNER (banner), TRUE);
  g_signal_connect (banner, "loaded", G_CALLBACK (say_loaded), game);
  g_signal_connect (banner, "failed", G_CALLBACK (say_failed), game);
  g_signal_connect (banner, "pressed", G_CALLBACK (say_event), "banner: pressed");

  game->between = velto_interstitial_new ();
  g_signal_connect (game->between, "presented", G_CALLBACK (say_event), "interstitial: presented");
  velto_interstitial_load_async (game->between, NULL, interstitial_loaded, game);

  GtkWidget *box = gtk_box_new (GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append (GTK_BOX (box), game->label);
  gtk_box_append (GTK_BOX (box), button);
  gtk_box_append (GTK_BOX (box), banner);
  game->window = gtk_application_window_new (application);
  gtk_window_set_title (GTK_WINDOW (game->window), "Levels");
  gtk_window_set_default_size (GTK_WINDOW (game->window), 480, 320);
  gtk_window_set_child (GTK_WINDOW (game->window), box);
  gtk_window_present (GTK_WINDOW (game->window));
  velto_banner_load (VELTO_BANNER (banner));
}

int main (int count, char **words)
{
  Game game = { .settings = count > 1 ? words[1] : NULL, .level = 1 };
  g_autoptr (GtkApplication) application = gtk_application_new ("org.example.levels", G_APPLICATION_NON_UNIQUE);
  g_signal_connect (application, "startup", G_CALLBACK (startup), &game);
  g_signal_connect (application, "activate", G_CALLBACK (activate), &game);
  int code = g_application_run (G_APPLICATION (application), 1, words);
  g_clear_object (&game.between);
  return code;
}
