// The creative's calls, first in, first out. What depends on the state waits until the host has made the change before
// it; everything else goes at once, unless a call that came earlier waits.

import { flooded, send } from './channel.js';
import { later, notLater } from './engine.js';
import { fail } from './events.js';
import { sendResizeProperties } from './properties.js';
import { closeRegionFault, hostRefuses, resizeFault } from './resizeRules.js';
import { ad } from './state.js';
import { copy, merge } from './values.js';

const MOST_WAITING = 256;
const PATIENCE = 1000; // milliseconds for the host's word that a change is made

// --- the queue

/** Does the work as the method that the creative has called, in its turn. */
export function inTurn(work, needsState = false) {
  if (ad.waiting.length >= MOST_WAITING) return flooded();
  ad.waiting.push({ action: ad.action, work, needsState });
  if (ad.waiting.length === 1) proceed();
}

/** The call is answered with an error, in its turn. */
export function refuse(message) {
  inTurn(() => fail(message));
}

export function proceed() {
  while (ad.waiting.length > 0) {
    const call = ad.waiting[0];
    if (call.needsState && ad.underWay && ad.underWay.isTold) return;
    ad.waiting.shift();
    as(call.action, call.work);
  }
}

/** Nothing is thrown into the creative: an argument that cannot be read is an error like any other. */
export function as(action, work) {
  const outer = ad.action; // the work of one call may be done in another
  ad.action = action;
  try {
    return work();
  } catch (error) {
    fail('The arguments cannot be used.');
  } finally {
    ad.action = outer;
  }
}

// --- changes of the state

function askFor(state, isTold = true) {
  notLater(ad.patience);
  ad.underWay = { state, isTold };
  ad.patience = later(() => {
    ad.underWay = null;
    proceed();
  }, PATIENCE);
}

/** The host says that it is in this state. */
export function isIn(state) {
  if (!ad.underWay || (ad.underWay.isTold && ad.underWay.state !== state && state !== 'hidden')) return;
  notLater(ad.patience);
  ad.underWay = null;
}

// A first part is not told that its second is there: it counts as expanded for a while.
function state() {
  return ad.underWay ? ad.underWay.state : ad.state;
}

/** With an address, which has to be whole, into a second part. */
export function expand(address) {
  const work = () => {
    if (state() === 'expanded') return; // it is what it should be
    if (ad.placement === 'interstitial') return fail('An interstitial does not expand.');
    if (state() === 'resized') {
      leave(); // the host expands from the default state only
      ad.waiting.unshift({ action: 'expand', work, needsState: true });
      return;
    }
    if (state() !== 'default') return fail('expand() is not possible in state ' + state() + '.');
    if (address) send('expand', 'url', address);
    else send('expand');
    askFor('expanded', !address);
  };
  inTurn(work, true);
}

export function resize() {
  const properties = ad.resizeProperties;
  const neverWhole = ad.resizeFault || 'resize() needs setResizeProperties() before.';
  inTurn(() => {
    if (ad.placement === 'interstitial') return fail('An interstitial does not resize.');
    if (state() !== 'default' && state() !== 'resized')
      return fail('resize() is not possible in state ' + state() + '.');
    if (!properties) return fail(neverWhole);
    const fault = resizeFault(properties) || closeRegionFault(properties);
    if (fault) return fail(fault);
    if (properties.allowOffscreen && hostRefuses(properties))
      sendResizeProperties(merge(copy(properties), { allowOffscreen: false }));
    send('resize');
    askFor('resized');
  }, true);
}

export function close() {
  inTurn(() => {
    if (state() !== 'hidden') leave();
  }, true);
}

function leave() {
  const left = state();
  send('close');
  if (ad.placement === 'interstitial') askFor('hidden');
  else if (left === 'expanded' || left === 'resized') askFor('default');
}
