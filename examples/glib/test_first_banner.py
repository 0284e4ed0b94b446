#!/usr/bin/env python3
"""Tests of the game in first_banner.py: no network, no web engine, and half a minute takes a moment."""
import unittest

import gi

gi.require_version("Velto", "1.0")
gi.require_version("VeltoTest", "1.0")
from gi.repository import Velto, VeltoTest  # noqa: E402
from first_banner import Game  # noqa: E402


class GameTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = VeltoTest.Server()  # before the game starts its client
        cls.game = Game()
        cls.game.register()

    def setUp(self):
        self.server = VeltoTest.Server()
        self.server.respond("at=banner", VeltoTest.Answer.new_ad("<b>Tea</b>", 320, 50))
        self.server.respond("at=interstitial", VeltoTest.Answer.new_ad("<h1>Books</h1>", 300, 250))
        self.game.level = 1

    def tearDown(self):
        self.window.destroy()

    def play(self):
        self.game.activate()
        self.window = self.game.get_active_window()
        VeltoTest.advance(0)

    def test_a_banner_is_shown_and_refreshed(self):
        self.play()
        self.assertEqual(self.game.banner.props.state, Velto.BannerState.SHOWN)
        self.assertIn("Tea", VeltoTest.dup_markup(self.game.banner))
        VeltoTest.advance(30_000)
        first, second = self.server.get_requests("at=banner")
        self.assertEqual(first.dup_parameter("k"), "your-publisher-key")
        self.assertEqual(first.dup_field("ab"), "org.example.levels")

    def test_a_tap_opens_the_shop(self):
        self.play()
        self.assertTrue(VeltoTest.tap_link(self.game.banner, "https://tea.example/"))
        self.assertEqual(self.server.dup_opened(), ["https://tea.example/"])

    def test_an_interstitial_stands_between_two_levels(self):
        self.play()
        request, = self.server.get_requests("at=interstitial")
        self.assertEqual(request.dup_field("okw"), "games")
        self.game.end_level()
        VeltoTest.advance(10_000)
        self.assertEqual(self.game.label.get_label(), "Level 1")
        VeltoTest.close(self.game.between)
        VeltoTest.advance(1_000)
        self.assertEqual(self.game.label.get_label(), "Level 2")

    def test_without_ads_the_game_goes_on(self):
        self.server.respond(None, VeltoTest.Answer.new_no_connection())
        self.play()
        self.assertEqual(self.game.banner.get_height(), 0)
        self.game.end_level()
        self.assertEqual(self.game.label.get_label(), "Level 2")


if __name__ == "__main__":
    unittest.main()
