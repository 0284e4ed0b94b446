// What an ad does that carries out its creative's calls one after the other, and random sequences of calls.

// The second ones the host would refuse, as they are.
const PROPERTIES = {
  A: { width: 300, height: 250, customClosePosition: 'top-right' },
  B: { width: 320, height: 580, customClosePosition: 'bottom-left' },
};
const CALLS = ['expand', 'resize', 'close', 'expand', 'resize', 'close', 'open', 'A', 'B', 'bad', 'custom', 'wait'];

/** A small generator of numbers below 1; the same seed gives the same ones. */
export function random(seed) {
  let state = seed * 2654435761;
  return () => {
    state = (Math.imul(state ^ (state >>> 15), 2246822519) + 0x9e3779b9) | 0;
    return ((state ^ (state >>> 13)) >>> 0) / 4294967296;
  };
}

export function randomCalls(next) {
  return Array.from({ length: 2 + Math.floor(next() * 9) }, () => CALLS[Math.floor(next() * CALLS.length)]);
}

/** Makes the call; `at` tells addresses apart. */
export function make(mraid, call, at) {
  if (PROPERTIES[call]) mraid.setResizeProperties({ ...PROPERTIES[call], offsetX: 0, offsetY: 0 });
  else if (call === 'bad') mraid.setResizeProperties({ width: 10 });
  else if (call === 'custom') mraid.useCustomClose(true);
  else mraid[call](call === 'open' ? 'https://shop.example/' + at : undefined);
}

/** The changes that the creative hears of, the errors, and the addresses that leave, each in their order. */
export function outcome(calls, banner, screen) {
  const said = { changes: [], errors: [], opened: [] };
  let state = 'default';
  let size = banner;
  let properties = null;
  const go = (to, newSize) => {
    if (String(size) !== String(newSize)) said.changes.push('sizeChange ' + newSize.join(' '));
    if (state !== to) said.changes.push('stateChange ' + to);
    [state, size] = [to, newSize];
  };
  calls.forEach((call, at) => {
    if (PROPERTIES[call]) properties = PROPERTIES[call];
    if (call === 'bad') said.errors.push('setResizeProperties');
    if (call === 'open') said.opened.push('https://shop.example/' + at);
    if (call === 'close' && state !== 'default') go('default', banner);
    if (call === 'expand' && state !== 'expanded') {
      if (state === 'resized') go('default', banner);
      go('expanded', screen);
    }
    if (call === 'resize' && (state === 'expanded' || !properties)) said.errors.push('resize');
    else if (call === 'resize') go('resized', [properties.width, properties.height]);
  });
  return said;
}

/** Writes down what a creative hears, to be compared with the outcome. */
export function listen(mraid, said) {
  for (const event of ['stateChange', 'sizeChange'])
    mraid.addEventListener(event, (...args) => said.changes.push(event + ' ' + args.join(' ')));
  mraid.addEventListener('error', (_, action) => said.errors.push(action));
}
