#!/usr/bin/env gjs
// A game's ad between two levels, and a test of it that needs no display.
imports.gi.versions.Velto = '1.0';
imports.gi.versions.VeltoTest = '1.0';
const {Gio, GLib, Velto, VeltoTest} = imports.gi;
const {assertEquals, assertTrue} = imports.jsUnit;

Gio._promisify(Velto.Interstitial.prototype, 'load_async', 'load_finish');
Gio._promisify(Velto.Interstitial.prototype, 'present_async', 'present_finish');

class Levels {
    constructor(window) {
        this.window = window;
        this.level = 1;
        this.ad = new Velto.Interstitial();
    }

    prepare() {
        return this.ad.load_async(null).catch(error => (this.problem = error));
    }

    async next() {
        if (this.ad.ready)
            await this.ad.present_async(this.window, null);
        this.level++;
    }
}

let server = new VeltoTest.Server();
const client = new Velto.Client({application_id: 'org.example.levels', publisher_key: 'your-publisher-key'});
client.start();

async function withAnAd() {
    server.respond('at=interstitial', VeltoTest.Answer.new_ad('<h1>Books</h1>', 300, 250));
    const game = new Levels(null); // a window that the test stands for
    await game.prepare();
    const over = game.next();
    VeltoTest.advance(10000);
    assertEquals(1, game.level);
    assertTrue(VeltoTest.close(game.ad));
    VeltoTest.advance(1000);
    await over;
    assertEquals(2, game.level);
}

async function withoutAnAd() {
    server = new VeltoTest.Server(); // and the world begins anew
    const game = new Levels(null);
    await game.prepare();
    assertTrue(game.problem.matches(Velto.AdError, Velto.AdError.NO_FILL));
    await game.next();
    assertEquals(2, game.level);
    assertEquals(1, server.get_requests('at=interstitial').length);
}

const loop = new GLib.MainLoop(null, false);
let failed = null;
withAnAd().then(withoutAnAd).catch(error => (failed = error)).then(() => loop.quit());
loop.run();
if (failed)
    throw failed;
