// The session of the ad, with all that is known of it: what the application started it with, what the page told of
// itself, what was reported. Who reports says so ('native', 'javascript'), and when it happened.
import { Events, mediaTypes } from './events.js';
import { seenOf } from './geometry.js';
import { accessOf } from './resources.js';
import { present } from './values.js';

const byScript = 'definedByJavaScript';
const typeNames = {
  creativeType: ['htmlDisplay', 'nativeDisplay', 'video', 'audio'],
  impressionType: ['unspecified', 'loaded', 'beginToRender', 'onePixel', 'viewable', 'audible', 'other'],
};
const longestEarly = 100; // reports of a page whose session may never start

const web = (address) => (/^https?:/.test(address) ? address : undefined);
// Volumes are steps of a slider: what differs by less is no other volume.
const rounded = (volume) => (Number.isFinite(volume) ? Math.round(volume * 100) / 100 : undefined);

export class Session {
  /** `page` is { address(), place(), elements }, `resources` the verification scripts (resources.js). */
  constructor(page, resources) {
    this.page = page;
    this.resources = resources;
    this.events = new Events((event, listener) => this.personal(event, listener));
    this.started = null; // what the application started: see start()
    this.finished = false;
    this.client = null; // the page's session client, as it introduced itself
    this.contentUrl = undefined;
    this.types = {}; // creativeType and impressionType, as far as they are known
    this.seen = null; // of the ad view, by the application
    this.toldGeometry = '';
    this.toldVolumes = '';
    this.reported = new Set(); // of what comes once
    this.early = [];
  }

  get isRunning() {
    return Boolean(this.started) && !this.finished;
  }

  // --- life

  /**
   * { adSessionId, context, creativeType, impressionType, impressionOwner, mediaEventsOwner, deviceVolume, geometry,
   *   isolated?, contentUrl?, resources?, loaded?, loadedTime?, trace? }. Once in a page.
   */
  start(time, told) {
    if (this.started) return;
    this.started = told;
    if (told.trace) this.events.trace = [];
    for (const name of Object.keys(typeNames))
      if (told[name] !== byScript || !this.types[name]) this.types[name] = told[name];
    this.seen = told.geometry;
    this.contentUrl = told.contentUrl ?? this.contentUrl;
    this.resources.add(told.resources);
    this.events.together(() => {
      this.publish('sessionStart', time, {
        context: { ...told.context, omidJsInfo: { ...told.context.omidJsInfo, ...this.client } },
        supportsLoadedEvent: Boolean(told.creativeType && told.impressionType),
        ...this.kind(),
        pageUrl: web(this.page.address()),
        contentUrl: this.contentUrl,
      });
      if (told.loaded) this.loaded('native', told.loadedTime ?? time, told.loaded);
      for (const report of this.early.splice(0)) report();
      this.publishGeometry(time);
    });
    this.resources.inject(told.isolated);
  }

  finish(time) {
    if (!this.isRunning) return;
    this.publish('sessionFinish', time);
    this.finished = true;
  }

  /** What a page reports before its session starts is kept until then. */
  whenRunning(report) {
    if (this.isRunning) report();
    else if (!this.started && this.early.length < longestEarly) this.early.push(report);
  }

  // --- what the page tells of itself

  introduce(client) {
    this.client = present(client);
    const start = this.events.find('sessionStart'); // for those who come late
    if (start) Object.assign(start.data.context.omidJsInfo, this.client);
  }

  setContentUrl(url) {
    if (typeof url !== 'string') return;
    this.contentUrl = url;
    this.amend({ contentUrl: url });
  }

  /** Only what was left to the page, once, and not after it was told with an event. */
  setType(name, type) {
    const given = this.types[name];
    if ((given && given !== byScript) || !typeNames[name].includes(type)) return;
    if (this.reported.has('impression') || this.reported.has('loaded')) return;
    this.types[name] = type;
    if (this.started) this.amend(this.kind());
  }

  nameResources(entries) {
    this.resources.add(entries);
    if (this.isRunning) this.resources.inject(this.started.isolated);
  }

  amend(data) {
    const start = this.events.find('sessionStart');
    if (start) Object.assign(start.data, data);
  }

  // --- what is reported of the ad

  impression(owner, time) {
    if (this.isFirst('impression', owner)) this.publish('impression', time, { ...this.kind(), ...this.geometry() });
  }

  loaded(owner, time, vast) {
    if (!this.isFirst('loaded', owner)) return;
    const { mediaType } = this.kind();
    const media = (mediaType === 'video' && vast) || {};
    this.publish('loaded', time, {
      ...this.kind(),
      skippable: media.isSkippable ?? media.skippable,
      skipOffset: media.skipOffset ?? undefined,
      autoPlay: media.isAutoPlay ?? media.autoPlay,
      position: media.position ?? undefined,
    });
  }

  error(time, errorType, message) {
    this.publish('sessionError', time, { message, errorType });
  }

  media(owner, time, type, data) {
    if (!this.isRunning || owner !== this.started.mediaEventsOwner || !mediaTypes.includes(type)) return;
    this.publish(type, time, data);
  }

  mediaVolume(owner, time, type, volume, data) {
    if (!this.isRunning || owner !== this.started.mediaEventsOwner) return;
    const player = rounded(volume);
    const volumes = {
      mediaPlayerVolume: player, videoPlayerVolume: player, deviceVolume: rounded(this.started.deviceVolume),
    };
    const text = JSON.stringify(volumes);
    if (type === 'volumeChange' && text === this.toldVolumes) return;
    this.toldVolumes = text;
    this.publish(type, time, { ...data, ...volumes });
  }

  setDeviceVolume(volume) {
    if (this.started) this.started.deviceVolume = volume;
  }

  look(time, seen) {
    if (!this.isRunning) return;
    if (seen) this.seen = seen;
    this.publishGeometry(time);
  }

  // --- what is told

  kind() {
    const { creativeType, impressionType } = this.types;
    return { mediaType: ['video', 'audio'].includes(creativeType) ? 'video' : 'display', creativeType, impressionType };
  }

  geometry() {
    return seenOf(this.seen, this.page.place());
  }

  isFirst(type, owner) {
    if (!this.isRunning || owner !== this.started.impressionOwner || this.reported.has(type)) return false;
    this.reported.add(type);
    return true;
  }

  publish(type, timestamp, data) {
    this.events.publish({ adSessionId: this.started.adSessionId, timestamp, type, data });
  }

  publishGeometry(time) {
    const data = this.geometry();
    const text = JSON.stringify(data);
    if (text === this.toldGeometry) return;
    this.toldGeometry = text;
    this.publish('geometryChange', time, data);
  }

  // Parameters go to the script that they are for alone, elements to who can touch them.
  personal(event, listener) {
    const told = present(event);
    if (event.type !== 'sessionStart') return told;
    const resource = this.resources.of(listener);
    if (resource && resource.verificationParameters !== undefined)
      told.data.verificationParameters = resource.verificationParameters;
    const { context } = told.data;
    context.accessMode = accessOf(listener, resource);
    if (listener.near && context.accessMode === 'full') {
      const { slot, video } = this.page.elements();
      if (slot) context.slotElement = slot;
      if (video) context.videoElement = video;
    }
    return told;
  }
}
