// What hostile ads try, in the real engine, against a server that knows what reached it. A page says itself what it gained:
// nothing, as a rule.
#include "velto/gtk/web/PlaceWatch.h"
#include "velto/platform/ui/WKWebView.h"

#include <webkit/webkit.h>

#include <csignal>
#include <map>
#include <mutex>
#include <set>

#include "../../examples/demo/LinkTrap.h"
#include "../support/LoopbackServer.h"
#include "../support/WebProcesses.h"
#include "DisplayTest.h"

namespace velto::test {
namespace {

namespace fs = std::filesystem;

// Scripts are bodies of asynchronous functions, which have `open_`, a server of the internet, and `local`, one of the house.
constexpr char page[] = R"html(<html><head><script src="mraid.js"></script></head><body style="margin:0">
<a id=link href="tel:1" style="display:block;height:50px" onclick="event.preventDefault()">ad</a><script>
const open_ = 'http://a.public.example', local = 'http://127.0.0.1:PORT', at = host => `http://${host}:PORT`;
const told = (source, ...events) => new Promise(r => events.forEach(e => source.addEventListener(e, () => r(e))));
const added = (name, with_) => document.body.appendChild(Object.assign(document.createElement(name), with_));
const touch = () => new Promise(r => { addEventListener('click', r, {once: true}); window.gained = 'touch me' });
const soon = promise => Promise.race([promise, new Promise(r => setTimeout(r, 1000))]);
(async () => { SCRIPT })().then(g => gained = `${g}`, e => gained = `threw ${e}`);
</script>)html";

class Attack : public DisplayTest {
 protected:
  static void SetUpTestSuite() { trap(); }  // before anything asks for the applications of this desktop
  Attack() {
    const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
      {
        std::lock_guard lock(mutex_);
        asked_.insert(request.path);
      }
      response.set_header("Access-Control-Allow-Origin", "*");
      const bool isScript = request.path.ends_with(".js");
      if (request.path == "/sent-on")
        response.set_redirect(server_.address("/private/redirect"));
      else if (request.path == "/run")
        response.set_content("<script>(async () => { " + request.get_param_value("script") +
                                 " })().then(g => gained = `${g}`, e => gained = `threw ${e}`)</script>",
                             "text/html");
      else if (request.path == "/file")
        response.set_content("bytes", "application/octet-stream");
      else
        response.set_content(isScript ? "0" : "page", isScript ? "text/javascript" : "text/html");
    };
    server_->Get(".*", answer).Post(".*", answer);
    server_.start();
    install(false);
  }
  ~Attack() override { leave(); }

  void install(bool mayReachLocalNetwork, std::chrono::milliseconds leastTimeUnderTouch = {}) {
    leave();
    gtk::install({.applicationIdentifier = "org.example.attack",
                  .hostMap = {{"*.public.example", "127.0.0.1:" + port()}},
                  .refusedToOpen = [this](const auto& address) { refused.push_back(address); },
                  .leastTimeUnderTouch = leastTimeUnderTouch,
                  .mayReachLocalNetwork = mayReachLocalNetwork,
                  .mayStorePictures = true});
    window = newWindow(400, 600, gtk_label_new("content"));
    host = present(window);
    delegate->host = host;
    banner =
        VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, VeltoBannerPositionTop);
  }
  void leave() {
    banner.reset();
    host.reset();
    if (auto* old = std::exchange(window, nullptr)) gtk_window_destroy(old);
  }

  void show(const std::string& script) {
    std::string html = page;
    for (const auto& [word, text] : {std::pair{"PORT", port()}, {"SCRIPT", script}})
      for (size_t at = 0; (at = html.find(word, at)) != std::string::npos; at += text.size())
        html.replace(at, std::strlen(word), text);
    const auto ad = VeltoAd::adWithHTML(html, VeltoBannerSize320x50, nullptr);
    ad->size = CGSize{320, 50};
    delegate->heard.clear();
    banner->vc()->fetchBannerSuccess(ad);
  }
  // What the page gained, with a person's touch when it asks for one.
  std::string play(const std::string& script) {
    show(script);
    std::string gained;
    EXPECT_TRUE(runUntil([&] {
      gained = said("gained");
      if (gained == "touch me") {
        runFrames(GTK_WIDGET(window));
        said("gained = undefined");
        click(window, {200, 25});
        gained = "null";
      }
      return gained != "null";
    })) << script
        << testing::PrintToString(delegate->heard);
    return gained;
  }
  // Nothing, too, of a page that ends meanwhile.
  std::string said(const std::string& expression) {
    const auto result = std::make_shared<std::optional<JSON>>();
    const std::weak_ptr asked = banner->vc()->webView();
    if (const auto view = asked.lock())
      view->evaluateJavaScript("window." + expression,
                               [result](const auto& found, auto) { *result = found.value_or(JSON()); });
    EXPECT_TRUE(runUntil([&] { return *result || asked.expired(); }));
    return *result && (*result)->string() ? *(*result)->string() : "null";
  }
  // A page at an address of its own, which the engine trusts as it would one with a certificate.
  std::string playAlone(const std::string& script) {
    return play("location.href = local + '/run?script=' + encodeURIComponent(`" + script +
                "`); await new Promise(() => 0)");
  }

  std::string port() const { return server_.address().substr(server_.address().rfind(':') + 1); }
  bool wasAsked(const std::string& path) {
    std::lock_guard lock(mutex_);
    return asked_.contains(path);
  }
  std::set<std::string> askedOf(const std::string& folder) {
    std::lock_guard lock(mutex_);
    std::set<std::string> found;
    for (const auto& path : asked_)
      if (path.starts_with(folder)) found.insert(path.substr(folder.size()));
    return found;
  }

  static demo::LinkTrap& trap() {
    static demo::LinkTrap made;
    return made;
  }
  static guint windows() { return g_list_model_get_n_items(gtk_window_get_toplevels()); }

  GtkWindow* window = nullptr;
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::shared_ptr<VeltoBannerViewController> banner;

 private:
  std::mutex mutex_;
  std::set<std::string> asked_;
  LoopbackServer server_;
};

