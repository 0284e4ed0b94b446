// The measurement service of a page that holds an ad: it takes what the application and the ad's own session client
// tell of the ad, and passes it on to the verification scripts that listen (Open Measurement, version 1.0). It stands
// first in the page, before any other script, and in the hidden page of a native ad.
//
// The application calls window.__veltoOMID (last in this file). Clients reach the service in three ways: the objects
// of window.omid, when they can touch this window; messages posted to it, for which two empty frames tell them that
// somebody listens; and the functions of window.omid3p.
import { area, box, overlap, without } from './rectangles.js';

(() => {
  if (window.__veltoOMID) return;

  const mediaEvents = ['loaded', 'start', 'firstQuartile', 'midpoint', 'thirdQuartile', 'complete', 'pause', 'resume',
    'bufferStart', 'bufferFinish', 'skipped', 'volumeChange', 'playerStateChange', 'adUserInteraction'];
  const sessionEvents = ['sessionStart', 'sessionError', 'sessionFinish'];
  const groups = { __proto__: null, session: sessionEvents, media: mediaEvents, video: mediaEvents };
  const replayed = ['sessionStart', 'loaded', 'impression', 'geometryChange'];  // in the order of a late start

  let session = null;        // what the application started: see start() below
  let finished = false;
  let client = null;         // the page's session client, as it introduced itself
  let clientId;              // ends each of its argument lists, once it has told it
  let contentUrl;
  let slot = null, video = null, bounds = null;  // the ad's own elements, when the page names them
  let nativeGeometry = null;
  let shown = '';            // the last geometryChange, as text
  const byScript = {};       // types that the page gave before the session started
  const early = [];          // what the page reported before that
  const listeners = [];      // verification scripts, in the order in which they came
  const observers = [];      // the page's own
  const resources = [];      // verification scripts by their address: those that the ad names
  const happened = {};       // the latest event of a type
  const held = [];           // media events of before the session's own scripts arrived
  let arriving = 0;          // how many of those are on their way
  const waiting = [];        // events that were published while another one was being told
  let telling = false;
  const longestArrival = 3000;  // milliseconds
  const trace = [], longestTrace = 500;  // events for a tool, when the application asks for them

  // --- geometry: the application knows the ad view; the page may narrow it down to an element

  // Where an element stands in this page, also one in a frame of it.
  const placeOf = (element) => {
    const at = element.getBoundingClientRect();
    let x = at.x, y = at.y;
    try {
      for (let view = element.ownerDocument.defaultView; view && view !== window; view = view.parent) {
        const frame = view.frameElement.getBoundingClientRect();
        x += frame.x + view.frameElement.clientLeft;
        y += frame.y + view.frameElement.clientTop;
      }
    } catch (error) {
      // A frame between that tells nothing: the element's own word has to do.
    }
    return box(x, y, at.width, at.height);
  };

  const elementRect = () => {
    const element = video || slot;
    if (!element && !bounds) return null;
    const at = element ? placeOf(element) : box(0, 0, 0, 0);
    return bounds ? box(at.x + bounds.x, at.y + bounds.y, bounds.width, bounds.height)
      : box(at.x, at.y, at.width, at.height);
  };

  const geometry = () => {
    const element = elementRect();
    if (!element || !nativeGeometry.adView) return nativeGeometry;
    const view = nativeGeometry.adView, whole = view.geometry, seen = view.onScreenGeometry;
    const rect = box(whole.x + element.x, whole.y + element.y, element.width, element.height);
    const onScreen = overlap(rect, seen);
    const inside = overlap(rect, whole);
    const pixels = view.percentageInView || area(seen) && view.pixelsInView
      ? without(onScreen, seen.obstructions).reduce((sum, part) => sum + area(part), 0) : 0;
    const percentage = area(rect) ? Math.round(100 * pixels / area(rect)) : 0;
    const reasons = new Set(view.reasons);
    if (!area(rect)) reasons.add('hidden');
    if (area(inside) < area(rect)) reasons.add('clipped');
    if (area(onScreen) < area(inside)) reasons.add('viewport');
    if (pixels < area(onScreen)) reasons.add('obstructed');
    return {
      viewport: nativeGeometry.viewport,
      adView: {
        percentageInView: percentage,
        pixelsInView: pixels,
        geometry: rect,
        onScreenGeometry: { ...onScreen, obstructions: seen.obstructions.filter((o) => area(overlap(o, rect))) },
        reasons: percentage < 100 ? [...reasons] : [],
      },
    };
  };

  // --- events

  // What is absent stays out.
  const copy = (value) => JSON.parse(JSON.stringify(value, (_, part) =>
    part === null || typeof part === 'number' && !isFinite(part) ? undefined : part));

  const types = () => ({
    mediaType: ['video', 'audio'].includes(session.creativeType) ? 'video' : 'display',
    creativeType: session.creativeType,
    impressionType: session.impressionType,
  });

  // The resource that a listening script was loaded from, as far as can be told.
  const resourceOf = (listener) =>
    resources.find((r) => r.injectionId === listener.injectionId && listener.injectionId) ||
    (listener.injectionId ? undefined : resources.find((r) => r.vendorKey && r.vendorKey === listener.vendorKey));

  const personal = (event, listener) => {
    const told = copy(event);
    if (event.type === 'sessionStart') {
      const resource = resourceOf(listener);
      if (resource && resource.verificationParameters !== undefined)
        told.data.verificationParameters = resource.verificationParameters;
      const access = resource ? resource.accessMode : listener.near ? 'full' : 'limited';
      told.data.context.accessMode = access;
      if (listener.near && access === 'full') {
        if (slot) told.data.context.slotElement = slot;
        if (video) told.data.context.videoElement = video;
      }
    }
    return told;
  };

  const wants = (listener, type) => listener.type === type || (groups[listener.type] || []).includes(type);

  const tell = (listener, event) => {
    try {
      listener.call(personal(event, listener));
    } catch (error) {
      // A listener's fault is its own.
    }
  };

  // Listeners hear all events in one order, also when one of them causes the next.
  const publish = (type, data, timestamp = Date.now()) => {
    waiting.push({ adSessionId: session.adSessionId, timestamp, type, data });
    if (telling) return;
    telling = true;
    try {
      while (waiting.length) {
        const event = waiting.shift();
        happened[event.type] = event;
        if (session.trace && trace.push(copy(event)) > longestTrace) trace.shift();
        for (const listener of listeners.slice()) if (wants(listener, event.type)) tell(listener, event);
        if (sessionEvents.includes(event.type)) for (const observer of observers.slice()) tell(observer, event);
      }
    } finally {
      telling = false;
    }
  };

  const replay = (listener) => {
    if (finished) return;
    for (const type of replayed) if (happened[type] && wants(listener, type)) tell(listener, happened[type]);
  };

  const listen = (listener) => {
    listeners.push(listener);
    replay(listener);
  };

  const publishGeometry = () => {
    const data = geometry();
    const text = JSON.stringify(data);
    if (text === shown) return;
    shown = text;
    publish('geometryChange', data);
  };

  // --- what is reported of the ad, by the application (native) or by the page (javascript)

  const done = {};
  const running = () => session && !finished;
  const once = (type, owner) => {
    if (!running() || owner !== session.impressionOwner || done[type]) return false;
    return done[type] = true;
  };

  const impression = (owner) => {
    if (once('impression', owner)) publish('impression', { ...types(), ...geometry() });
  };

  const loaded = (owner, vast) => {
    if (!once('loaded', owner)) return;
    const media = types().mediaType === 'video' && vast || {};
    publish('loaded', {
      ...types(),
      skippable: media.isSkippable ?? media.skippable,
      skipOffset: media.skipOffset ?? undefined,
      autoPlay: media.isAutoPlay ?? media.autoPlay,
      position: media.position ?? undefined,
    });
  };

  // Playback does not wait for the session's own scripts to arrive, and is told to nobody twice: so what happens
  // before they are there is kept for them.
  const media = (owner, type, data) => {
    if (!running() || owner !== session.mediaEventsOwner) return;
    const time = Date.now();
    if (arriving) held.push(() => publish(type, data, time));
    else publish(type, data, time);
  };
  const releaseHeld = () => {
    arriving = 0;
    for (const tellNow of held.splice(0)) tellNow();
  };

  const withVolume = (owner, type, volume, data) => media(owner, type,
    { ...data, mediaPlayerVolume: volume, videoPlayerVolume: volume, deviceVolume: session?.deviceVolume });

  // --- verification scripts that the ad names

  const attribute = (text) => text.replace(/&/g, '&amp;').replace(/"/g, '&quot;');

  const inject = (resource) => {
    if (resource.injectionId || !/^https?:\/\//i.test(resource.resourceUrl) || !document.body) return;
    resource.injectionId = resource.vendorKey + '-' + Math.random().toString(36).slice(2);
    const properties = JSON.stringify({ injectionId: resource.injectionId, injectionSource: 'app' })
      .replace(/</g, '\\u003c');
    const frame = document.createElement('iframe');
    frame.setAttribute('sandbox', 'allow-scripts' + (resource.accessMode === 'full' ? ' allow-same-origin' : ''));
    frame.style.display = 'none';
    frame.srcdoc = '<script>omidVerificationProperties=' + properties +
      ';omidVerificationProperties.serviceWindow=parent<' + '/script>' +
      '<script src="' + attribute(resource.resourceUrl) + '"><' + '/script>';
    document.body.appendChild(frame);
    return frame;
  };

  const addResources = (list) => {
    for (const entry of Array.isArray(list) ? list : []) {
      if (!entry || typeof entry.resourceUrl !== 'string') continue;
      const access = entry.accessMode;
      resources.push({
        resourceUrl: entry.resourceUrl,
        vendorKey: typeof entry.vendorKey === 'string' ? entry.vendorKey : '',
        verificationParameters: entry.verificationParameters ?? undefined,
        accessMode: ['full', 'domain'].includes(access) ? access : 'limited',
      });
    }
    if (running() && happened.sessionStart) resources.forEach(inject);
  };

  // --- what a session client may call. What it reports before the session runs is kept until then.

  const sessionMethods = {
    setClientInfo: (version, partnerName, partnerVersion) => {
      client = { sessionClientVersion: version, partnerName, partnerVersion };
      if (happened.sessionStart) Object.assign(happened.sessionStart.data.context.omidJsInfo, client);
    },
    injectVerificationScriptResources: addResources,
    setSlotElement: (element) => setElements(() => { slot = follow(element); }),
    setVideoElement: (element) => setElements(() => { video = follow(element); }),
    setElementBounds: (rect) => setElements(() => { bounds = rect; }),
    setContentUrl: (url) => {
      contentUrl = url;
      if (happened.sessionStart) happened.sessionStart.data.contentUrl = url;  // for those who come late
    },
    setCreativeType: (type) => { byScript.creativeType = type; },
    setImpressionType: (type) => { byScript.impressionType = type; },
    registerSessionObserver(reply) {
      const observer = { type: 'session', call: reply, near: this.near };
      observers.push(observer);
      replay(observer);
    },
    sessionError: (errorType, message) => whenRunning(() => publish('sessionError', { message, errorType })),
    impressionOccurred: () => whenRunning(() => impression('javascript')),
    loaded: (vast) => whenRunning(() => loaded('javascript', vast)),
    start: (duration, volume) => withVolume('javascript', 'start', volume, { duration }),
    volumeChange: (volume) => withVolume('javascript', 'volumeChange', volume),
    playerStateChange: (state) => media('javascript', 'playerStateChange', { state }),
    adUserInteraction: (interactionType) => media('javascript', 'adUserInteraction', { interactionType }),
    // The application starts and finishes its sessions itself; the events' owners it told when it did.
    startSession() {}, finishSession() {}, registerAdEvents() {}, registerMediaEvents() {},
  };
  for (const type of mediaEvents)
    if (!sessionMethods[type]) sessionMethods[type] = () => media('javascript', type);

  const whenRunning = (report) => {
    if (running()) report();
    else if (!session) early.push(report);
  };
  // An element moves without a word of the application's: looked at a fifth of a second after it may have.
  let due = 0;
  const looked = () => {
    due = due || setTimeout(() => {
      due = 0;
      if (running() && nativeGeometry) publishGeometry();
    }, 200);
  };
  const watcher = window.ResizeObserver && new ResizeObserver(looked);
  const follow = (element) => {
    if (!element || typeof element.getBoundingClientRect !== 'function') return null;
    if (watcher) watcher.observe(element);
    addEventListener('scroll', looked, true);
    addEventListener('resize', looked);
    return element;
  };
  const setElements = (set) => {
    set();
    if (running() && nativeGeometry) publishGeometry();
  };

  // --- messages

  const verificationMethods = {
    addSessionListener(vendorKey, injectionId) {
      listen({ type: 'session', vendorKey, injectionId, call: this.reply, near: this.near });
    },
    addEventListener(type, injectionId) {
      listen({ type, injectionId, call: this.reply, near: this.near });
    },
  };

  // Since 1.0.3 the arguments are a list, before that they were the text of one.
  const takesList = (version) => {
    const [major, minor, patch] = version.split('.').map((part) => parseInt(part, 10) || 0);
    return major !== 1 ? major > 1 : minor > 0 || patch >= 3;
  };

  const own = (methods, name) => Object.prototype.hasOwnProperty.call(methods, name) ? methods[name] : undefined;

  const receive = (message, send, near) => {
    if (!message || typeof message !== 'object') return;
    const guid = message.omid_message_guid, method = message.omid_message_method;
    const version = message.omid_message_version;
    let list = message.omid_message_args;
    if (typeof guid !== 'string' || typeof method !== 'string' || typeof version !== 'string') return;
    try {
      if (typeof list === 'string') list = JSON.parse(list);
    } catch (error) {
      return;
    }
    list = Array.isArray(list) ? Array.from(list) : [];
    const reply = (event) => send({
      omid_message_guid: guid,
      omid_message_method: 'response',
      omid_message_version: version,
      omid_message_args: takesList(version) ? [event] : JSON.stringify([event]),
    });
    const [service, name] = method.split('.');
    if (service === 'VerificationService') {
      const called = own(verificationMethods, name);
      if (called) called.apply({ reply, near }, list);
    } else if (service === 'SessionService') {
      const called = own(sessionMethods, name);
      if (!called) return;
      if (name === 'setClientInfo' && list.length > 3) clientId = list[3];
      if (clientId !== undefined && list[list.length - 1] === clientId) list.pop();
      if (name === 'registerSessionObserver') list = [reply];
      called.apply({ near }, list);
    }
  };

  const serviceFor = () => {
    const service = {
      handleExportedMessage: (message, from) =>
        receive(message, (answer) => from.handleExportedMessage(answer, service), true),
    };
    return service;
  };

  window.addEventListener('message', (event) => {
    const source = event.source;
    // Only what can be copied travels; answers hold no elements, since such a listener is not near.
    receive(event.data, (answer) => source.postMessage(answer, { targetOrigin: '*' }), false);
  });

  const omid = window.omid || {};
  window.omid = omid;
  omid.v1_SessionServiceCommunication = serviceFor();
  omid.v1_VerificationServiceCommunication = serviceFor();
  window.omid3p = {
    registerSessionObserver: (call, vendorKey, injectionId) =>
      listen({ type: 'session', vendorKey, injectionId, call, near: true }),
    addEventListener: (type, call, injectionId) => listen({ type, injectionId, call, near: true }),
  };

  // --- presence: scripts in frames of another origin look for these two

  const addPresence = () => {
    for (const name of ['omid_v1_present', 'omid_v1_present_app']) {
      const frame = document.createElement('iframe');
      frame.name = frame.id = name;
      frame.style.display = 'none';
      frame.loading = 'lazy';  // out of sight for ever, so nothing is loaded, and the page does not wait for it
      frame.src = 'data:,';
      document.body.appendChild(frame);
    }
  };
  if (document.body) {
    addPresence();
  } else {
    // The first inline script of the body may ask already.
    const bodyWatcher = new MutationObserver(() => {
      if (!document.body) return;
      bodyWatcher.disconnect();
      addPresence();
    });
    bodyWatcher.observe(document.documentElement, { childList: true });
  }

  // --- the application's side

  const web = (url) => /^https?:/.test(url) ? url : undefined;

  const api = {
    // { adSessionId, context, creativeType, impressionType, impressionOwner, mediaEventsOwner, deviceVolume,
    //   contentUrl?, resources?, loaded?, trace?, geometry }. Once in a page.
    start(told) {
      if (session || finished) return;
      session = told;
      for (const type of ['creativeType', 'impressionType'])
        if (session[type] === 'definedByJavaScript' && byScript[type]) session[type] = byScript[type];
      nativeGeometry = told.geometry;
      addResources(told.resources);
      const context = told.context;
      context.omidJsInfo = { ...context.omidJsInfo, ...client };
      telling = true;  // all of what follows in one go, so that sessionStart is first for everybody
      publish('sessionStart', {
        context,
        supportsLoadedEvent: session.creativeType !== 'definedByJavaScript' &&
          session.impressionType !== 'definedByJavaScript',
        ...types(),
        pageUrl: web(location.href),
        contentUrl: told.contentUrl ?? contentUrl,
      });
      if (told.loaded) loaded('native', told.loaded);
      for (const report of early.splice(0)) report();
      telling = false;
      publishGeometry();
      const theirs = resources.length - (told.resources || []).length;  // those that the page named come first
      resources.forEach((resource, index) => {
        const frame = inject(resource);
        if (!frame || index < theirs) return;
        ++arriving;
        frame.onload = () => {
          if (arriving && !--arriving) releaseHeld();
        };
      });
      if (arriving) setTimeout(releaseHeld, longestArrival);
    },
    geometry(told) {
      if (!running()) return;
      nativeGeometry = told;
      publishGeometry();
    },
    impression: () => impression('native'),
    loaded: (vast) => loaded('native', vast),
    media: (type, data) => media('native', type, data),
    mediaVolume(type, volume, deviceVolume, data) {
      if (session) session.deviceVolume = deviceVolume;
      withVolume('native', type, volume, data);
    },
    trace: () => trace.splice(0),
    // The page lives on for a moment, so that scripts can send what they have to; out of sight it keeps quiet.
    finish(outOfSight) {
      if (!running()) return;
      releaseHeld();
      publish('sessionFinish');
      finished = true;
      if (watcher) watcher.disconnect();
      if (outOfSight) {
        /** @type {NodeListOf<HTMLMediaElement>} */
        const players = document.querySelectorAll('video,audio');
        for (const player of players) player.pause();
      }
    },
  };
  Object.defineProperty(window, '__veltoOMID', { value: Object.freeze(api) });
})();
