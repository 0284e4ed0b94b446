#!/usr/bin/env python3
"""A kiosk: a page with a banner that changes, and counts of its ads for whoever watches a fleet of them, over HTTP on this
machine alone: kiosk.py KEY-FILE [PORT [SECONDS]]"""
import sys

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Soup", "3.0")
gi.require_version("Velto", "1.0")
from gi.repository import Gio, GLib, Gtk, Soup, Velto  # noqa: E402

OPEN_METRICS = "application/openmetrics-text; version=1.0.0; charset=utf-8"


class Kiosk(Gtk.Application):
    def __init__(self, key_file, port="9464", seconds="30"):
        super().__init__(application_id="org.example.kiosk", flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.key_file, self.port, self.seconds = key_file, int(port), int(seconds)

    def do_startup(self):
        Gtk.Application.do_startup(self)
        settings = GLib.KeyFile()
        settings.load_from_file(self.key_file, GLib.KeyFileFlags.NONE)
        self.client = Velto.Client.new_from_key_file(settings)
        self.client.props.collect_metrics = True
        self.client.start()
        self.server = Soup.Server()
        self.server.add_handler("/metrics", self.scraped)
        self.server.listen_local(self.port, Soup.ServerListenOptions.IPV4_ONLY)
        print(f"{self.server.get_uris()[0].to_string()}metrics", flush=True)

    def scraped(self, server, message, path, query):
        message.set_status(Soup.Status.OK, None)
        message.set_response(OPEN_METRICS, Soup.MemoryUse.COPY, self.client.dup_metrics().encode())

    def do_activate(self):
        banner = Velto.Banner(placement="entrance", auto_load=True, auto_refresh=True, refresh_interval=self.seconds)
        banner.connect("loaded", lambda banner: print(f"ad {banner.get_timelines()[-1].get_load()}", flush=True))
        box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        for child in (Gtk.Label(label="Welcome", vexpand=True), banner):
            box.append(child)
        Gtk.ApplicationWindow(application=self, title="Kiosk", child=box, default_width=480, default_height=320).present()


if __name__ == "__main__":
    Kiosk(*sys.argv[1:]).run()
