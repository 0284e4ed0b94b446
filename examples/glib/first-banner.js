#!/usr/bin/env gjs
// A game of levels with a banner below and an interstitial between two levels: first-banner.js [KEY FILE]
imports.gi.versions.Gtk = '4.0';
imports.gi.versions.Velto = '1.0';
const {Gio, GLib, GObject, Gtk, Velto} = imports.gi;

Gio._promisify(Velto.Interstitial.prototype, 'load_async', 'load_finish');
Gio._promisify(Velto.Interstitial.prototype, 'present_async', 'present_finish');

const Game = GObject.registerClass(class Game extends Gtk.Application {
    _init() {
        super._init({application_id: 'org.example.levels', flags: Gio.ApplicationFlags.NON_UNIQUE});
        this._level = 1;
    }

    vfunc_startup() {
        super.vfunc_startup();
        let client;
        if (ARGV.length > 0) { // a server for tests
            const settings = new GLib.KeyFile();
            settings.load_from_file(ARGV[0], GLib.KeyFileFlags.NONE);
            client = Velto.Client.new_from_key_file(settings);
        } else {
            client = new Velto.Client({application_id: this.application_id, publisher_key: 'your-publisher-key'});
        }
        client.start();
    }

    vfunc_activate() {
        if (this.active_window)
            return;
        this._label = new Gtk.Label({label: 'Level 1', vexpand: true});
        const button = new Gtk.Button({label: 'Next level'});
        button.connect('clicked', () => this._endLevel().catch(logError));

        const banner = new Velto.Banner({size: Velto.BannerSize.BANNER, auto_refresh: true});
        banner.connect('loaded', ad => print(`banner: loaded ${ad.ad_width} x ${ad.ad_height}`));
        banner.connect('failed', (_ad, error) => print(`banner: failed: ${error.message}`));
        banner.connect('pressed', () => print('banner: pressed'));

        this._between = new Velto.Interstitial();
        this._between.connect('presented', () => print('interstitial: presented'));
        this._loadInterstitial();

        const box = new Gtk.Box({orientation: Gtk.Orientation.VERTICAL});
        [this._label, button, banner].forEach(child => box.append(child));
        new Gtk.ApplicationWindow({
            application: this, title: 'Levels', child: box, default_width: 480, default_height: 320,
        }).present();
        banner.load();
    }

    async _loadInterstitial() {
        try {
            await this._between.load_async(null);
            print('interstitial: loaded');
        } catch (error) {
            print(`interstitial: failed: ${error.message}`);
        }
    }

    async _endLevel() {
        if (this._between.ready) {
            await this._between.present_async(this.active_window, null);
            print('interstitial: closed');
            this._loadInterstitial();
        }
        this._label.label = `Level ${++this._level}`;
    }
});

new Game().run([]);
