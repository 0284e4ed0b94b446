// What creatives call: the methods of window.mraid. Whatever they do wrong is judged on this side and told to their
// "error" listeners, since the host drops what it does not like without a word.

import { escaped, whole } from './addresses.js';
import { eventFault } from './calendar.js';
import { send } from './channel.js';
import { close, expand, resize } from './commands.js';
import { addListener, isEvent, removeListener } from './events.js';
import { expandProperties, setExpandProperties, setOrientationProperties, setResizeProperties } from './properties.js';
import { as, inTurn, refuse } from './queue.js';
import { ad } from './state.js';
import { copy, isObject, isText, json } from './values.js';

function sendAddress(command, address) {
  inTurn(() => send(command, 'url', address));
}

const methods = {
  getVersion: () => ad.version,
  getState: () => ad.state,
  getPlacementType: () => ad.placement,
  isViewable: () => ad.viewable,
  getCurrentPosition: () => copy(ad.currentPosition),
  getDefaultPosition: () => copy(ad.defaultPosition),
  getMaxSize: () => copy(ad.maxSize),
  getScreenSize: () => copy(ad.screenSize),
  getLocation: () => (ad.location === -1 ? -1 : copy(ad.location)),
  getCurrentAppOrientation: () => ({
    orientation: ad.screenSize.width > ad.screenSize.height ? 'landscape' : 'portrait',
    locked: false,
  }),
  supports: (feature) => Object.prototype.hasOwnProperty.call(ad.supported, feature) && ad.supported[feature],

  addEventListener: (event, listener) => {
    if (!isEvent(event)) return refuse('There is no event ' + event + '.');
    if (typeof listener !== 'function') return refuse('The listener is not a function.');
    addListener(event, listener);
  },
  removeEventListener: (event, listener) => {
    if (!isEvent(event)) return refuse('There is no event ' + event + '.');
    removeListener(event, listener);
  },

  // It may leave the scheme to the host, as in "shop.example".
  open: (url) => {
    if (!isText(url)) return refuse('open() needs a URL.');
    sendAddress('open', escaped(url));
  },
  playVideo: (url) => {
    if (!isText(url)) return refuse('playVideo() needs a URL.');
    sendAddress('playVideo', whole(url));
  },
  storePicture: (url) => {
    if (!isText(url)) return refuse('storePicture() needs a URL.');
    if (!ad.supported.storePicture) return refuse('Pictures cannot be stored here.');
    sendAddress('storePicture', whole(url));
  },
  createCalendarEvent: (event) => {
    if (!isObject(event)) return refuse('createCalendarEvent() needs an object.');
    const sent = copy(event);
    const fault = eventFault(sent, event);
    if (fault) return refuse(fault);
    if (!ad.supported.calendar) return refuse('There is no calendar here.');
    const text = json(sent);
    inTurn(() => send('createCalendarEvent', 'event', text));
  },

  expand: (url) => {
    if (url && !isText(url)) return refuse('The URL is not a text.');
    expand(url ? whole(url) : '');
  },
  resize,
  close,
  unload: () => inTurn(() => send('unload')),

  useCustomClose: (useCustomClose) => setExpandProperties({ useCustomClose: !!useCustomClose }),
  getExpandProperties: expandProperties,
  setExpandProperties,
  getOrientationProperties: () => copy(ad.orientationProperties),
  setOrientationProperties,
  getResizeProperties: () => copy(ad.resizeDraft),
  setResizeProperties,
};

export const creativeMethods = {};
Object.keys(methods).forEach((name) => {
  creativeMethods[name] = (...args) => as(name, () => methods[name](...args));
});
