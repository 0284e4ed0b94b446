// What the application calls (ServicePage). Each statement begins with the time at which the thing happened, in
// milliseconds since 1970: it may have waited for its page.
export const applicationMethods = (session, stop) => ({
  start: (time, told) => session.start(time, told),
  geometry: (time, seen) => session.look(time, seen),
  impression: (time) => session.impression('native', time),
  loaded: (time, vast) => session.loaded('native', time, vast),
  media: (time, type, data) => session.media('native', time, type, data),
  mediaVolume(time, type, volume, deviceVolume, data) {
    session.setDeviceVolume(deviceVolume);
    session.mediaVolume('native', time, type, volume, data);
  },
  trace: () => (session.events.trace || []).splice(0),
  // The page lives on for a moment, so that scripts can send what they have to.
  finish(time) {
    session.finish(time);
    stop();
  },
});
