// What stands in the page.
#include "preview/Probe.h"

namespace velto::preview {
namespace {

// Replaces a few functions by ones that first note the call; what they note waits in a list of bounded length.
constexpr char script[] = R"JS((function () {
  'use strict';
  if (window.__veltoProbe) return;
  var notes = [];
  var sinceStart = performance.now.bind(performance);  // steps may put the page's clock forward
  var presses = 0, listening = 0, sounding = new WeakSet(), timers = new Set(), frames = new Set(), listeners = {};
  function clipped(text) { return String(text).slice(0, 300); }
  function note(event, details) {
    if (notes.length >= 200) return;
    details.event = event;
    notes.push(details);
  }
  function touched() { return !!(navigator.userActivation && navigator.userActivation.hasBeenActive); }
  function before(owner, name, look) {
    var original = owner && owner[name];
    if (typeof original !== 'function') return;
    owner[name] = function () {
      try { look.apply(this, arguments); } catch (e) { /* the page's call goes on */ }
      return original.apply(this, arguments);
    };
  }
  function property(owner, name, get, set) {
    var found = owner && Object.getOwnPropertyDescriptor(owner, name);
    if (!found || !found.configurable) return;
    var own = {};
    if (get && found.get) own.get = function () { return get.call(this, found.get); };
    if (set && found.set) own.set = function (value) { set(value); found.set.call(this, value); };
    Object.defineProperty(owner, name, Object.assign({}, found, own));
  }

  // What is stored.
  property(Document.prototype, 'cookie', null, function (value) {
    note('storage', {kind: 'cookie', key: clipped(String(value).split('=')[0])});
  });
  ['localStorage', 'sessionStorage'].forEach(function (kind) {
    var owner = Object.getOwnPropertyDescriptor(window, kind) ? window : Window.prototype;
    property(owner, kind, function (get) {
      try {
        return get.call(window);
      } catch (error) {
        note('storage', {kind: kind, refused: true});
        throw error;
      }
    });
  });
  before(window.Storage && Storage.prototype, 'setItem', function (key) {
    note('storage', {kind: 'webStorage', key: clipped(key)});
  });
  before(window.IDBFactory && IDBFactory.prototype, 'open', function (key) {
    note('storage', {kind: 'indexedDB', key: clipped(key)});
  });
  before(window.CacheStorage && CacheStorage.prototype, 'open', function (key) {
    note('storage', {kind: 'caches', key: clipped(key)});
  });

  // What is heard and felt. Of a device that cannot vibrate the answer is false.
  function loud(media) { return !media.muted && media.volume > 0 && !touched() && !sounding.has(media); }
  function sound(media) {
    if (!loud(media)) return;
    sounding.add(media);
    note('sound', {element: media.localName, url: clipped(media.currentSrc || media.src)});
  }
  before(window.HTMLMediaElement && HTMLMediaElement.prototype, 'play', function () { sound(this); });
  before(window.AudioScheduledSourceNode && AudioScheduledSourceNode.prototype, 'start', function () {
    if (!touched()) note('sound', {element: 'AudioContext', url: ''});
  });
  if (!navigator.vibrate) Navigator.prototype.vibrate = function () { return false; };
  before(Navigator.prototype, 'vibrate', function () { note('vibration', {touched: touched()}); });

  // What can be touched.
  before(EventTarget.prototype, 'addEventListener', function (type) {
    if (/^(click|touch(start|end)|pointer(down|up)|mouse(down|up))$/.test(type)) ++presses;
  });
  function hasHandler() {
    var names = ['onclick', 'ontouchstart', 'ontouchend', 'onpointerdown', 'onpointerup', 'onmousedown', 'onmouseup'];
    return [window, document].concat(Array.from(document.querySelectorAll('*')).slice(0, 5000)).some(function (one) {
      return names.some(function (name) { return one[name]; });
    });
  }

  // What is still to come. Beyond ten seconds nobody waits for it.
  function timed(start, stop, repeats) {
    var begin = window[start], end = window[stop];
    window[start] = function (call, delay) {
      var words = Array.prototype.slice.call(arguments);
      var id;
      if (typeof call === 'function' && !repeats)
        words[0] = function () { timers.delete(id); return call.apply(this, arguments); };
      id = begin.apply(window, words);
      if (!(delay > 10000)) timers.add(id);
      return id;
    };
    window[stop] = function (id) { timers.delete(id); return end.call(window, id); };
  }
  timed('setTimeout', 'clearTimeout', false);
  timed('setInterval', 'clearInterval', true);
  var askFrame = window.requestAnimationFrame, dropFrame = window.cancelAnimationFrame;
  window.requestAnimationFrame = function (call) {
    var id = askFrame.call(window, function (time) { frames.delete(id); return call.call(window, time); });
    frames.add(id);
    return id;
  };
  window.cancelAnimationFrame = function (id) { frames.delete(id); return dropFrame.call(window, id); };

