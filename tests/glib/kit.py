#!/usr/bin/env python3
"""What the test kit promises beside what library.py tries on its ground."""
import unittest

import gi

gi.require_version("Gtk", "4.0")
gi.require_version("Velto", "1.0")
gi.require_version("VeltoTest", "1.0")
from gi.repository import GLib, GObject, Gtk, Velto, VeltoTest  # noqa: E402
from sandbox import AD_SERVER, LONG_AD, VIDEO_AD  # noqa: E402

Answer, State = VeltoTest.Answer, Velto.BannerState
AD = Answer.new_ad("<b>Tea</b>", 320, 50)
RICH = Answer.new_ad("<script src='mraid.js'></script>Coffee", 320, 50)


def mediated(kind):
    return Answer.new_mediation('{"mediation": [{"cn": "VeltoAdmob%sAdapter", "e": {"adunit": "north"}}]}' % kind, 320, 50)


FULL_SCREEN = mediated("Interstitial")


class North(GObject.Object, Velto.Adapter):
    used = None

    def do_load(self, request):
        label = self.used or Gtk.Label(label=request.get_ad_unit())
        ad = Velto.AdapterAd.new_full_screen(label) if request.is_full_screen() else Velto.AdapterAd.new(label, 300, 40)
        request.answer(ad)
        if self.used:
            return
        GLib.test_expect_message("Velto", GLib.LogLevelFlags.LEVEL_CRITICAL, "*has been answered already")
        request.answer(ad)
        GLib.test_assert_expected_messages_internal("Velto", __file__, 0, "")

    def do_present(self, ad):
        ad.close()


