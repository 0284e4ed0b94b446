// The way to the host: command URLs, mraid://<command>?<name>=<argument>.
//
// Messages keep their order, none is lost, and the page is not asked for leave to be left. What a page says in one go is
// one message, a command a line, since a message costs more than what it brings about. Where the engine has no messages
// a hidden frame goes to the address: a navigation of the page itself would cut it off while it is being parsed, and of
// several in a row only the last would come.

import { afterThis, encode, later } from './engine.js';
import { fail } from './events.js';
import { ad } from './state.js';

const MOST_IN_A_TURN = 1000; // no creative has that much to say
const FEW = 100; // for which nobody need look when the turn ends

const handlers = window.webkit && window.webkit.messageHandlers;
const handler = handlers && handlers.veltoNavigation;
const post = handler && handler.postMessage.bind(handler);
let said = '';
let gathers = false;

/** Whether it went: a flood is cut off. */
export function send(command, name, argument) {
  if (ad.sentInTurn >= MOST_IN_A_TURN) return flooded();
  if (++ad.sentInTurn === FEW) turnEnds();
  const address = 'mraid://' + command + (name ? '?' + name + '=' + encode(argument) : '');
  if (!post) sendByFrame(address);
  else if (said) said += '\n' + address;
  else {
    said = address;
    if (!gathers) afterThis(postSaid);
  }
  return true;
}

/** What is said meanwhile leaves at the end. */
export function inOneMessage(work) {
  const outer = gathers;
  gathers = true;
  try {
    work();
  } finally {
    gathers = outer;
    if (!outer) postSaid();
  }
}

function postSaid() {
  if (!said) return;
  const all = said;
  said = '';
  post(all);
}

/** One error for all calls of a flood that are dropped. */
export function flooded() {
  if (ad.isFlooded) return false;
  ad.isFlooded = true;
  turnEnds();
  fail('Too many calls at once: some are dropped.');
  return false;
}

// By a timer: a message to itself goes through the network's process, and many turns later it may still be under way.
function turnEnds() {
  later(nextTurn, 0);
}

function nextTurn() {
  ad.sentInTurn = 0;
  ad.isFlooded = false;
}

function sendByFrame(address) {
  const frame = document.createElement('iframe');
  frame.style.cssText = 'display:none';
  frame.src = address;
  (document.body || document.documentElement).appendChild(frame);
  later(() => frame.remove(), 0);
}
