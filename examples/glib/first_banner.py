#!/usr/bin/env python3
"""A game of levels with a banner below and an interstitial between two levels: first_banner.py [KEY FILE]"""
import sys

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Velto", "1.0")
from gi.repository import Gio, GLib, Gtk, Velto  # noqa: E402


def say(*words):
    print(*words, flush=True)


class Game(Gtk.Application):
    def __init__(self, key_file=None):
        super().__init__(application_id="org.example.levels", flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.key_file = key_file
        self.level = 1

    def do_startup(self):
        Gtk.Application.do_startup(self)
        if self.key_file:  # a server for tests
            settings = GLib.KeyFile()
            settings.load_from_file(self.key_file, GLib.KeyFileFlags.NONE)
            client = Velto.Client.new_from_key_file(settings)
        else:
            client = Velto.Client(application_id=self.get_application_id(), publisher_key="your-publisher-key")
        try:
            client.start()
        except GLib.Error as error:
            sys.exit(f"no ads: {error.message}")

    def do_activate(self):
        if self.get_active_window():
            return
        self.label = Gtk.Label(label="Level 1", vexpand=True)
        button = Gtk.Button(label="Next level")
        button.connect("clicked", lambda _: self.end_level())

        self.banner = Velto.Banner(size=Velto.BannerSize.BANNER, auto_refresh=True)
        self.banner.connect("loaded", lambda ad: say("banner: loaded", ad.props.ad_width, "x", ad.props.ad_height))
        self.banner.connect("failed", lambda _, error: say("banner: failed:", error.message))
        self.banner.connect("pressed", lambda _: say("banner: pressed"))

        self.between = Velto.Interstitial(targeting=Velto.Targeting(keywords=["games"]))
        self.between.connect("presented", lambda _: say("interstitial: presented"))
        self.load_interstitial()

        box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        for child in (self.label, button, self.banner):
            box.append(child)
        window = Gtk.ApplicationWindow(application=self, title="Levels", child=box)
        window.set_default_size(480, 320)
        window.present()
        self.banner.load()

    def load_interstitial(self):
        def loaded(ad, result):
            try:
                ad.load_finish(result)
                say("interstitial: loaded")
            except GLib.Error as error:
                say("interstitial: failed:", error.message)

        self.between.load_async(None, loaded)

    def end_level(self):
        if self.between.props.ready:
            self.between.present_async(self.get_active_window(), None, self.begin_level)
        else:
            self.begin_level(None, None)

    def begin_level(self, ad, result):
        if result:
            ad.present_finish(result)
            say("interstitial: closed")
            self.load_interstitial()
        self.level += 1
        self.label.set_label(f"Level {self.level}")


if __name__ == "__main__":
    sys.exit(Game(*sys.argv[1:]).run())
