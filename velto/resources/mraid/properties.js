// Properties that the creative sets. The host gets the whole record each time, in the turn of the call.

import { send } from './channel.js';
import { closeMarkIsDue } from './closeMark.js';
import { inTurn, refuse } from './queue.js';
import { closeRegionFault, resizeFault } from './resizeRules.js';
import { ad } from './state.js';
import { copy, isNumber, isObject, isOneOf, json, merge } from './values.js';

// The named fields of both records; those that were given win.
function merged(names, record, given) {
  const result = copy(record);
  names.forEach((name) => {
    if (given[name] !== undefined) result[name] = given[name];
  });
  return result;
}

// --- expand

export function expandProperties() {
  return merge({ width: ad.maxSize.width, height: ad.maxSize.height }, ad.expandProperties);
}

export function setExpandProperties(given) {
  if (!isObject(given)) return refuse('setExpandProperties() needs an object.');
  const wanted = merged(['width', 'height', 'useCustomClose'], ad.expandProperties, given);
  for (const name of ['width', 'height'])
    if (wanted[name] !== undefined && !isNumber(wanted[name])) return refuse(name + ' is not a number.');
  if (typeof wanted.useCustomClose !== 'boolean') return refuse('useCustomClose is not a boolean.');
  ad.expandProperties = wanted;
  closeMarkIsDue();
  const text = json(expandProperties());
  inTurn(() => send('setExpandProperties', 'properties', text));
}

// --- orientation

export function setOrientationProperties(given) {
  if (!isObject(given)) return refuse('setOrientationProperties() needs an object.');
  const wanted = merged(['allowOrientationChange', 'forceOrientation'], ad.orientationProperties, given);
  if (typeof wanted.allowOrientationChange !== 'boolean') return refuse('allowOrientationChange is not a boolean.');
  if (!isOneOf(wanted.forceOrientation, ['portrait', 'landscape', 'none']))
    return refuse('forceOrientation is none of portrait, landscape and none.');
  ad.orientationProperties = wanted;
  ad.turnedEarly = !ad.isReady;
  if (ad.unturned && wanted.forceOrientation !== 'none') ad.unturned.byAd = true;
  const text = json(wanted);
  inTurn(() => send('setOrientationProperties', 'properties', text));
}

export function sendOrientationProperties() {
  send('setOrientationProperties', 'properties', json(ad.orientationProperties));
}

// --- resize

export function setResizeProperties(given) {
  if (!isObject(given)) return refuse('setResizeProperties() needs an object.');
  const names = ['width', 'height', 'offsetX', 'offsetY', 'customClosePosition', 'allowOffscreen'];
  const wanted = merged(names, ad.resizeDraft, given);
  const fault = resizeFault(wanted);
  ad.resizeFault = fault || closeRegionFault(wanted);
  // What is only not whole yet is kept, and may be completed.
  if (!ad.resizeFault || (fault && fault.endsWith(' is missing.'))) ad.resizeDraft = wanted;
  if (ad.resizeFault) return refuse(ad.resizeFault);
  ad.resizeProperties = wanted;
  // Not before a resize is over: the host tells of its size with the properties that it has by then.
  inTurn(() => sendResizeProperties(wanted), true);
}

/** Unless they are what the host has. */
export function sendResizeProperties(properties) {
  const text = json(properties);
  if (ad.hostsResize !== text && send('setResizeProperties', 'properties', text)) ad.hostsResize = text;
}
