// What the host calls, in single statements: setters, and fireEvent().

import { begin, end, note } from './changes.js';
import { fire } from './events.js';
import { isIn } from './queue.js';
import { ad } from './state.js';
import { copy, isOneOf, merge } from './values.js';

const STATES = ['loading', 'default', 'expanded', 'resized', 'hidden'];

export const hostMethods = {
  setVersion: (value) => {
    ad.version = value;
  },
  setSupports: (feature, value) => {
    ad.supported[feature] = value;
    begin('ready');
  },
  setLocation: (value) => {
    ad.location = value;
  },
  setMaxSize: (value) => {
    ad.maxSize = value;
  },
  setScreenSize: (value) => {
    const isRotation = ad.lastStatement === 'setState'; // which is not a change of state
    if (isRotation) ad.lastStatement = 'exposureChange';
    // It is told to the first part alone, also when it turned the second.
    ad.isOfOtherPart = isRotation && ad.state !== 'expanded';
    if (ad.isOfOtherPart) {
      ad.currentPosition = ad.positionBefore;
      if (!ad.unturned) keepForReturn(true, ad.screenSize);
    }
    ad.screenSize = value;
    if (ad.isReady && ad.state === 'expanded') ad.maxSize = copy(value);
  },
  setDefaultPosition: (value) => {
    ad.defaultPosition = ad.placeInBanner = value;
    ad.isPlaceKnown = false;
    begin('setState');
  },
  setCurrentPosition: (value) => {
    ad.positionBefore = ad.currentPosition;
    ad.currentPosition = value;
    begin('setState');
  },
  setPlacementType: (value) => {
    ad.placement = value;
    begin('setState');
  },
  setIsViewable: (value) => {
    if (value !== ad.viewable) begin('viewableChange');
    ad.viewable = value;
    note('viewableChange');
    end('setIsViewable');
  },
  setState: (value) => {
    if (!isOneOf(value, STATES)) return;
    if (ad.isReady && ad.placement !== 'interstitial') stateChanges(value);
    ad.state = value;
    isIn(value);
    note('stateChange');
    if (value === 'hidden') {
      // Not viewable any more is the next that is told.
      ad.exposure = { exposedPercentage: 0, visibleRectangle: null, occlusionRectangles: null };
      note('exposureChange');
      begin('setIsViewable');
    }
    end('setState');
  },
  fireEvent: (event, value, about) => {
    if (event === 'error') return fire(event, [value, about]);
    if (ad.isOfOtherPart) return end(event);
    if (event === 'sizeChange') ad.size = value;
    if (event === 'viewableChange') ad.viewable = value;
    if (event === 'audioVolumeChange') ad.volume = (value && value.volumePercentage) ?? null;
    if (event === 'exposureChange') ad.exposure = withinAd(value);
    note(event);
    end(event);
  },
};

function stateChanges(value) {
  if (value === 'expanded' && ad.state !== value) {
    // It covers all that it may; the window may have another size than when the page was loaded.
    ad.maxSize = sizeOf(ad.currentPosition);
    keepForReturn(ad.orientationProperties.forceOrientation !== 'none', ad.maxSize);
  } else if (value === 'default') {
    ad.defaultPosition = copy(ad.currentPosition); // on the screen, told for the first time
    ad.isPlaceKnown = true;
    // What the ad has turned goes back, and the place that was told is one on the turned screen. A window that got
    // another size meanwhile keeps it.
    const before = ad.unturned;
    const filled = ad.state === 'expanded' ? ad.maxSize : ad.screenSize;
    ad.unturned = null;
    if (before && before.byAd && isWide(before.filled) !== isWide(filled)) merge(ad, before.values);
  }
}

function keepForReturn(byAd, filled) {
  const { screenSize, maxSize, positionBefore, defaultPosition, isPlaceKnown } = ad;
  ad.unturned = { byAd, filled, values: { screenSize, maxSize, currentPosition: positionBefore, defaultPosition, isPlaceKnown } };
}

function isWide(size) {
  return size.width > size.height;
}

function sizeOf(box) {
  return { width: box.width, height: box.height };
}

// The host counts rectangles from where it counts the ad's position from, creatives from the ad's own corner.
function withinAd(exposure) {
  const { exposedPercentage, visibleRectangle, occlusionRectangles } = exposure;
  if (!exposedPercentage) return { exposedPercentage, visibleRectangle: null, occlusionRectangles };
  const isWhole = exposedPercentage >= 100;
  return {
    exposedPercentage,
    visibleRectangle: {
      x: isWhole ? 0 : visibleRectangle.x - ad.currentPosition.x,
      y: isWhole ? 0 : visibleRectangle.y - ad.currentPosition.y,
      width: visibleRectangle.width,
      height: visibleRectangle.height,
    },
    occlusionRectangles,
  };
}
