// A service in a page of the test's own: an ad of 320 × 100 points at (40, 50), in a window of 400 × 500.
import { applicationMethods } from '../../../velto/resources/measurement/application.js';
import { sessionMethods, verificationMethods } from '../../../velto/resources/measurement/clients.js';
import { Elements } from '../../../velto/resources/measurement/elements.js';
import { Messages } from '../../../velto/resources/measurement/messages.js';
import { box } from '../../../velto/resources/measurement/rectangles.js';
import { Resources } from '../../../velto/resources/measurement/resources.js';
import { Session } from '../../../velto/resources/measurement/session.js';

export const seen = (changes = {}) => ({
  viewport: { width: 400, height: 500 },
  window: box(0, 0, 400, 500),
  adView: {
    ...{ percentageInView: 100, pixelsInView: 32000, geometry: box(40, 50, 320, 100), reasons: [] },
    onScreenGeometry: { ...box(40, 50, 320, 100), obstructions: [] },
    ...changes,
  },
});

export const started = (changes = {}) => ({
  adSessionId: 'id',
  context: { omidJsInfo: {} },
  creativeType: 'video',
  impressionType: 'beginToRender',
  impressionOwner: 'javascript',
  mediaEventsOwner: 'javascript',
  deviceVolume: 1,
  geometry: seen(),
  ...changes,
});

export function service() {
  const frames = [];
  /** @type {any} */
  const top = { addEventListener() {}, removeEventListener() {} };
  const elements = new Elements(top, () => session.look(Date.now()));
  const page = { address: () => 'about:blank', place: () => elements.place(), elements: () => elements };
  const session = new Session(page, new Resources((resource) => frames.push(resource)));
  const messages = new Messages(verificationMethods(session), sessionMethods(session, elements));
  let calls = 0;
  const send = (method, args, heard, near = true) => {
    const message = { omid_message_guid: `g${++calls}`, omid_message_method: method, omid_message_version: '1.4.0' };
    messages.receive({ ...message, omid_message_args: args }, (answer) => heard(answer.omid_message_args[0]), near);
  };
  return {
    frames,
    top,
    app: applicationMethods(session, () => elements.stop()),
    call: (method, ...args) => send(`SessionService.${method}`, args, () => {}),
    observe: (heard) => send('SessionService.registerSessionObserver', [], heard),
    /** The events of that type, or with a session listener's arguments those of the session, as they come. */
    hear(type, injectionId, near = true) {
      const log = [];
      const [method, first] = type === 'session' ? ['addSessionListener', 'vendor'] : ['addEventListener', type];
      send(`VerificationService.${method}`, [first, injectionId], (event) => log.push(event), near);
      return log;
    },
  };
}

export const told = (log) => log.map((event) => `${event.type}@${event.timestamp}`).join(' ');
