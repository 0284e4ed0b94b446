// All that the script knows: of the ad, as the host told it; of what the creative wants; and what is under way
// between the two. One object for all modules.

import { deadline } from './engine.js';

export function initialState() {
  return {
    // What the host said.
    version: '2.0',
    state: 'loading',
    placement: 'unknown',
    viewable: false,
    supported: {},
    location: /** @type {any} */ (-1),
    screenSize: { width: 0, height: 0 },
    maxSize: { width: 0, height: 0 },
    currentPosition: { x: 0, y: 0, width: 0, height: 0 },
    positionBefore: null, // what the current position was before it was told last
    defaultPosition: { x: 0, y: 0, width: 0, height: 0 },
    placeInBanner: { x: 0, y: 0, width: 0, height: 0 }, // of the page's view, which does not change
    isPlaceKnown: false, // whether the default position is one on the screen; until the first change it is not
    size: null,
    exposure: null,
    volume: null,
    unturned: null, // what held before an expansion, and whether the ad has turned the screen since

    // What the creative wants.
    listeners: {},
    expandProperties: { useCustomClose: false, isModal: true },
    orientationProperties: { allowOrientationChange: true, forceOrientation: 'none' },
    turnedEarly: false, // orientation properties were set before the host knew what kind of ad this is
    resizeProperties: null, // the last that were whole and right
    resizeDraft: { customClosePosition: 'top-right', allowOffscreen: true }, // what getResizeProperties() answers
    hostsResize: null, // what the host has of them, as text
    resizeFault: null, // what is wrong with the last that were given

    // Calls on their way to the host: queue.js.
    action: null, // the method that a creative has called, which errors name
    waiting: [],
    underWay: null, // the change of state that the host has been asked for
    patience: deadline(3000), // for the host's word that a change is made
    sentInTurn: 0,
    isFlooded: false,

    // News on their way to the creative: changes.js, events.js.
    isReady: false,
    isSecondPart: false,
    lastStatement: null, // the one that ends the change that is being told
    isOfOtherPart: false, // that change
    silence: deadline(50), // a change is over whose last statement does not come
    news: [],
    told: { stateChange: '["loading"]', viewableChange: '[false]' }, // the arguments that listeners know, as text
    undelivered: [],
    isDelivering: false,
  };
}

export const ad = initialState();