class KitTest(unittest.TestCase):
    def setUp(self):
        self.server = VeltoTest.Server()
        self.window = Gtk.Window(default_width=480, default_height=320)
        self.box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        self.box.append(Gtk.Label(label="Levels", vexpand=True))
        self.banner = Velto.Banner()
        self.box.append(self.banner)
        self.window.set_child(self.box)
        self.window.present()
        self.heard = []
        for signal in ("loaded", "failed", "pressed", "removed"):
            self.banner.connect(signal, lambda _, *error, name=signal: self.heard.append((name, *(each.code for each in error))))

    def tearDown(self):
        self.window.destroy()

    def outcome(self, *answers):
        for answer in answers:
            self.server.respond_once(None, answer)
        self.heard.clear()
        for _ in answers:
            self.banner.load()
            VeltoTest.advance(0)
        return self.heard

    def test_the_server_answers_as_it_was_told(self):
        self.assertEqual(self.outcome(AD, Answer.new_no_connection(), Answer.new_no_fill(), Answer.new(500, "out of order")),
                         [("loaded",), ("failed", Velto.AdError.NO_CONNECTION), ("failed", Velto.AdError.NO_FILL), ("failed", Velto.AdError.SERVER)])
        self.server.respond("at=interstitial", AD)
        self.assertEqual(self.outcome(), [])
        self.banner.load()
        VeltoTest.advance(0)
        self.assertEqual(self.heard, [("failed", Velto.AdError.NO_FILL)])  # nobody has said anything for banners
        self.server.respond("at=banner", Answer.new_no_fill())
        self.server.respond("at=banner", AD)  # the newer one counts
        late = Answer.new_ad("late", 300, 40)
        late.props.delay = 200
        self.server.respond_once("at=banner", late)
        self.heard.clear()
        self.banner.load()
        VeltoTest.advance(199)
        self.assertEqual(self.heard, [])
        VeltoTest.advance(1)
        self.assertEqual((self.heard, self.banner.props.ad_width), ([("loaded",)], 300))
        self.assertEqual(len(self.server.get_requests("at=banner")), 6)

    def test_a_person_taps(self):
        self.assertFalse(VeltoTest.tap(self.banner, 5, 5))
        page = Answer.new_ad("<!--b1--><b>Tea</b>", 320, 50)
        self.outcome(page)
        self.assertEqual([VeltoTest.tap(self.banner, *point) for point in ((319, 49), (321, 5), (5, -1))], [True, False, False])
        self.window.set_visible(False)
        self.assertFalse(VeltoTest.tap(self.banner, 5, 5))
        self.window.present()
        self.assertTrue(VeltoTest.tap_link(self.banner, "https://tea.example/"))
        self.assertEqual(self.heard, [("loaded",), ("pressed",), ("pressed",)])
        self.assertEqual(self.server.dup_opened(), ["https://tea.example/"])
        self.box.remove(self.banner)
        other = Gtk.Window(child=self.banner)
        self.assertFalse(VeltoTest.tap(self.banner, 5, 5))
        other.present()
        self.assertTrue(VeltoTest.tap(self.banner, 5, 5))
        other.destroy()
        again = VeltoTest.Server()  # and the world begins anew
        self.assertEqual((again.dup_opened(), again.get_requests(None)[1:], self.server.dup_opened()), ([], [], []))

    def test_the_test_plays_the_page(self):
        self.server.props.pages_finish = False
        self.assertEqual(self.outcome(RICH), [])
        self.assertTrue(VeltoTest.finish_page(self.banner))
        self.assertEqual(self.heard, [("loaded",)])
        for command, state, told in (("expand", State.EXPANDED, "expanded"), ("close", State.SHOWN, "default")):
            self.assertTrue(VeltoTest.navigate(self.banner, f"mraid://{command}"))
            VeltoTest.advance(1000)
            self.assertEqual(self.banner.props.state, state)
            self.assertTrue(VeltoTest.has_run(self.banner, told))
        self.assertFalse(VeltoTest.has_run(self.banner, "no such script"))
        self.assertIn("Coffee", VeltoTest.dup_markup(self.banner))

    def test_whoever_waits_for_an_interstitial_hears_of_it(self):
        heard = []

        def told(finish):
            def ended(_, result):
                try:
                    heard.append(finish(result))
                except GLib.Error as error:
                    heard.append(error.code)

            return ended

        def begin(answer=AD, parent=self.box, before=lambda ad: None):
            ad = Velto.Interstitial(auto_present_for=parent)
            self.server.respond_once(None, answer)
            before(ad)
            ad.load_async(None, told(ad.load_finish))
            VeltoTest.advance(1000)
            return ad

        shown = begin()
        self.server.respond_once(None, Answer.new_no_fill())  # for the next one, while this is on the screen
        shown.load_async(None, told(shown.load_finish))
        VeltoTest.advance(0)
        self.assertEqual((heard, shown.props.state.value_nick), ([True, Velto.AdError.NO_FILL], "presented"))
        shown.run_dispose()
        shown.load_async(None, told(shown.load_finish))
        VeltoTest.advance(0)
        self.assertEqual(heard[2:], [Velto.AdError.CANCELLED])
        # On its way to the screen: cleared by who hears of that, and closed by its network.
        for answer, clears, end in ((AD, True, Velto.AdError.CANCELLED), (FULL_SCREEN, False, True)):
            ad = begin(answer, None, lambda ad: (ad.load(), heard.clear()))  # of two who ask both hear of one
            self.assertEqual((heard, len(self.server.get_requests("at=interstitial"))), ([True], 3 + (not clears)))
            ad.connect("notify::state", lambda ad, _, clears=clears: clears and ad.clear())
            ad.present_async(self.box, None, told(ad.present_finish))
            VeltoTest.advance(5000)
            self.assertEqual(heard[1:], [end])
        there, changes = Gtk.Label(), []
        ad.props.auto_present_for = there
        ad.connect("notify", lambda _, property: changes.append(property.name))
        del there
        self.assertEqual(changes, ["auto-present-for"])

    def test_another_network_answers_at_once(self):
        network = mediated("Banner")
        self.assertEqual(self.outcome(network), [("loaded",)])
        GLib.test_expect_message("Velto", GLib.LogLevelFlags.LEVEL_CRITICAL, "*widget is in another one")
        North.used = Gtk.Label()
        self.box.append(North.used)
        self.assertEqual(self.outcome(network), [("failed", Velto.AdError.NO_FILL)])
        North.used = None
        self.assertEqual((self.banner.props.ad_width, VeltoTest.tap(self.banner, 5, 5)), (300, False))

    def test_video_ads(self):
        self.server.respond("/film.xml", Answer.new(200, VIDEO_AD))
        ad, heard = Velto.VideoAd(), []
        for signal in ("loaded", "failed", "started", "paused", "pressed", "resumed", "completed", "ended"):
            ad.connect(signal, lambda _, *told, name=signal: heard.append(name))
        stage = Gtk.DrawingArea(vexpand=True)
        self.box.append(stage)
        for parent in (stage, None, self.window):  # in a widget, without a display, over a window
            heard.clear()
            ad.load("https://ads.example/film.xml?[ADSERVINGID]")
            VeltoTest.advance(0)
            self.assertFalse(VeltoTest.tap(ad, 5, 5))
            ad.play_over(parent) if parent is self.window else ad.play_in(parent)
            VeltoTest.advance(1500)
            self.assertGreater(ad.get_current_time(), 1)
            width = parent.get_width() if parent else 800
            self.assertFalse(VeltoTest.tap(ad, width + 1, 5))
            self.assertTrue(VeltoTest.tap(ad, width / 2, 60))
            ad.resume()
            VeltoTest.advance(20_000)
            self.assertEqual(heard, ["loaded", "started", "pressed", "paused", "resumed", "completed", "ended"])
        self.assertEqual(self.server.dup_opened(), 3 * ["https://tea.example/"])
        self.assertEqual(len(self.server.get_requests("/told/impression")), 3)
        self.server.set_video(f"{AD_SERVER}/tea.webm", 0)
        heard.clear()
        ad.load_document(VIDEO_AD)
        VeltoTest.advance(0)
        ad.play_in(stage)
        VeltoTest.advance(0)
        self.assertEqual(heard, ["loaded", "failed", "ended"])

    def test_handlers_may_destroy_a_video_ad(self):
        signals = ("loaded", "content-pause", "started", "quartile", "completed", "content-resume", "ended", "notify::state", "notify::info")
        for signal in signals:
            with self.subTest(signal=signal):
                ad, ends = Velto.VideoAd(), []
                ad.weak_ref(ends.append, 1)
                heard = []
                ad.connect(signal, lambda ad, *_, heard=heard: (heard.append(1), ad.run_dispose()))
                ad.connect("loaded", lambda ad: ad.play_in(self.window))
                ad.load_document(VIDEO_AD)
                VeltoTest.advance(20_000)
                self.assertEqual((heard, ad.props.state, ad.get_companions()), ([1], Velto.VideoAdState.EMPTY, []))
                del ad
                self.assertEqual(ends, [1])

    def playing(self, document, play):
        ad, heard = Velto.VideoAd(), []
        for signal in ("started", "completed", "failed", "ended"):
            ad.connect(signal, lambda _, *told, name=signal: heard.append(name))
        ad.load_document(document)
        VeltoTest.advance(0)
        play(ad)
        VeltoTest.advance(100)
        self.assertEqual(heard, ["started"])
        return ad, heard

    def test_a_window_goes_with_the_ads_in_it(self):
        window = Gtk.Window()
        window.present()
        ad, heard = self.playing(VIDEO_AD, lambda ad: ad.play_in(window))
        window.destroy()
        del window
        VeltoTest.advance(5000)
        self.assertEqual((heard[-1], ad.props.state), ("ended", Velto.VideoAdState.EMPTY))

    def test_a_person_mutes_a_video_ad(self):
        ad, _ = self.playing(LONG_AD, lambda ad: ad.play_in(None))
        changes = []
        ad.connect("notify::muted", lambda ad, _: changes.append(ad.props.muted))
        VeltoTest.tap(ad, 117, 566)
        self.assertTrue(ad.is_muted())
        for muted in (True, False, False):
            ad.props.muted = muted
        ad.props.muted = True
        ad.stop()
        VeltoTest.advance(0)
        ad.load_document(LONG_AD)  # which begins with sound
        self.assertEqual((changes, ad.is_muted()), ([True, False, True, False], False))

    def test_companions_go_when_the_next_ad_fails(self):
        first = VIDEO_AD.replace("<Ad ", '<Ad sequence="1" ')
        pod = first.replace("</VAST>", "") + first[first.index("<Ad "):].replace('"1"', '"2"').replace("tea.webm", "coffee.webm")
        self.server.set_video(f"{AD_SERVER}/coffee.webm", 0)
        ad, heard = self.playing(pod, lambda ad: ad.play_in(self.box))
        beside = ad.get_companions()
        self.box.append(beside[0])
        ad.connect("completed", lambda ad: self.assertEqual(ad.get_companions(), beside))
        natural = lambda: beside[0].measure(Gtk.Orientation.VERTICAL, -1).natural
        VeltoTest.advance(1000)
        self.assertEqual(natural(), 60)
        VeltoTest.advance(20_000)
        self.assertEqual(heard, ["started", "completed", "failed", "ended"])
        self.assertEqual((ad.get_companions(), natural()), ([], 0))

    def test_a_video_ad_outlives_the_world(self):
        outcomes = []

        def ended(ad, result):
            try:
                outcomes.append(ad.load_finish(result))
            except GLib.Error as error:
                outcomes.append(error.code)

        def load(ad, delay):
            answer = Answer.new(200, VIDEO_AD)
            answer.props.delay = delay
            self.server.respond("/film.xml", answer)
            ad.load_async(f"{AD_SERVER}/film.xml", None, ended)
            VeltoTest.advance(0)

        ad = Velto.VideoAd()
        failed = []
        ad.connect("failed", lambda *_: failed.append(1))
        for plays in (False, True):
            if plays:
                ad.play_in(self.box)
                VeltoTest.advance(100)
            load(ad, 1000)  # while the first one plays it waits
            self.assertEqual((outcomes, ad.props.state), ([], Velto.VideoAdState.PLAYING if plays else Velto.VideoAdState.LOADING))
            self.server = VeltoTest.Server()
            VeltoTest.advance(0)
            self.assertEqual((outcomes, failed, ad.props.state, ad.props.info), ([Velto.AdError.CANCELLED], [1], Velto.VideoAdState.EMPTY, None))
            load(ad, 0)
            self.assertEqual(outcomes[1:], [True])
            outcomes.clear()
            failed.clear()
        load(ad, 1000)
        self.server = VeltoTest.Server()
        load(ad, 0)  # before anybody could hear of it
        self.assertEqual((sorted(outcomes), failed), ([True, Velto.AdError.CANCELLED], []))

    def test_the_main_loop_runs_what_is_due(self):
        self.server.respond(None, AD)
        loop = GLib.MainLoop()
        GLib.timeout_add_seconds(60, loop.quit)
        self.banner.load_async(None, lambda *_: loop.quit())
        loop.run()
        self.assertEqual(self.heard, [("loaded",)])


if __name__ == "__main__":
    VeltoTest.Server()
    client = Velto.Client(application_id="org.example.test", publisher_key="key")
    client.start()
    client.add_adapter("VeltoAdMediationAdapterAdMob", North())
    unittest.main(verbosity=2)
