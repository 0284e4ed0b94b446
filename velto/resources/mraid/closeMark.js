// An expanded ad shows where it can be closed, unless its creative draws that itself. The host has a touch area there
// and paints nothing; for a creative that gave expand properties it has not even that.

import { inEachPage, inNextFrame } from './engine.js';
import { ad } from './state.js';

const AREA = 'all:initial;position:fixed;top:0;right:0;width:50px;height:50px;z-index:2147483647;cursor:pointer';
const MARK =
  'position:absolute;top:10px;right:10px;width:30px;height:30px;border-radius:15px;background:rgba(0,0,0,.7);' +
  'box-shadow:0 0 0 2px #fff;color:#fff;font:24px/30px sans-serif;text-align:center';

let area = null;
let closes = null;
let isDue = false;

/** What a touch does. */
export function closeMarkCalls(close) {
  closes = close;
  inEachPage(showInPage);
}

/** A page that was written anew has taken all listeners away, also those of what was in it. */
function showInPage() {
  if (area && !area.isConnected) area = null;
  showCloseMark();
}

/** It comes and goes with the frame that shows the change: before, it would cost one of its own. */
export function closeMarkIsDue() {
  if (isDue) return;
  isDue = true;
  inNextFrame(showCloseMark);
}

/** Shows or hides it, as the state wants. */
function showCloseMark() {
  isDue = false;
  const isShown = ad.state === 'expanded' && ad.placement !== 'interstitial' && !ad.expandProperties.useCustomClose;
  const root = document.documentElement;
  if (isShown ? !root : !area) return;
  if (isShown && (!area || area.ownerDocument !== document)) area = makeArea();
  // What is hidden stays in the page: to take it out and in again costs a layout each time.
  area.style.setProperty('visibility', isShown ? 'visible' : 'hidden', 'important');
  if (isShown && !area.isConnected) root.appendChild(area);
}

function makeArea() {
  const made = document.createElement('div');
  made.style.cssText = AREA;
  const mark = document.createElement('div');
  mark.textContent = '\u00d7';
  mark.style.cssText = MARK;
  (made.attachShadow ? made.attachShadow({ mode: 'closed' }) : made).appendChild(mark);
  made.addEventListener(
    'click',
    (event) => {
      event.stopPropagation();
      closes();
    },
    true
  );
  return made;
}
