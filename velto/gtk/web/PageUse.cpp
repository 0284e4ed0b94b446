// The script that tells what a page uses. The page cannot be asked when something happens: it is another process.
#include "velto/gtk/web/PageUse.h"

#include "velto/platform/foundation/GMemory.h"

namespace velto::gtk {
namespace {

constexpr char pageUseScript[] = R"js((() => {
  const {veltoWheel, veltoTouch} = (window.webkit && window.webkit.messageHandlers) || {};
  if (!veltoWheel || !veltoTouch) return;
  const add = EventTarget.prototype.addEventListener;
  const Channel = MessageChannel;  // before the page may put another in its place
  const waiting = [];
  let bell = null;  // made with the first touch: the engine makes it known to its network process, for each frame
  const later = work => {
    if (!bell) {
      const {port1, port2} = new Channel();
      port1.onmessage = () => waiting.shift()();
      bell = port2;
    }
    waiting.push(work);
    bell.postMessage(0);
  };
  const across = 1, along = 2, both = 3, knowsEnd = 4;

  // The ways that something under `element` scrolls, with those that `own` tells of each element around.
  const waysAt = (element, own) => {
    const scrolls = (overflow, inside, size) => /auto|scroll/.test(overflow) && inside > size;
    let ways = 0;
    for (; element && element.nodeType === 1; element = element.parentElement) {
      const style = getComputedStyle(element);
      ways |= own(element, style);
      if (scrolls(style.overflowX, element.scrollWidth, element.clientWidth)) ways |= across;
      if (scrolls(style.overflowY, element.scrollHeight, element.clientHeight)) ways |= along;
    }
    const root = document.scrollingElement;
    if (root && window !== top && root.scrollHeight > root.clientHeight) ways |= along;
    return ways;
  };

  let listens = false;
  EventTarget.prototype.addEventListener = function (type) {
    if (type === 'wheel' || type === 'mousewheel') veltoWheel.postMessage(listens = true);
    return add.apply(this, arguments);
  };
  add.call(document, 'mouseover', event => {
    const uses = () => waysAt(event.target, element => (element.onwheel ? both : 0));
    veltoWheel.postMessage(!!(listens || window.onwheel || document.onwheel || uses()));
  }, {capture: true, passive: true});

  // What the page's style keeps for its scripts, and all when they prevent what a touch does by itself.
  const kept = (element, {touchAction}) =>
    (/auto|manipulation|pan-(x|left|right)/.test(touchAction) ? 0 : across) |
    (/auto|manipulation|pan-(y|up|down)/.test(touchAction) ? 0 : along);
  let touch = null;
  const tell = (mine, ways) => veltoTouch.postMessage(ways).then(taken => {
    if (!taken || touch !== mine || mine.taken) return;
    mine.taken = true;
    const {target, changedTouches} = mine.begun;
    target.dispatchEvent(new TouchEvent('touchcancel', {bubbles: true, changedTouches}));
    veltoTouch.postMessage(knowsEnd);
  });
  const hear = (type, heard) => add.call(window, type, heard, {capture: true, passive: true});
  // Once the page's own listeners had it.
  hear('touchstart', event => {
    if (event.touches.length > 1) return;
    const mine = touch = {begun: event};
    later(() => tell(mine, event.defaultPrevented ? both : waysAt(event.target, kept)));
  });
  hear('touchmove', event => later(() => {
    if (!touch || touch.prevents || !event.defaultPrevented) return;
    touch.prevents = true;
    tell(touch, both);
  }));
  // The engine knows an end only; for the page it was over before.
  const end = event => {
    if (!event.isTrusted) return;
    if (touch && touch.taken) event.stopImmediatePropagation();
    if (!event.touches.length) touch = null;
  };
  hear('touchend', end);
  hear('touchcancel', end);
})())js";

}  // namespace

void addPageUseScript(WebKitUserContentManager* manager) {
  const GOwned<WebKitUserScript, webkit_user_script_unref> made(
      webkit_user_script_new(pageUseScript, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(manager, made.get());
}

}  // namespace velto::gtk
