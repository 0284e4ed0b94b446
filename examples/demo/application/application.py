#!/usr/bin/env python3
"""The demo's GTK application, with the GObject library: news with ads between the rows, and a game with an ad between two
levels. libadwaita's widgets where they are there. With --tour it plays by itself and takes pictures."""
import argparse
import os
import random

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Velto", "1.0")
try:
    gi.require_version("Adw", "1")
    from gi.repository import Adw
except (ValueError, ImportError):
    Adw = None
from gi.repository import Gio, GLib, Gtk, Velto  # noqa: E402

NEWS = [
    ("The first ferry runs an hour earlier", "Harbour"),
    ("Nets are mended on the quay", "Harbour"),
    ("The bakery has sold out by eight", "Town"),
    ("A lighthouse looks for a keeper", "Coast"),
    ("The orchestra plays in the old hall", "Culture"),
    ("Gulls know when school is out", "Town"),
    ("Two boats race for the lantern", "Sport"),
    ("The tide table for the week", "Coast"),
    ("A tea house opens by the pier", "Town"),
]
ROWS_BETWEEN_ADS = 3
LAMPS = 9
LAMPS_IN_A_LEVEL = 3


def keep_off(banner, _):
    """Ads keep off the edges of their row; without one the row is but a line."""
    banner.props.margin_top = banner.props.margin_bottom = 6 if banner.props.ad_height else 0


def news_page(banners):
    """A list as settings and feeds have it; each few rows there is a banner, which takes no room until it has an ad."""
    rows = Gtk.ListBox(selection_mode=Gtk.SelectionMode.NONE, css_classes=["boxed-list"], valign=Gtk.Align.START)
    for number, (title, place) in enumerate(NEWS):
        if number and number % ROWS_BETWEEN_ADS == 0:
            banners.append(Velto.Banner(auto_load=True, auto_refresh=True))
            banners[-1].connect("notify::ad-height", keep_off)
            rows.append(Gtk.ListBoxRow(child=banners[-1], activatable=False))
        if Adw:
            rows.append(Adw.ActionRow(title=title, subtitle=place))
        else:
            rows.append(Gtk.Label(label=f"{title}\n{place}", xalign=0, margin_start=12, margin_top=8, margin_bottom=8))
    for side in ("top", "bottom", "start", "end"):
        rows.set_property(f"margin-{side}", 18)
    content = Adw.Clamp(child=rows) if Adw else rows
    return Gtk.ScrolledWindow(child=content, hscrollbar_policy=Gtk.PolicyType.NEVER, vexpand=True)


class Game(Gtk.Box):
    """Press the lamp that is lit. After some of them the level is over, and an ad that has been loaded meanwhile comes."""

    def __init__(self):
        super().__init__(orientation=Gtk.Orientation.VERTICAL, spacing=12, margin_top=18, margin_bottom=18)
        self.level, self.pressed, self.lit = 1, 0, 0
        self.title = Gtk.Label(css_classes=["title-1"])
        self.progress = Gtk.ProgressBar(halign=Gtk.Align.CENTER, width_request=200)
        grid = Gtk.Grid(row_spacing=6, column_spacing=6, halign=Gtk.Align.CENTER, valign=Gtk.Align.CENTER, vexpand=True)
        self.lamps = [Gtk.Button(width_request=72, height_request=72) for _ in range(LAMPS)]
        for number, lamp in enumerate(self.lamps):
            lamp.connect("clicked", self.press, number)
            grid.attach(lamp, number % 3, number // 3, 1, 1)
        for child in (self.title, self.progress, grid):
            self.append(child)
        self.between = Velto.Interstitial(animation=Velto.Animation.FROM_RIGHT)
        self.begin_level()

    def begin_level(self):
        self.title.set_label(f"Level {self.level}")
        self.between.load()
        self.light(random.randrange(LAMPS))

    def light(self, number):
        self.lamps[self.lit].remove_css_class("suggested-action")
        self.lit = number
        self.lamps[number].add_css_class("suggested-action")
        self.progress.set_fraction(self.pressed / LAMPS_IN_A_LEVEL)

    def press(self, _, number):
        if number != self.lit:
            return
        self.pressed += 1
        if self.pressed < LAMPS_IN_A_LEVEL:
            return self.light((number + random.randrange(1, LAMPS)) % LAMPS)
        self.level, self.pressed = self.level + 1, 0
        if self.between.get_ready():
            self.between.present_async(self, None, self.closed)
        else:
            self.begin_level()

    def closed(self, between, result):
        try:
            between.present_finish(result)
        except GLib.Error as error:
            print(f"no ad between levels: {error.message}")
        self.begin_level()


class Window(Adw.ApplicationWindow if Adw else Gtk.ApplicationWindow):
    def __init__(self, **properties):
        super().__init__(title="Long Coast", default_width=560, default_height=640, **properties)
        self.banners = []
        self.game = Game()
        self.pages = Gtk.Stack(transition_type=Gtk.StackTransitionType.CROSSFADE)
        self.pages.add_titled(news_page(self.banners), "news", "News")
        self.pages.add_titled(self.game, "game", "Game")
        switcher = Gtk.StackSwitcher(stack=self.pages)
        if not Adw:
            self.set_titlebar(Gtk.HeaderBar(title_widget=switcher))
            self.set_child(self.pages)
            return
        header = Adw.HeaderBar(title_widget=switcher)
        if hasattr(Adw, "ToolbarView"):
            view = Adw.ToolbarView(content=self.pages)
            view.add_top_bar(header)
        else:
            view = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
            view.append(header)
            view.append(self.pages)
        self.set_content(view)


class Application(Adw.Application if Adw else Gtk.Application):
    def __init__(self, options):
        super().__init__(application_id="org.example.velto.LongCoast", flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.options = options

    def do_startup(self):
        (Adw.Application if Adw else Gtk.Application).do_startup(self)
        self.client = Velto.Client(
            application_id=self.get_application_id(),
            application_name="Long Coast",
            publisher_key="demo",
            ca_file=Gio.File.new_for_path(self.options.ca),
            host_map=GLib.Variant("a{ss}", {"*.velto.example": self.options.server}),
        )
        self.client.start()

    def do_activate(self):
        (self.get_active_window() or Window(application=self)).present()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--server", required=True, help="where velto-sandbox listens, such as 127.0.0.1:8443")
    parser.add_argument("--ca", required=True, help="the certificate to trust, as velto-sandbox names it")
    parser.add_argument("--data", help="the folder of the library's store (default: the user's data)")
    parser.add_argument("--tour", metavar="FOLDER", help="play by itself, and put pictures there")
    options = parser.parse_args()
    if options.data:
        os.environ["XDG_DATA_HOME"] = options.data
    application = Application(options)
    if not options.tour:
        return application.run()
    from tour import play  # beside this file

    return play(application, options.tour)


if __name__ == "__main__":
    raise SystemExit(main())
