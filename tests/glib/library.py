#!/usr/bin/env python3
"""The GObject library as another language sees it, against velto-sandbox or on the test kit's ground: library.py SANDBOX | kit"""
import contextlib
import gc
import json
import os
import shutil
import subprocess
import sys
import unittest

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Velto", "1.0")
gi.require_version("VeltoTest", "1.0")
from gi.repository import Gio, GLib, GObject, Gtk, Velto, VeltoTest  # noqa: E402
from sandbox import AD_SERVER, LONG_AD, VIDEO_AD, Sandbox, answer, film  # noqa: E402

CRITICAL = GLib.LogLevelFlags.LEVEL_CRITICAL
MEDIATED = {
    "headers": {"x-content": "mediation", "x-width": 320, "x-height": 50},
    "body": {"json": {"mediation": [{"cn": "VeltoAdmobBannerAdapter", "e": {"adunit": "north"}}]}},
}
RULES = [
    ({"kind": "download", "path": "/late.xml"}, [{**answer(), "delayMs": 600000}]),
    ({"kind": "ad", "endpoint": "nofill"}, [204]),
    ({"kind": "ad", "endpoint": "gives-up"}, [answer(says="failLoad")]),
    ({"kind": "ad", "endpoint": "late"}, [{**answer(), "delayMs": 600000}]),
    ({"kind": "ad", "endpoint": "mediated"}, [MEDIATED]),
    ({"kind": "ad"}, [answer()]),
]
DOCUMENTS = {"video.xml": VIDEO_AD, "empty.xml": "<VAST version='4.2'/>"}


def run_until(condition):
    if on_kit:
        return any(condition() or VeltoTest.advance(50) for _ in range(1000)) or unittest.TestCase().fail("it did not come")
    context, late = GLib.MainContext.default(), []
    looks = GLib.timeout_add(5, lambda: True)
    deadline = GLib.timeout_add_seconds(120, lambda: late.append(1))
    while not condition() and not late:
        context.iteration(True)
    GLib.source_remove(looks)
    if late:
        raise AssertionError("it did not come")
    GLib.source_remove(deadline)


def outcome(begin, finish, *arguments, cancellable=None):
    """What an asynchronous call ends with: True, or its error."""
    heard = []

    def ended(_, result):
        try:
            heard.append(finish(result))
        except GLib.Error as error:
            heard.append(error)

    begin(*arguments, cancellable, ended)
    run_until(lambda: heard)
    return heard[0]


def load(ad, **how):
    return outcome(ad.load_async, ad.load_finish, **how)


class Network(GObject.Object, Velto.Adapter):
    """Another network. It keeps the request until it is told to answer."""

    def __init__(self):
        super().__init__()
        self.asked = []

    def do_load(self, request):
        self.asked.append(request)