// Every way in which a page makes the engine ask for something, and every way to write where.
constexpr char reaching[] = R"js(
  const p = local + '/private/', file = (code, type) => URL.createObjectURL(new Blob([code], {type}));
  const tries = {
    fetch: () => fetch(p + 'fetch'), blind: () => fetch(p + 'blind', {mode: 'no-cors'}),
    xhr: () => { const x = new XMLHttpRequest; x.open('GET', p + 'xhr'); x.send(); return told(x, 'load', 'error') },
    beacon: () => navigator.sendBeacon(p + 'beacon', 'x'),
    image: () => told(added('img', {src: p + 'image'}), 'load', 'error'),
    frame: () => told(added('iframe', {src: p + 'frame'}), 'load'),
    script: () => told(added('script', {src: p + 'script'}), 'load', 'error'),
    style: () => told(added('link', {rel: 'stylesheet', href: p + 'style'}), 'load', 'error'),
    video: () => told(added('video', {src: p + 'video'}), 'error'),
    object: () => told(added('object', {data: p + 'object'}), 'load', 'error'),
    socket: () => told(new WebSocket(p.replace('http', 'ws') + 'socket'), 'open', 'error'),
    events: () => told(new EventSource(p + 'events'), 'open', 'error'),
    worker: () => told(new Worker(file(`fetch('${p}worker').catch(() => 0).then(postMessage)`, 'text/javascript')), 'message', 'error'),
    form: () => { added('iframe', {name: 'in'}); added('form', {action: p + 'form', method: 'post', target: 'in'}).submit() },
    background: () => { document.body.style.background = `url(${p}background)` },
    // The names of one place.
    name: () => fetch(at('localhost') + '/private/name'), below: () => fetch(at('x.localhost') + '/private/below'),
    number: () => fetch(at('2130706433') + '/private/number'), wrapped: () => fetch(at('[::ffff:127.0.0.1]') + '/private/wrapped'),
  };
  await Promise.all(Object.values(tries).map(run => soon((async () => run())().catch(() => 0))));
  await soon(fetch(open_ + '/sent-on').catch(() => 0));
  const answer = await fetch(open_ + '/public').then(r => r.status, () => 'none');
  await soon(told(new WebSocket('ws://b.public.example/public-socket'), 'error'));
  mraid.playVideo(p + 'player');
  await soon(new Promise(() => 0));
  mraid.expand(p + 'part');
  return Object.keys(tries).concat('player', 'part', answer).join();
)js";

TEST_F(Attack, NothingOfTheUsersOwnNetworkIsReached) {
  auto tries = play(reaching);
  EXPECT_EQ(askedOf("/private/"), std::set<std::string>());
  EXPECT_TRUE(tries.ends_with(",200")) << "all else is";
  EXPECT_TRUE(runUntil([&] { return wasAsked("/sent-on") && wasAsked("/public-socket"); }));
  install(true);
  tries = play(reaching);
  std::istringstream words(tries.substr(0, tries.rfind(',')));
  for (std::string word; std::getline(words, word, ',');)
    EXPECT_TRUE(runUntil([&] { return wasAsked("/private/" + word); })) << word << " tries nothing";
}

