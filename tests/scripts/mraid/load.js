// A page that has just been loaded, and what its creative hears.
import { Host } from './page.js';
import { creativeMethods as mraid } from '../../../velto/resources/mraid/creative.js';
import { hostMethods } from '../../../velto/resources/mraid/statements.js';
import { ad, initialState } from '../../../velto/resources/mraid/state.js';

/** Without a placement it is not ready yet. */
export function load(placement) {
  Object.assign(ad, initialState());
  const host = new Host(hostMethods);
  const log = [];
  for (const event of ['ready', 'stateChange', 'sizeChange', 'viewableChange'])
    mraid.addEventListener(event, (...args) => log.push([event, ...args].join(' ')));
  mraid.addEventListener('error', (message, action) => log.push('error ' + action + ': ' + message));
  if (placement) host.ready(placement);
  return { host, log, heard: () => log.splice(0) };
}