class LibraryTest(unittest.TestCase):
    def setUp(self):
        self.client = Velto.Client.get_default()
        self.box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        self.window = Gtk.Window(child=self.box, default_width=480, default_height=320)
        self.window.present()
        run_until(self.box.get_mapped)

    def tearDown(self):
        self.client.set_endpoint(None)
        self.window.destroy()

    def banner(self, **properties):
        made = Velto.Banner(**properties)
        self.box.append(made)
        return made

    def assertError(self, error, domain, code):
        self.assertTrue(isinstance(error, GLib.Error) and error.matches(domain, code), error)

    def assertComplains(self, pattern, call):
        GLib.test_expect_message("Velto", CRITICAL, pattern)
        call()
        GLib.test_assert_expected_messages_internal("Velto", __file__, 0, "")

    def test_client(self):
        self.assertEqual(self.client.props.version, "4.0.10")
        second = Velto.Client(application_id="org.example.second", publisher_key="key")
        with self.assertRaises(GLib.Error) as refused:
            second.start()
        self.assertError(refused.exception, Velto.ClientError.quark(), Velto.ClientError.STARTED)
        for line, word in (("no-such=1", "no-such"), ("in-foreground=maybe", "in-foreground"), ("host-map=a;", "host-map")):
            settings = GLib.KeyFile()
            settings.load_from_bytes(GLib.Bytes.new(f"[Velto]\n{line}".encode()), GLib.KeyFileFlags.NONE)
            with self.assertRaisesRegex(GLib.Error, word):
                Velto.Client.new_from_key_file(settings)
        told = []
        self.client.connect("notify", lambda _, pspec: told.append(pspec.name))
        for consent in ("yes", "yes", None):
            self.client.props.gdpr_consent = consent
        self.assertEqual(told, ["gdpr-consent"] * 2)
        self.assertComplains("*before velto_client_start*", lambda: self.client.set_application_id("org.example.other"))

    def test_banner(self):
        banner = self.banner(size=Velto.BannerSize.LEADERBOARD)
        told = []
        banner.connect("notify::state", lambda *_: told.append(banner.props.state.value_nick))
        for signal in ("loaded", "removed"):
            banner.connect(signal, lambda _, name=signal: told.append(name))
        self.assertEqual(banner.measure(Gtk.Orientation.VERTICAL, -1).natural, 0)
        for widget, role in ((banner, Gtk.AccessibleRole.GROUP), (banner.get_first_child(), Gtk.AccessibleRole.PRESENTATION)):
            self.assertTrue(Gtk.test_accessible_has_role(widget, role))
        self.assertIs(load(banner), True)
        self.assertEqual((banner.props.ad_width, banner.props.ad_height), (320, 50))
        self.assertEqual(banner.measure(Gtk.Orientation.VERTICAL, 480).natural, 50)
        self.assertIn("shown", banner.get_css_classes())

        # It moves with its ad, into another window and out of all of them.
        box = Gtk.Box()
        other = Gtk.Window(child=box)
        self.box.remove(banner)
        box.append(banner)
        other.present()
        run_until(banner.get_mapped)
        self.assertEqual(banner.props.state, Velto.BannerState.SHOWN)
        self.assertIs(load(banner), True)
        banner.activate_action("banner.clear", None)
        self.assertEqual(told, ["loading", "shown", "loaded", "loaded", "empty", "removed"])
        self.assertEqual((banner.props.ad_width, banner.get_css_classes()), (0, ["empty"]))
        run_until(lambda: banner.measure(Gtk.Orientation.VERTICAL, 480).natural == 0)
        banner.props.collapse = False
        self.assertEqual(banner.measure(Gtk.Orientation.HORIZONTAL, -1).natural, 728)
        other.destroy()

    def test_what_fails(self):
        banner, heard = self.banner(placement="shelf"), []
        banner.connect("failed", lambda _, error: heard.append(Velto.AdError.get_reason(error)))
        self.client.props.collect_metrics = True
        for endpoint, code, reason in (("nofill", Velto.AdError.NO_FILL, "status-no-fill"), ("gives-up", Velto.AdError.SERVER, "page-gave-up")):
            self.client.set_endpoint(endpoint)
            error = load(banner)
            self.assertError(error, Velto.AdError.quark(), code)
            told = banner.get_timelines()[-1]
            self.assertEqual((heard.pop(), told.get_reason(), told.get_placement()), (reason, reason, "shelf"))
            self.assertTrue(told.get_explanation().startswith(error.message))
            self.assertEqual(told.get_entries().unpack()[0], ("asked", 0, {"by": "application"}))
            self.assertEqual(json.loads(told.to_json())["end"], reason)
            self.assertIn(f'velto_loads_total{{placement="shelf",reason="{reason}"}} 1\n', self.client.dup_metrics())
        self.client.props.collect_metrics = False
        self.assertIsNone(self.client.dup_metrics())
        self.client.set_endpoint("late")
        for ad in (banner, Velto.Interstitial()):
            cancellable = Gio.Cancellable()
            GLib.idle_add(cancellable.cancel)
            self.assertError(load(ad, cancellable=cancellable), Gio.io_error_quark(), Gio.IOErrorEnum.CANCELLED)
            self.assertEqual(ad.props.state.value_nick, "empty")
            GLib.idle_add(ad.clear)
            self.assertError(load(ad), Velto.AdError.quark(), Velto.AdError.CANCELLED)

    def test_handlers_may_destroy_it(self):
        for endpoint, signal in (
            (None, "loaded"), ("nofill", "failed"), (None, "notify::state"), (None, "notify::ad-width"), (None, "removed"),
        ):
            with self.subTest(signal=signal):
                self.client.set_endpoint(endpoint)
                banner, ends = Velto.Banner(auto_load=True), []
                banner.weak_ref(ends.append, 1)
                banner.connect(signal, lambda banner, *_: banner.get_root() and banner.get_root().destroy())
                if signal == "removed":
                    banner.connect("loaded", lambda banner: GLib.idle_add(banner.clear))
                Gtk.Window(child=banner).present()
                del banner
                run_until(lambda: ends)

    def test_template(self):
        @Gtk.Template(string="""<interface><template class="Page" parent="GtkBox"><child>
            <object class="VeltoBanner" id="banner"><property name="size">medium-rectangle</property>
            <property name="auto-load">true</property><property name="targeting"><object class="VeltoTargeting">
            <property name="gender">female</property></object></property></object></child></template></interface>""")
        class Page(Gtk.Box):
            __gtype_name__ = "Page"
            banner = Gtk.Template.Child(GObject.type_name(Velto.Banner) and "banner")

        source = """using Gtk 4.0; using Velto 1.0; ScrolledWindow page { propagate-natural-height: true; Velto.Banner banner
            { size: banner; auto-load: true; targeting: Velto.Targeting { gender: female; }; } }"""
        compiler = [sys.executable, shutil.which("blueprint-compiler"), "compile", "-"]
        blueprint = Gtk.Builder.new_from_string(subprocess.check_output(compiler, input=source, text=True), -1)
        pages = [Page(), blueprint.get_object("page")]  # two in one window
        banners = [pages[0].banner, blueprint.get_object("banner")]
        for page in pages:
            self.box.append(page)
        run_until(lambda: all(banner.props.state == Velto.BannerState.SHOWN for banner in banners))
        for banner in banners:
            self.assertEqual(banner.props.targeting.props.gender, Velto.Gender.FEMALE)

    def test_what_nobody_sees_is_not_refreshed(self):
        stack, heard = Gtk.Stack(), []
        self.box.append(stack)
        for name in ("seen", "unseen"):
            banner = Velto.Banner(auto_refresh=True, refresh_interval=1)
            stack.add_named(banner, name)
            self.assertIs(load(banner), True)
            banner.connect("loaded", lambda _, name=name: heard.append(name))
        run_until(lambda: heard.count("seen") == 3)
        self.assertNotIn("unseen", heard)
        stack.set_visible_child_name("unseen")
        run_until(lambda: "unseen" in heard)
        banner.props.placement = "later"
        run_until(lambda: banner.get_timelines()[-1].get_placement() == "later")  # a refresh has it, too
        if on_kit:
            banner.props.auto_refresh = False
            VeltoTest.advance(1500)  # one was due already
            heard.clear()
            VeltoTest.advance(5000)
            self.assertNotIn("unseen", heard)

    def test_interstitial(self):
        ad, heard = Velto.Interstitial(), []
        for signal in ("loaded", "failed", "presented", "closed"):
            ad.connect(signal, lambda *told, name=signal: heard.append((name, *(error.message for error in told[1:]))))
        ad.present(self.box)
        self.assertEqual(heard.pop(), ("failed", "No interstitial is ready."))
        self.assertIs(load(ad), True)
        self.assertTrue(ad.props.ready)
        self.assertEqual(heard.pop(), ("loaded",))
        ad.present(Gtk.Label())
        self.assertEqual(heard.pop(), ("failed", "the widget to present over is in no window"))
        if not on_kit:  # which has a window for who has none
            ad.present(None)
            self.assertEqual(heard.pop(), ("failed", "there is no widget to present over"))
        ad.present(Gtk.Window())
        self.assertEqual(heard.pop(), ("failed", "The window to show it over is not on the screen."))

        # Busy, called off, and closed with its window.
        second = Velto.Interstitial()
        self.assertIs(load(second), True)
        cancellable = Gio.Cancellable()
        ad.connect("presented", lambda _: GLib.idle_add(cancellable.cancel))
        second_error = []
        ad.connect("presented", lambda _: second.present_async(self.box, None, lambda _, r: second_error.append(r)))
        present = (ad.present_async, ad.present_finish, self.box)
        self.assertError(outcome(*present, cancellable=cancellable), Gio.io_error_quark(), Gio.IOErrorEnum.CANCELLED)
        with self.assertRaisesRegex(GLib.Error, "shows another screen"):
            second.present_finish(second_error[0])
        self.assertEqual(heard, [("presented",), ("closed",)])
        heard.clear()
        there = Gtk.Label()
        Gtk.Window(child=there).present()
        ad.set_auto_present_for(there)
        ad.load()
        run_until(lambda: ("presented",) in heard)
        there.get_root().destroy()
        run_until(lambda: ("closed",) in heard)

    def test_adapter(self):
        network, heard = Network(), []
        self.client.add_adapter("VeltoAdMediationAdapterAdMob", network)
        self.client.set_endpoint("mediated")
        banner = self.banner()
        for signal in ("loaded", "failed", "pressed", "removed"):
            banner.connect(signal, lambda *_, name=signal: heard.append(name))
        banner.load()
        run_until(lambda: network.asked)
        self.assertEqual((network.asked[0].get_ad_unit(), network.asked[0].is_full_screen()), ("north", False))
        label = Gtk.Label(label="North")
        ad = Velto.AdapterAd.new(label, 300, 40)
        network.asked.pop().answer(ad)
        run_until(lambda: label.get_width() == 300)
        self.assertTrue(label.is_ancestor(banner))
        self.assertEqual((label.get_height(), banner.props.ad_height), (40, 40))
        ad.press()
        ad.close()
        run_until(lambda: heard == ["loaded", "pressed", "removed"])
        banner.load()
        run_until(lambda: network.asked)
        network.asked.clear()  # and no answer at all
        run_until(lambda: heard[3:] == ["failed"])
        self.client.add_adapter("VeltoAdMediationAdapterAdMob", None)

    def test_video(self):
        request = Velto.VastRequest(host="video.example.com", width=640, height=360, max_duration=30)
        request.set_versions([2, 3])
        self.assertComplains("*use 2 to 3", lambda: request.set_versions([2, 4]))
        address = request.build_url()
        self.assertRegex(address, r"^https://video\.example\.com\?key=key&.*&vw=640&vh=360&vmin=5&vmax=30&.*&vvers=2,3&")
        request.props.host = "no host/"
        with self.assertRaisesRegex(GLib.Error, "host"):
            request.build_url()

    def video_ad(self, **properties):
        patient = {"answer_timeout": 100, "load_timeout": 200, "file_timeout": 100}  # on a busy machine
        ad, heard = Velto.VideoAd(**patient, **properties), []
        ad.connect("notify::state", lambda ad, _: heard.append(ad.props.state.value_nick))
        for signal in ("failed", "content-pause", "started", "quartile", "skipped", "completed", "content-resume", "ended"):
            ad.connect(signal, lambda _, *what, name=signal: heard.append(name))
        return ad, heard

    def test_video_ad(self):
        ad, heard = self.video_ad(starts_muted=True, position=Velto.VideoAdPosition.MIDROLL)
        with self.assertRaisesRegex(GLib.Error, "no ad is ready"):
            ad.play_in(self.box)
        error = outcome(ad.load_async, ad.load_finish, f"{AD_SERVER}/empty.xml")
        self.assertError(error, Velto.VideoAdError.quark(), Velto.VideoAdError.NO_ADS)
        self.assertEqual((error.code, heard), (303, ["loading", "empty", "failed"]))
        heard.clear()
        self.assertIs(outcome(ad.load_async, ad.load_finish, f"{AD_SERVER}/video.xml"), True)
        with self.assertRaisesRegex(GLib.Error, "in no window"):
            ad.play_in(Gtk.Label())
        companions = []

        def started(ad, info):
            self.assertEqual((info.get_title(), info.get_number(), info.get_count(), info.get_skippable_after(), info.leads_somewhere()), ("Tea", 1, 1, 1, True))
            self.assertIs(info, ad.props.info)
            if not companions:
                companions.extend(ad.get_companions())
                self.box.append(companions[0])

        ad.connect("started", started)
        stage = Gtk.DrawingArea(vexpand=True)
        self.box.append(stage)
        run_until(stage.get_mapped)
        ad.play_in(stage)
        run_until(lambda: companions or "ended" in heard)
        self.assertEqual((ad.is_muted(), ad.get_companions()), (True, companions))
        told = companions[0]
        self.assertEqual((told.get_identifier(), told.get_ad_slot(), told.get_alternative_text(), told.get_ad_width(), told.is_end_card()),
                         ("beside", "right", "Tea", 300, False))
        run_until(lambda: told.get_height() == 60)
        run_until(lambda: heard[-1] == "ended")
        self.assertEqual(heard, ["loading", "ready", "playing", "content-pause", "started", *3 * ["quartile"], "completed", "empty", "content-resume", "ended"])
        self.assertIsNone(ad.props.info)

        # Over the window; what is loaded meanwhile waits; and off the screen with its object.
        ad.load_document(LONG_AD)
        run_until(lambda: heard[-1] == "ready")
        self.assertEqual(told.get_height(), 60)
        heard.clear()
        ad.play_over(self.window)
        run_until(lambda: "started" in heard)
        self.assertEqual(told.measure(Gtk.Orientation.VERTICAL, -1).natural, 0)
        ad.load(f"{AD_SERVER}/video.xml")
        run_until(lambda: ad.get_current_time() > 1)
        self.assertTrue(ad.skip())
        run_until(lambda: heard[-1] == "ready")
        self.assertEqual(heard[-6:], ["skipped", "empty", "content-resume", "ended", "loading", "ready"])
        ad.play_in(self.box)
        ends = []
        ad.weak_ref(ends.append, 1)
        GLib.idle_add(ad.stop)
        run_until(lambda: heard[-1] == "ended")
        del ad, error  # whose frames hold it, too
        gc.collect()
        self.assertEqual(ends, [1])

    def test_video_ads_that_are_given_up(self):
        ad, heard = self.video_ad()
        cancellable = Gio.Cancellable()
        GLib.idle_add(cancellable.cancel)
        error = outcome(ad.load_async, ad.load_finish, f"{AD_SERVER}/late.xml", cancellable=cancellable)
        self.assertEqual(heard, ["loading", "empty"])
        self.assertError(error, Gio.io_error_quark(), Gio.IOErrorEnum.CANCELLED)
        errors = []

        def ended(ad, result):
            with self.assertRaises(GLib.Error) as caught:
                ad.load_finish(result)
            errors.append(caught.exception)

        for end in (lambda: ad.load_document("<VAST/>"), ad.stop, ad.run_dispose):
            ad.load_async(f"{AD_SERVER}/late.xml", None, ended)
            end()
            run_until(lambda: errors)
            self.assertError(errors.pop(), Velto.AdError.quark(), Velto.AdError.CANCELLED)
        properties = []
        ad = Velto.VideoAd(refused_vendors=["one"])
        ad.connect("notify", lambda _, pspec: properties.append(pspec.name))
        for _ in range(2):
            ad.set_properties(volume=0.5, refused_vendors=["one", "two"], content_url="https://film.example/", bandwidth=800, show_controls=False)
        self.assertEqual(sorted(properties), ["bandwidth", "content-url", "refused-vendors", "show-controls", "volume"])

    def test_nothing_is_left(self):
        rounds, ends = 24, []
        for number in range(rounds):
            banner, ad = self.banner(), Velto.Interstitial()
            self.assertIs(load(banner), True)
            if number % 3 == 0:
                self.assertIs(load(ad), True)
            for made in (banner, banner.get_first_child(), ad):
                made.weak_ref(ends.append, 1)
            self.box.remove(banner)
            del banner, ad, made
        gc.collect()
        run_until(lambda: len(ends) == 3 * rounds)