TEST_F(Attack, PagesGainNothing) {
  const std::pair<const char*, const char*> table[] = {
      {"a window of its own", "return open('about:blank') || ''"},
      {"a window by a touch", "await touch(); return open(open_) || ''"},
      {"answers of dialogs",
       "for (let i = 0; i < 99; ++i) { alert(i); if (confirm() || prompt()) return i } return ''"},
      {"storage",
       "try { localStorage.a = 1; return 'stored' } catch { document.cookie = 'a=b'; return document.cookie "
       "}"},
      {"files", "return await fetch('file:///etc/passwd').then(r => r.text(), () => '')"},
      {"a file as its page",
       "location = 'file:///etc/passwd'; await soon(told(window, 'pagehide')); return "
       "location.pathname.slice(5)"},
      {"connections and devices",
       "return ['RTCPeerConnection', 'WebTransport', 'DeviceOrientationEvent', 'DeviceMotionEvent', "
       "'Accelerometer', 'PaymentRequest']"
       ".concat(['usb', 'bluetooth', 'serial', 'hid', 'mediaDevices', 'getBattery', 'share', 'credentials', "
       "'requestMIDIAccess'].filter(n => navigator[n]))"
       ".filter(n => window[n] || navigator[n]).join()"},
      {"the user's files",
       "await touch(); const i = added('input', {type: 'file'}); i.click(); return await soon(told(i, "
       "'change')) || ''"},
      {"a chooser of colours",  // which no script opens
       "const i = added('input', {type: 'color', style: 'position:fixed;inset:0;width:320px;height:50px'}); "
       "await touch(); return await soon(told(i, 'change')) || ''"},
      {"a print", "await touch(); print(); return ''"},
      {"a download",
       "await touch(); added('a', {href: open_ + '/file', download: 'file'}).click(); await soon(new "
       "Promise(() => 0)); return ''"},
      {"the whole screen",
       "await touch(); return document.body.requestFullscreen || document.body.webkitRequestFullscreen || "
       "''"},
      {"the pointer", "await touch(); return document.body.requestPointerLock || ''"},
      {"the clipboard", "await touch(); return document.execCommand('paste') || ''"},
  };
  const guint before = windows();
  for (const auto& [what, script] : table) {
    EXPECT_EQ(play(script), "") << what;
    EXPECT_EQ(windows(), before) << what;
    // The next page would end what has not begun.
    if (what == std::string("a download")) {
      EXPECT_TRUE(runUntil([&] { return wasAsked("/file"); }));
    }
  }
  for (const auto& entry :
       fs::recursive_directory_iterator(g_get_home_dir(), fs::directory_options::skip_permission_denied))
    EXPECT_NE(entry.path().filename(), "file") << entry.path();

  install(true);
  // Alone, a page has all interfaces that there are.
  EXPECT_EQ(playAlone("const kept = (localStorage.a || '') + document.cookie; localStorage.a = 1; "
                      "document.cookie = 'a=b;max-age=99';"
                      "return kept + (isSecureContext ? '' : 'no secure context')"),
            "");
  EXPECT_EQ(playAlone("return (localStorage.a || '') + document.cookie"), "") << "of the ad before it";
  EXPECT_EQ(
      playAlone(
          "return ['serviceWorker', 'clipboard', 'geolocation', 'wakeLock', 'getGamepads', 'mediaDevices']"
          ".filter(n => navigator[n]).concat(['Notification', 'SharedWorker'].filter(n => "
          "window[n])).join()"),
      "");

  // The engine resolves names ahead outside of the gate, which no page can tell.
  auto* settings = webkit_web_view_get_settings(WEBKIT_WEB_VIEW(find(GTK_WIDGET(window), "WebKitWebView")));
  const GOwned<WebKitFeatureList, webkit_feature_list_unref> features(webkit_settings_get_all_features());
  int named = 0;
  for (gsize i = 0; i < webkit_feature_list_get_length(features.get()); ++i) {
    auto* feature = webkit_feature_list_get(features.get(), i);
    if (std::string(webkit_feature_get_identifier(feature)) != "LinkDNSPrefetch") continue;
    EXPECT_FALSE(webkit_settings_get_feature_enabled(settings, feature));
    ++named;
  }
  EXPECT_EQ(named, 1) << "the engine names it otherwise";
}

