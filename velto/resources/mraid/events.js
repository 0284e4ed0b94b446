// The creative's listeners. No event reaches them inside the call that caused it.

import { afterThis, inOwnTask } from './engine.js';
import { ad } from './state.js';
import { isOneOf } from './values.js';

const EVENTS = ['error', 'ready', 'sizeChange', 'stateChange', 'exposureChange', 'audioVolumeChange', 'viewableChange'];
const MOST_ERRORS = 256; // that wait: a page in a loop hears of the first
const Listeners = Set; // whatever the page makes of it

let isTelling = false; // what the host said

export function isEvent(event) {
  return isOneOf(event, EVENTS);
}

export function addListener(event, listener) {
  const all = ad.listeners[event] || (ad.listeners[event] = new Listeners());
  all.add(listener);
}

/** Without a listener all of the event. */
export function removeListener(event, listener) {
  const all = ad.listeners[event];
  if (!all) return;
  if (listener) all.delete(listener);
  else all.clear();
}

/** Tells the listeners, in order, when the script that runs now is done. */
export function fire(event, args) {
  if (event === 'error' && ad.undelivered.length >= MOST_ERRORS) return;
  ad.undelivered.push([event, args]);
  if (ad.undelivered.length === 1 && !isTelling) deliverSoon();
}

// What listeners cause gets a task of its own, or a listener of errors that makes errors would stop the page.
function deliverSoon() {
  (ad.isDelivering ? inOwnTask : afterThis)(deliver);
}

/** What this work fires the listeners hear as soon as it is done: the host calls, and no script of the page. */
export function tellAtOnce(work) {
  isTelling = true;
  try {
    work();
  } finally {
    isTelling = false;
    (ad.isDelivering ? deliverSoon : deliver)();
  }
}

export function fail(message) {
  fire('error', [message, ad.action]);
}

function deliver() {
  const events = ad.undelivered;
  ad.undelivered = [];
  ad.isDelivering = true;
  events.forEach(([event, args]) => tell(event, args));
  ad.isDelivering = false;
}

// A listener that is added meanwhile hears of later events only, one that is removed of none.
function tell(event, args) {
  const all = ad.listeners[event];
  if (!all) return;
  [...all].forEach((listener) => {
    if (!all.has(listener)) return;
    try {
      listener.apply(null, args);
    } catch (error) {
      inOwnTask(() => report(error));
    }
  });
}

// A listener that throws stops no other; the page's own error handling hears of it.
function report(error) {
  const message = String(error);
  window.dispatchEvent(new ErrorEvent('error', { message: message, error: error, lineno: error && error.line }));
}
