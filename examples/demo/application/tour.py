"""Plays the application by itself, on an X display with xdotool: waits for what must happen, looks at the pixels, and takes
a picture of each state of a banner and of an interstitial."""
import os
import subprocess

import gi

gi.require_version("GdkX11", "4.0")
from gi.repository import GdkPixbuf, GdkX11, GLib, Graphene, Velto  # noqa: E402

BAKERY, ORCHESTRA = (0x0B, 0x6E, 0x4F), (0xC9, 0x18, 0x4A)  # the frames that the ads' pages draw around themselves
BOOK, SHOP = (0xFF, 0xFF, 0xFF), (0x7A, 0x4A, 0x2B)  # and the buttons that they show when they are larger
PATIENCE = 120  # seconds; a slow machine is no failure


class Tour:
    def __init__(self, application, folder):
        self.client, self.window, self.folder = application.client, application.get_active_window(), folder

    def wait(self, what, condition):
        context, late, due = GLib.MainContext.default(), [], []
        looks = GLib.timeout_add(100, lambda: due.append(1) or True)
        deadline = GLib.timeout_add_seconds(PATIENCE, lambda: late.append(1))
        while not late and not (due and condition()):
            due.clear()
            context.iteration(True)
        GLib.source_remove(looks)
        if late:
            self.photograph("missing")
            raise SystemExit(f"missing: {what}")
        GLib.source_remove(deadline)

    def photograph(self, name):
        """The window as it stands on the display."""
        os.makedirs(self.folder, exist_ok=True)
        file = os.path.join(self.folder, f"{name}.png")
        source = ["ximagesrc", f"xid={self.identifier()}", "num-buffers=1", "use-damage=false", "show-pointer=false"]
        words = ["gst-launch-1.0", "-q", *source, "!", "videoconvert", "!", "pngenc", "!", "filesink", f"location={file}"]
        subprocess.run(words, check=True)
        return file

    def place(self, widget, x, y):
        """In the window, as the display sees it."""
        _, point = widget.compute_point(self.window, Graphene.Point().init(x, y))
        dx, dy = self.window.get_surface_transform()
        return int(point.x + dx), int(point.y + dy)

    def pixels(self, widget, x, top, end):
        """Those of a column, from the top to before the end."""
        picture = GdkPixbuf.Pixbuf.new_from_file(self.photograph("now"))
        data, row, size = picture.get_pixels(), picture.get_rowstride(), picture.get_n_channels()
        x, top, length = *self.place(widget, x, top), end - top
        starts = [y * row + x * size for y in range(top, top + length)]
        return [tuple(data[at : at + 3]) for at in starts]

    def pixel(self, widget, x, y):
        return self.pixels(widget, x, y, y + 1)[0]

    def tap(self, widget, x, y):
        x, y = self.place(widget, x, y)
        subprocess.run(["xdotool", "mousemove", "--window", self.identifier(), str(x), str(y), "click", "1"], check=True)

    def press(self, key):
        subprocess.run(["xdotool", "windowfocus", "--sync", self.identifier(), "key", key], check=True)

    def identifier(self):
        """Of the window on the display. A search among all windows fails when one of them goes meanwhile."""
        return str(GdkX11.X11Surface.get_xid(self.window.get_surface()))

    def shows(self, banner):
        return banner.props.ad_width > 0 and self.pixel(banner, banner.get_width() // 2, 1) == BAKERY

    def news(self):
        banners = self.window.banners
        self.wait("the banners in sight", lambda: all(self.shows(banner) for banner in banners[:2]))
        self.photograph("application-news")

    def states(self):
        """Of the first banner, with ads that a tap makes larger."""
        banner = self.window.banners[0]
        for other in self.window.banners[1:]:
            other.clear()
        banner.props.collapse = False
        banner.clear()
        self.wait("an empty banner keeps its room", lambda: banner.get_height() == 50 and self.pixel(banner, banner.get_width() // 2, 1) != BAKERY)
        self.photograph("banner-empty")
        banner.load()
        assert banner.props.state == Velto.BannerState.LOADING
        self.photograph("banner-loading")
        self.wait("a new one is shown", lambda: self.shows(banner))
        self.photograph("banner-shown")
        larger = (("expanding", Velto.BannerState.EXPANDED, BOOK), ("resizing", Velto.BannerState.RESIZED, SHOP))
        for key, state, button in larger:
            self.client.set_publisher_key(key)
            loaded = []
            handler = banner.connect("loaded", loaded.append)
            banner.load()
            middle = banner.get_width() // 2
            self.wait(f"the {key} ad", lambda: loaded and self.pixel(banner, middle, 1) != BAKERY)
            banner.disconnect(handler)
            above = self.pixel(banner, middle, -60)
            self.tap(banner, middle, 25)
            self.wait(f"the {key} ad is larger", lambda: banner.props.state == state and self.pixel(banner, middle, -60) != above)
            # A page fills its new room only when it has heard of it.
            self.wait("its page shows more", lambda: button in self.pixels(banner, middle - 50, -60, 240))
            self.photograph(f"banner-{state.value_nick}")
            self.press("Escape")
            banner.clear()
        self.client.set_publisher_key("demo")

    def game(self):
        game = self.window.game
        closed = []
        game.between.connect("closed", closed.append)
        self.window.pages.set_visible_child_name("game")
        self.wait("an ad for the end of the level", game.between.get_ready)
        self.wait("the page has come", lambda: not self.window.pages.props.transition_running)
        self.photograph("application-game")
        for number in range(3):
            self.tap(game.lamps[game.lit], 36, 36)
            self.wait("the lamp was pressed", lambda: (game.level, game.pressed) in ((1, number + 1), (2, 0)))
        content = self.window.get_child()
        self.wait("the ad covers the window", lambda: self.pixel(content, 1, content.get_height() // 2) == ORCHESTRA)
        self.photograph("interstitial")
        self.press("Escape")
        self.wait("the next level", lambda: closed and game.title.get_label() == "Level 2")


def play(application, folder):
    application.register()
    application.activate()
    tour = Tour(application, folder)
    for part in (tour.news, tour.states, tour.game):
        part()
    os.remove(os.path.join(folder, "now.png"))
    print(f"the application: everything happened as expected; pictures in {folder}")
    return 0