TEST_F(Attack, NothingIsOpenedOrStoredWithoutATouch) {
  const std::string all = R"js(
    await new Promise(r => mraid.getState() === 'loading' ? mraid.addEventListener('ready', r) : r());
    mraid.open('tel:2'); mraid.open('https://shop.example/'); mraid.storePicture(open_ + '/picture');
    link.onclick = null; link.click(); link.dispatchEvent(new MouseEvent('click', {bubbles: true}));
    open('tel:3'); location = 'tel:4'; added('iframe', {src: 'tel:5'});
    added('form', {action: 'tel:6'}).submit(); link.target = '_blank'; link.click();
    await soon(new Promise(() => 0));
    return navigator.userActivation.isActive || '';
  )js";
  EXPECT_EQ(play(all), "");
  EXPECT_EQ(refused, (Heard{"tel:2", "https://shop.example/"}));
  EXPECT_EQ(trap().opened(), Heard());
  EXPECT_FALSE(wasAsked("/picture"));
  play("await touch(); mraid.storePicture(open_ + '/picture'); mraid.open('tel:7'); return ''");
  EXPECT_TRUE(runUntil([&] { return wasAsked("/picture") && !trap().opened().empty(); }));
  EXPECT_EQ(trap().opened(), Heard{"tel:7"});
}

TEST_F(Attack, WhatComesUnderAFingerOpensNothing) {
  const std::string script = "await touch(); mraid.open('tel:8'); return ''";
  install(false, std::chrono::hours(1));
  const auto before = trap().opened();
  play(script);
  EXPECT_TRUE(runUntil([&] { return refused == Heard{"tel:8"}; })) << "shown just before";
  EXPECT_EQ(trap().opened(), before);

  // The same of an ad that is moved, looked at where it is known by.
  auto* fixed = gtk_fixed_new();
  auto* view = gtk_label_new("ad");
  gtk_widget_set_size_request(view, 100, 100);
  gtk_fixed_put(GTK_FIXED(fixed), view, 0, 0);
  std::optional<gtk::PlaceWatch> watch(view);
  const auto& place = *watch;
  auto* other = newWindow(400, 600, fixed);
  present(other);
  constexpr std::chrono::milliseconds little(50);
  const CGPoint left{50, 50}, both{120, 50}, right{180, 50};
  EXPECT_FALSE(place.held(left, std::chrono::hours(1)));
  EXPECT_TRUE(runUntil([&] { return place.held(left, little); }));
  gtk_fixed_move(GTK_FIXED(fixed), view, 100, 0);
  EXPECT_FALSE(place.held(right, {})) << "not painted there yet";
  runFrames(view);
  EXPECT_FALSE(place.held(right, std::chrono::hours(1)) || place.held(left, {}));
  EXPECT_TRUE(runUntil([&] { return place.held(right, little); }));
  gtk_widget_set_size_request(view, 200, 100);
  gtk_fixed_move(GTK_FIXED(fixed), view, 0, 0);
  runFrames(view);
  EXPECT_TRUE(place.held(both, little)) << "it only grew";
  EXPECT_FALSE(place.held(left, std::chrono::hours(1)));
  gtk_widget_set_visible(view, FALSE);
  EXPECT_FALSE(place.held(both, {}));
  watch.reset();
  gtk_window_destroy(other);
}

// The application comes to its own work, and the next ad to its page.
TEST_F(Attack, APageThatFloodsEnds) {
  for (const char* flood : {"webkit.messageHandlers.veltoWheel.postMessage(true)",
                            "webkit.messageHandlers.veltoNavigation.postMessage('mraid://open')",
                            "location.hash = Math.random()"}) {
    play("return ''");
    banner->vc()->webView()->evaluateJavaScript("setTimeout(() => { for (;;) " + std::string(flood) + " })",
                                                nullptr);
    EXPECT_TRUE(runUntil([&] { return !banner->vc()->webView(); })) << flood;
    EXPECT_EQ(play("return 'next'"), "next") << flood;
  }
}

// The engine starts another by itself, which asks the same gate.
TEST_F(Attack, TheNetworkProcessMayDie) {
  const std::string script = R"js(
    const inner = await fetch(local + '/private/after').then(() => 'reached', () => 'refused');
    return inner + await fetch(open_ + '/public').then(r => r.status, () => 'none');
  )js";
  EXPECT_EQ(play(script), "refused200");
  for (int i = 0; i < 2; ++i) {
    const auto before = networkProcesses();
    ASSERT_FALSE(before.empty());
    for (const pid_t process : before) kill(process, SIGKILL);
    EXPECT_EQ(play(script), "refused200") << "at once, and again";
    EXPECT_NE(networkProcesses(), before);
  }
}

}  // namespace
}  // namespace velto::test
