#!/usr/bin/env python3
"""What a programmer hears who calls the GObject library wrongly, before a client was started: misuse.py LIBRARY SYMBOLS"""
import ctypes
import pathlib
import sys
import threading
import unittest

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Velto", "1.0")
from gi.repository import GLib, GObject, Gtk, Velto  # noqa: E402

SYMBOLS, LIBRARY = pathlib.Path(sys.argv.pop(2)).read_text().split(), ctypes.CDLL(sys.argv.pop(1))
FUNCTIONS = [name for name in SYMBOLS if not name.endswith(("_get_type", "_quark"))]
WITHOUT_ARGUMENTS = ["velto_client_get_default", "velto_interstitial_new", "velto_targeting_new", "velto_video_ad_new"]


def call(name, *arguments):
    """The arguments that are not given are zero."""
    function = getattr(LIBRARY, name)
    function.restype = ctypes.c_void_p
    return function(*map(ctypes.c_void_p, (*arguments, *(6 - len(arguments)) * [0])))


TEXT = ctypes.create_string_buffer(b"org.example.app")
WIDGET = call("velto_banner_new", 1)
OBJECTS = {
    "velto_banner": WIDGET,
    "velto_client": call("velto_client_new", ctypes.addressof(TEXT)),
    "velto_interstitial": call("velto_interstitial_new"),
    "velto_targeting": call("velto_targeting_new"),
    "velto_timeline": hash(TIMELINE := Velto.Timeline()),
    "velto_video_ad_companion": hash(COMPANION := Velto.VideoAdCompanion()),
    "velto_video_ad_info": hash(INFO := Velto.VideoAdInfo()),
    "velto_video_ad": call("velto_video_ad_new"),
    "velto_vast_request": call("velto_vast_request_new", ctypes.addressof(TEXT)),
    "velto_adapter_ad": call("velto_adapter_ad_new_full_screen", WIDGET),
}


def object_of(function):
    return next((made for prefix, made in OBJECTS.items() if function.startswith(prefix + "_")), None)


class MisuseTest(unittest.TestCase):
    def setUp(self):
        self.told = []
        levels = GLib.LogLevelFlags.LEVEL_CRITICAL
        handler = GLib.log_set_handler("Velto", levels, lambda _, level, text, data: self.told.append(text), None)
        self.addCleanup(GLib.log_remove_handler, "Velto", handler)

    def assertTold(self, pattern, function, *arguments, on_thread=False):
        with self.subTest(function=function, arguments=arguments):
            self.told.clear()
            if on_thread:
                thread = threading.Thread(target=call, args=(function, *arguments))
                thread.start()
                thread.join()
            else:
                call(function, *arguments)
            self.assertEqual(len(self.told), 1, self.told)
            self.assertRegex(self.told[0], f"^{function}: .*{pattern}")

    def test_no_object_and_another_one(self):
        for function in set(FUNCTIONS) - set(WITHOUT_ARGUMENTS):
            if function != "velto_banner_new":  # takes any number
                self.assertTold("assertion '.*' failed", function)
            if "_new" not in function and function != "velto_ad_error_get_reason":
                other = OBJECTS["velto_client" if object_of(function) == WIDGET else "velto_banner"]
                self.assertTold("VELTO_IS_", function, other)

    def test_another_thread(self):
        context = GLib.MainContext.default()
        self.assertTrue(context.acquire())
        for function in FUNCTIONS:
            if object_of(function) or function in WITHOUT_ARGUMENTS or "_new" in function:
                self.assertTold("g_idle_add", function, object_of(function), on_thread=True)
        context.release()

    def test_out_of_range(self):
        cases = [("velto_targeting", "age", -1, "age >= 0"), ("velto_targeting", "year_of_birth", -1, "year_of_birth >= 0"),
                 ("velto_client", "request_timeout", 0, "seconds >= 1"), ("velto_client", "least_time_under_touch", -1, "milliseconds <= ")]
        for made in (Velto.Banner, Velto.Client, Velto.Interstitial, Velto.Targeting):
            for property in made.list_properties():
                is_own = property.owner_type == made.__gtype__ and property.flags & GObject.ParamFlags.WRITABLE
                if is_own and property.value_type.is_a(GObject.TYPE_ENUM):
                    use = f"99 is no {property.value_type.name}: use VELTO_[A-Z_]* to VELTO_"
                    cases.append((f"velto_{made.__name__.lower()}", property.name.replace("-", "_"), 99, use))
        self.assertEqual(len(cases), 14)
        for prefix, name, number, use in cases:
            self.assertTold(use, f"{prefix}_set_{name}", OBJECTS[prefix], number % 2**32)

    def test_before_the_start(self):
        for kind in ("banner", "interstitial"):
            self.assertTold("call velto_client_start", f"velto_{kind}_load", OBJECTS[f"velto_{kind}"])
        for function in ("load", "load_document"):
            self.assertTold("call velto_client_start", f"velto_video_ad_{function}", OBJECTS["velto_video_ad"], ctypes.addressof(TEXT))
        heard = []
        for ad, *what in ((Velto.Banner(),), (Velto.Interstitial(),), (Velto.VideoAd(), "https://ads.example/")):
            ad.load_async(*what, None, lambda *told: heard.append(told))
        while len(heard) < 3:
            GLib.MainContext.default().iteration(True)
        for ad, result in heard:
            with self.assertRaisesRegex(GLib.Error, "velto_client_start"):
                ad.load_finish(result)
        with self.assertRaisesRegex(GLib.Error, "velto_client_start"):
            Velto.VastRequest(host="video.example.com").build_url()

    def test_nothing_but_the_object(self):
        """What cannot be checked, such as whose widget it is, is taken for nothing."""
        for function in FUNCTIONS:
            if object_of(function) and "_new" not in function:
                call(function, object_of(function))
        self.assertTrue(Gtk.is_initialized())


if __name__ == "__main__":
    unittest.main(verbosity=2)
