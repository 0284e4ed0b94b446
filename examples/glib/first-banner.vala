// A game of levels with a banner below and an interstitial between two levels: first-banner [KEY FILE]
class Game : Gtk.Application {
    private string? settings;
    private int level = 1;
    private Gtk.Label label;
    private Velto.Interstitial between = new Velto.Interstitial ();

    public Game (string? settings) {
        Object (application_id: "org.example.levels", flags: ApplicationFlags.NON_UNIQUE);
        this.settings = settings;
    }

    public override void startup () {
        base.startup ();
        try {
            Velto.Client client;
            if (settings != null) { // a server for tests
                var file = new KeyFile ();
                file.load_from_file (settings, KeyFileFlags.NONE);
                client = new Velto.Client.from_key_file (file);
            } else {
                client = new Velto.Client (application_id) { publisher_key = "your-publisher-key" };
            }
            client.start ();
        } catch (Error error) {
            GLib.error ("no ads: %s", error.message);
        }
    }

    public override void activate () {
        if (active_window != null)
            return;
        label = new Gtk.Label ("Level 1") { vexpand = true };
        var button = new Gtk.Button.with_label ("Next level");
        button.clicked.connect (() => end_level.begin ());

        var banner = new Velto.Banner (Velto.BannerSize.BANNER) { auto_refresh = true };
        banner.loaded.connect (() => print ("banner: loaded %d x %d\n", banner.ad_width, banner.ad_height));
        banner.failed.connect (error => print ("banner: failed: %s\n", error.message));
        banner.pressed.connect (() => print ("banner: pressed\n"));

        between.presented.connect (() => print ("interstitial: presented\n"));
        load_interstitial.begin ();

        var box = new Gtk.Box (Gtk.Orientation.VERTICAL, 0);
        box.append (label);
        box.append (button);
        box.append (banner);
        var window = new Gtk.ApplicationWindow (this) {
            title = "Levels", child = box, default_width = 480, default_height = 320
        };
        window.present ();
        banner.load ();
    }

    private async void load_interstitial () {
        try {
            yield between.load_async (null);
            print ("interstitial: loaded\n");
        } catch (Error error) {
            print ("interstitial: failed: %s\n", error.message);
        }
    }

    private async void end_level () {
        if (between.ready) {
            try {
                yield between.present_async (active_window, null);
                print ("interstitial: closed\n");
            } catch (Error error) {
                print ("interstitial: failed: %s\n", error.message);
            }
            load_interstitial.begin ();
        }
        label.label = @"Level $(++level)";
    }
}

int main (string[] words) {
    return new Game (words.length > 1 ? words[1] : null).run ();
}
