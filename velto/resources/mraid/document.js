// The script's place in the page.

import { note, tellChange } from './changes.js';
import { inEachPage } from './engine.js';
import { ad } from './state.js';
import { copy, merge } from './values.js';

/** Makes it the window's own, whatever scripts of that name the page brings along. */
export function provide(mraid, environment) {
  Object.defineProperty(window, 'mraid', { get: () => mraid, set: () => {}, enumerable: true, configurable: true });
  window.MRAID_ENV = environment;
  // A page that asks for "mraid.js" in a later script tag has it already, wherever the address leads.
  const answer = (event) => {
    const script = event.target;
    if (!(script instanceof HTMLScriptElement) || !/(^|\/)mraid\.js([?#]|$)/.test(script.getAttribute('src') || ''))
      return;
    event.stopImmediatePropagation();
    script.dispatchEvent(new Event('load'));
  };
  inEachPage(() => window.addEventListener('error', answer, true));
}

/** A frame of the same origin shares what the page has. */
export function provideFromPage() {
  // Asked first, since the engine complains of what is tried in vain.
  const { ancestorOrigins } = window.location;
  if (ancestorOrigins && ancestorOrigins[0] !== window.origin) return;
  try {
    if (window.parent.mraid) provide(window.parent.mraid, window.parent.MRAID_ENV);
  } catch (error) {
    // of another origin
  }
}

/** An interstitial and a second part are told of no rotation; they see their own size. */
export function followSize() {
  const follow = () => {
    const now = { width: window.innerWidth, height: window.innerHeight };
    const fillsScreen = ad.placement === 'interstitial' || (ad.isSecondPart && ad.state === 'expanded');
    if (!ad.isReady || !fillsScreen || !now.width || !now.height) return;
    if (now.width === ad.currentPosition.width && now.height === ad.currentPosition.height) return;
    const { screenSize } = ad;
    if (now.width > now.height !== screenSize.width > screenSize.height)
      ad.screenSize = { width: screenSize.height, height: screenSize.width };
    ad.maxSize = now;
    ad.currentPosition = merge({ x: 0, y: 0 }, now);
    ad.defaultPosition = copy(ad.currentPosition);
    ad.size = now;
    note('sizeChange');
    if (ad.exposure && ad.exposure.visibleRectangle) {
      ad.exposure = merge(copy(ad.exposure), { visibleRectangle: copy(ad.currentPosition) });
      note('exposureChange');
    }
    if (!ad.lastStatement) tellChange();
  };
  inEachPage(() => window.addEventListener('resize', follow));
}
