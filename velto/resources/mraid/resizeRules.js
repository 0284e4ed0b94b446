// What is wrong with resize properties, in words for the creative; nothing when they are right.

import { ad } from './state.js';
import { isNumber, isOneOf } from './values.js';

const CLOSE_POSITIONS = ['top-left', 'top-center', 'top-right', 'center', 'bottom-left', 'bottom-center', 'bottom-right'];
const LEAST_SIZE = 50; // of a close region, and so of a resized ad

/** In themselves, and for the screen. What is missing comes last: nothing else is wrong with those. */
export function resizeFault(properties) {
  const names = ['width', 'height', 'offsetX', 'offsetY'];
  const missing = names.find((name) => properties[name] === undefined);
  return faultOfGiven(properties, names) || (missing && missing + ' is missing.');
}

function faultOfGiven(properties, names) {
  for (const name of names)
    if (properties[name] !== undefined && !isNumber(properties[name])) return name + ' is not a number.';
  for (const name of ['width', 'height'])
    if (properties[name] < LEAST_SIZE) return name + ' must be at least ' + LEAST_SIZE + '.';
  if (!isOneOf(properties.customClosePosition, CLOSE_POSITIONS))
    return 'customClosePosition is none of ' + CLOSE_POSITIONS.join(', ') + '.';
  if (typeof properties.allowOffscreen !== 'boolean') return 'allowOffscreen is not a boolean.';
  if (properties.allowOffscreen || !isScreenKnown()) return;
  for (const name of ['width', 'height'])
    if (properties[name] > ad.maxSize[name])
      return name + ' must be at most ' + ad.maxSize[name] + ' when allowOffscreen is false.';
}

function isScreenKnown() {
  return ad.maxSize.width > 0 && ad.maxSize.height > 0;
}

/**
 * Whether the touch area for closing would lie on the screen, all of it: where the host puts resized ads, at the bottom
 * and in the middle, and where the page asked for it. Until it first changed its size the page does not know where on
 * the screen it stands; then any place that it could have will do.
 */
export function closeRegionFault(properties) {
  if (!properties.allowOffscreen || !isScreenKnown()) return;
  const { maxSize, defaultPosition } = ad;
  const words = properties.customClosePosition.split('-');
  const right = properties.width - LEAST_SIZE;
  const bottom = properties.height - LEAST_SIZE;
  const dx = isOneOf('left', words) ? 0 : isOneOf('right', words) ? right : right / 2;
  const dy = isOneOf('top', words) ? 0 : isOneOf('bottom', words) ? bottom : bottom / 2;
  const isWithin = (at, slack, size) => at + slack >= 0 && at + LEAST_SIZE <= size;
  const slack = (name) => (ad.isPlaceKnown ? 0 : Math.max(0, maxSize[name] - defaultPosition[name]));
  const fault = (name, size) =>
    'With this ' + name + ' the close region would be off screen, which has a ' + size + ' of ' + maxSize[size] + '.';

  if (!isWithin((maxSize.width - properties.width) / 2 + dx, 0, maxSize.width)) return fault('width', 'width');
  if (!isWithin(maxSize.height - properties.height + dy, 0, maxSize.height)) return fault('height', 'height');
  if (!isWithin(defaultPosition.x + properties.offsetX + dx, slack('width'), maxSize.width))
    return fault('offsetX', 'width');
  if (!isWithin(defaultPosition.y + properties.offsetY + dy, slack('height'), maxSize.height))
    return fault('offsetY', 'height');
}

/**
 * The host's own test of offscreen resizes counts the close region from its far edge and refuses, say, one that is as
 * wide as the screen. True when it would refuse.
 */
export function hostRefuses(properties) {
  const isOutside = (value, least, most) => value < least || value > most;
  const position = properties.customClosePosition;
  const x = ad.placeInBanner.x + properties.offsetX;
  const y = ad.placeInBanner.y + properties.offsetY;
  const lowest = ad.maxSize.height - LEAST_SIZE;
  const rightmost = ad.maxSize.width - LEAST_SIZE;
  if (/top/.test(position)) {
    if (isOutside(y, 0, lowest)) return true;
  } else if (/bottom/.test(position) && isOutside(y + properties.height, LEAST_SIZE, lowest)) {
    return true;
  }
  if (/right/.test(position)) return isOutside(x + properties.width, LEAST_SIZE, rightmost);
  return /left/.test(position) && isOutside(x, 0, rightmost);
}
