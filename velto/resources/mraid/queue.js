// The creative's calls, first in, first out. What depends on the state waits until the host has made the change before
// it; everything else goes at once, unless a call that came earlier waits.

import { flooded } from './channel.js';
import { fail } from './events.js';
import { ad } from './state.js';

const MOST_WAITING = 256;

/** Puts work before all that waits. */
export function first(action, work) {
  ad.waiting.unshift({ action, work, needsState: true });
}

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

/** The host has been asked for this state; a first part is never told that its second is there. */
export function askFor(state, isTold = true) {
  const action = ad.action;
  ad.underWay = { state, isTold };
  ad.patience.set(() => {
    ad.underWay = null;
    if (isTold) as(action, () => fail('The ad could not be changed.'));
    proceed();
  });
}

/** The host says that it is in this state. */
export function isIn(state) {
  if (!ad.underWay || (ad.underWay.isTold && ad.underWay.state !== state && state !== 'hidden')) return;
  ad.patience.lift();
  ad.underWay = null;
}

/** The state that the next call finds; a first part counts as expanded for a while. */
export function state() {
  return ad.underWay ? ad.underWay.state : ad.state;
}
