// What the page's session client and verification scripts may call. A method is called with its caller: { reply, near },
// `near` being who can touch this window; then come its arguments.
import { mediaTypes } from './events.js';
import { present } from './values.js';

/** Of verification scripts. */
export const verificationMethods = (session) => ({
  addSessionListener(caller, vendorKey, injectionId) {
    session.events.listen({ type: 'session', vendorKey, injectionId, call: caller.reply, near: caller.near });
  },
  addEventListener(caller, type, injectionId) {
    session.events.listen({ type, injectionId, call: caller.reply, near: caller.near });
  },
});

/** Of the ad's own session client. What it reports happens as it does, also when it can be told only later. */
export function sessionMethods(session, elements) {
  const now = () => Date.now();
  const reported = (given, report) => {
    const time = now();
    const told = present(given); // what cannot be read is the caller's fault, and nobody else's later
    session.whenRunning(() => report(time, told));
  };
  const nothing = () => {};
  const methods = {
    setClientInfo: (_, sessionClientVersion, partnerName, partnerVersion) =>
      session.introduce({ sessionClientVersion, partnerName, partnerVersion }),
    injectVerificationScriptResources: (_, entries) => session.nameResources(entries),
    setSlotElement: (_, element) => elements.setSlot(element),
    setVideoElement: (_, element) => elements.setVideo(element),
    setElementBounds: (_, bounds) => elements.setBounds(bounds),
    setContentUrl: (_, url) => session.setContentUrl(url),
    setCreativeType: (_, type) => session.setType('creativeType', type),
    setImpressionType: (_, type) => session.setType('impressionType', type),
    registerSessionObserver: (caller) =>
      session.events.observe({ type: 'session', call: caller.reply, near: caller.near }),
    sessionError: (_, errorType, message) => reported([errorType, message], (time, told) => session.error(time, ...told)),
    impressionOccurred: () => reported(null, (time) => session.impression('javascript', time)),
    loaded: (_, vast) => reported(vast, (time, told) => session.loaded('javascript', time, told)),
    start: (_, duration, volume) => session.mediaVolume('javascript', now(), 'start', volume, { duration }),
    volumeChange: (_, volume) => session.mediaVolume('javascript', now(), 'volumeChange', volume),
    playerStateChange: (_, state) => session.media('javascript', now(), 'playerStateChange', present({ state })),
    adUserInteraction: (_, interactionType) =>
      session.media('javascript', now(), 'adUserInteraction', present({ interactionType })),
    // The application starts and finishes its sessions itself; the events' owners it told when it did.
    startSession: nothing,
    finishSession: nothing,
    registerAdEvents: nothing,
    registerMediaEvents: nothing,
  };
  for (const type of mediaTypes) methods[type] = methods[type] || (() => session.media('javascript', now(), type));
  return methods;
}