def serve(folder):
    film(folder / "tea.webm", 2, 30)
    film(folder / "long.webm", 60, 5)
    for name, text in DOCUMENTS.items():
        (folder / name).write_text(text)


def script(server):
    """The rules, of which the newest counts."""
    for when, (said,) in reversed(RULES):
        if said == 204:
            made = VeltoTest.Answer.new_no_fill()
        else:
            body = said["body"] if isinstance(said["body"], str) else json.dumps(said["body"]["json"])
            made = VeltoTest.Answer(body=body, delay=said.get("delayMs", 0))
            for name, value in said["headers"].items():
                made.set_header(name, str(value))
        server.respond(when.get("path", when.get("endpoint")), made)
    server.set_video(f"{AD_SERVER}/tea.webm", 2000)
    server.set_video(f"{AD_SERVER}/long.webm", 60000)
    for name, text in DOCUMENTS.items():
        server.respond(f"/{name}", VeltoTest.Answer.new(200, text))


if __name__ == "__main__":
    ground = sys.argv.pop(1)
    on_kit = ground == "kit"
    os.environ["PULSE_SERVER"] = "unix:/nowhere"  # that of this machine is not for tests
    with contextlib.nullcontext() if on_kit else Sandbox(ground, RULES, serve) as server:
        file = GLib.KeyFile()
        if on_kit:
            server = VeltoTest.Server()
            script(server)
            settings = GLib.Bytes.new(b"[Velto]\napplication-id=org.example.test\npublisher-key=key\n")
            file.load_from_bytes(settings, GLib.KeyFileFlags.NONE)
        else:
            file.load_from_file(str(server.key_file), GLib.KeyFileFlags.NONE)
        started = Velto.Client.new_from_key_file(file)
        for change, problem in (({"publisher_key": ""}, "publisher key"), ({"application_id": "no name"}, "reverse-domain")):
            kept = {name: started.get_property(name) for name in change}
            started.set_properties(**change)
            try:
                sys.exit(f"it started: {started.start()}")
            except GLib.Error as error:
                assert error.matches(Velto.ClientError.quark(), Velto.ClientError.INVALID) and problem in error.message, error
            started.set_properties(**kept)
        started.start()
        unittest.main(verbosity=2)