  // Rich media. Sizes, features and commands are to wait until it is ready.
  var isWatched = false;
  function watchMraid() {
    if (!window.mraid || isWatched) return;
    isWatched = true;
    ['isViewable', 'getCurrentPosition', 'getDefaultPosition', 'getMaxSize', 'getScreenSize', 'supports', 'open',
     'expand', 'resize', 'close', 'playVideo', 'storePicture', 'createCalendarEvent', 'getLocation',
     'unload'].forEach(function (name) {
      before(mraid, name, function () { if (mraid.getState() === 'loading') note('early', {name: name}); });
    });
    before(mraid, 'addEventListener', function (event, call) {
      var calls = listeners[event] = listeners[event] || [];
      if (calls.length < 1000) calls.push(call);
    });
    before(mraid, 'removeEventListener', function (event, call) {
      listeners[event] = call ? (listeners[event] || []).filter(function (one) { return one !== call; }) : [];
    });
  }

  // Who listens to the measurement: its service stands in the head before all other scripts of the page.
  var isHeard = false;
  function listen() { ++listening; }
  function watchService() {
    watchMraid();
    var found = window.omid && omid.v1_VerificationServiceCommunication;
    if (!found || isHeard) return;
    isHeard = true;
    observer.disconnect();  // whatever brings mraid stands before it
    before(omid.v1_VerificationServiceCommunication, 'handleExportedMessage', listen);
    before(omid.v1_SessionServiceCommunication, 'handleExportedMessage', listen);
    before(window.omid3p, 'registerSessionObserver', listen);
  }
  var observer = new MutationObserver(watchService);
  observer.observe(document, {childList: true, subtree: true});
  window.addEventListener('message', function (event) {
    if (event.data && event.data.omid_message_method) listen();
  });

  function isMoving() {
    return document.getAnimations && document.getAnimations().some(function (one) {
      return one.playState === 'running' && one.effect && one.effect.getComputedTiming().endTime < Infinity;
    });
  }
  function shown(image) {
    var place = image.getBoundingClientRect();
    return {url: image.currentSrc.slice(0, 300), width: image.naturalWidth, height: image.naturalHeight,
            shownWidth: place.width, shownHeight: place.height};
  }
  function length(animation) {
    var effect = animation.effect, end = effect ? effect.getComputedTiming().endTime : 0;
    var told = {name: clipped(animation.animationName || animation.transitionProperty || animation.id || 'animate()')};
    if (end === Infinity) told.endless = true; else told.seconds = Math.round(end / 1000);
    return told;
  }
  function page() {
    var counts = {};
    Object.keys(listeners).forEach(function (event) { counts[clipped(event)] = listeners[event].length; });
    var paint = (performance.getEntriesByType('paint') || []).filter(function (one) {
      return one.name === 'first-contentful-paint';
    })[0];
    var told = {
      images: Array.from(document.images).slice(0, 200).map(shown),
      animations: document.getAnimations ? document.getAnimations().slice(0, 200).map(length) : [],
      links: document.querySelectorAll(
        'a[href]:not([href=""]):not([href^="#"]):not([href^="javascript:"]), area[href], form, button[formaction]').length,
      presses: presses + (hasHandler() ? 1 : 0),
      verification: Array.from(document.querySelectorAll('iframe[srcdoc]')).map(function (frame) {
        var parts = /^<script>omidVerificationProperties=.*<script src="([^"]*)"/.exec(frame.srcdoc);
        var text = document.createElement('textarea');
        text.innerHTML = parts ? parts[1] : '';
        return text.value;
      }).filter(Boolean),
      listening: listening,
      asksForMraid: Array.from(document.scripts).some(function (one) {
        return /\bmraid\s*\.\s*(getState|addEventListener|open)\b/.test(one.text);
      }),
      listeners: counts
    };
    if (paint) {
      told.sincePaint = sinceStart() - paint.startTime;
      told.requestsBeforePaint = performance.getEntriesByType('resource').filter(function (one) {
        return one.startTime <= paint.startTime;
      }).length;
    }
    return told;
  }

  // What goes on in a frame is not known from here; those of the measurement service paint nothing.
  var foreignFrames = 'iframe:not([name^="omid_v1_present"]):not([srcdoc^="<script>omidVerificationProperties="])';
  Object.defineProperty(window, '__veltoProbe', {value: function (wholly) {
    Array.from(document.querySelectorAll('audio[autoplay], video[autoplay]')).forEach(sound);
    var answer = {notes: notes.splice(0), touched: touched() || !navigator.userActivation,
                  rests: !timers.size && !frames.size && !isMoving() &&
                  !document.querySelector(foreignFrames) && document.readyState === 'complete'};
    if (wholly) answer.page = page();
    return answer;
  }});
})();)JS";

}  // namespace

void Probe::prepare(WKWebViewConfiguration& configuration) {
  configuration.userContentController.addUserScript(
      {script, WKUserScriptInjectionTime::AtDocumentStart, true});
}

}  // namespace velto::preview
