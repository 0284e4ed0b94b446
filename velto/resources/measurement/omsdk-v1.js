// The measurement service of a page that holds an ad: it takes what the application and the ad's own session client
// tell of the ad, and passes it on to the verification scripts that listen (Open Measurement, version 1.0). It stands
// first in the page, before any other script, and in the hidden page of a native ad.
//
// Clients reach it in three ways: the objects of window.omid, when they can touch this window; messages posted to it,
// for which two empty frames tell them that somebody listens; and the functions of window.omid3p.
import { applicationMethods } from './application.js';
import { sessionMethods, verificationMethods } from './clients.js';
import { Elements } from './elements.js';
import { Messages } from './messages.js';
import { announcePresence } from './presence.js';
import { openFrame, Resources } from './resources.js';
import { Session } from './session.js';

function install() {
  const elements = new Elements(window, () => session.look(Date.now()));
  const page = { address: () => location.href, place: () => elements.place(), elements: () => elements };
  const session = new Session(page, new Resources((resource) => openFrame(document, resource)));
  const messages = new Messages(verificationMethods(session), sessionMethods(session, elements));

  const hear = ({ data, source }) =>
    messages.receive(data, (answer) => source.postMessage(answer, { targetOrigin: '*' }), false);
  const door = () => {
    const service = {
      handleExportedMessage: (message, from) =>
        messages.receive(message, (answer) => from.handleExportedMessage(answer, service), true),
    };
    return service;
  };
  window.omid = window.omid || {};
  window.omid.v1_SessionServiceCommunication = door();
  window.omid.v1_VerificationServiceCommunication = door();
  window.omid3p = {
    registerSessionObserver: (call, vendorKey, injectionId) =>
      session.events.listen({ type: 'session', vendorKey, injectionId, call, near: true }),
    addEventListener: (type, call, injectionId) => session.events.listen({ type, injectionId, call, near: true }),
  };
  announcePresence(document, () => window.addEventListener('message', hear));
  const api = applicationMethods(session, () => elements.stop());
  Object.defineProperty(window, '__veltoOMID', { value: Object.freeze(api) });
}

if (!window.__veltoOMID) install();
