// The calls that change the state.

import { send } from './channel.js';
import { fail } from './events.js';
import { sendResizeProperties } from './properties.js';
import { askFor, first, inTurn, state } from './queue.js';
import { closeRegionFault, hostRefuses, resizeFault } from './resizeRules.js';
import { ad } from './state.js';
import { copy, merge } from './values.js';

/** With an address, which has to be whole, into a second part. */
export function expand(address) {
  const work = () => {
    if (state() === 'expanded') return; // it is what it should be
    if (ad.placement === 'interstitial') return fail('An interstitial does not expand.');
    if (state() === 'resized') {
      leave(); // the host expands from the default state only
      first('expand', work);
      return;
    }
    if (state() !== 'default') return fail('expand() is not possible in state ' + state() + '.');
    if (!(address ? send('expand', 'url', address) : send('expand'))) return;
    if (address) ad.hostsResize = null; // the parts do not share them
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
    const refuses = properties.allowOffscreen && hostRefuses(properties);
    sendResizeProperties(refuses ? merge(copy(properties), { allowOffscreen: false }) : properties);
    if (send('resize')) askFor('resized');
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
