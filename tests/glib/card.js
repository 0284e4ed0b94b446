// Where a person would see the ad, a test's window shows a card with its size and words.
imports.gi.versions.Gtk = '4.0';
imports.gi.versions.Velto = '1.0';
imports.gi.versions.VeltoTest = '1.0';
const {Gtk, Velto, VeltoTest} = imports.gi;
const {assertEquals, assertTrue} = imports.jsUnit;

Gtk.init();
const server = new VeltoTest.Server();
server.respond(null, VeltoTest.Answer.new_ad(`<script>${'no() '.repeat(99)}</script><b>Tea</b>`, 320, 50));
new Velto.Client({application_id: 'org.example.test', publisher_key: 'key'}).start();
const [box, banner] = [new Gtk.Box({orientation: Gtk.Orientation.VERTICAL}), new Velto.Banner()];
box.append(banner);
new Gtk.Window({child: box, default_width: 480, default_height: 320}).present();
banner.load();
VeltoTest.advance(0);
assertEquals('480 x 50', `${banner.get_width()} x ${banner.get_height()}`);
const snapshot = new Gtk.Snapshot();
box.snapshot_child(banner, snapshot);
const drawn = new TextDecoder().decode(snapshot.to_node().serialize().toArray());
assertTrue(/color \{\s*bounds: 0 0 480 50;/.test(drawn));
assertEquals(2, (drawn.match(/text \{/g) ?? []).length);
