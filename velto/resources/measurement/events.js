// Events on their way to those who listen: all hear them in one order, also when one event causes the next, and who
// comes late hears what has happened, with the time at which it did.
import { own, present } from './values.js';

export const mediaTypes = [
  'loaded', 'start', 'firstQuartile', 'midpoint', 'thirdQuartile', 'complete', 'pause', 'resume', 'bufferStart',
  'bufferFinish', 'skipped', 'volumeChange', 'playerStateChange', 'adUserInteraction',
];
const sessionTypes = ['sessionStart', 'sessionError', 'sessionFinish'];
const groups = { session: sessionTypes, media: mediaTypes, video: mediaTypes };

const longestHistory = 100;
const longestTrace = 500;

const wants = (listener, type) => listener.type === type || (own(groups, listener.type) || []).includes(type);

export class Events {
  /** `personal` makes of an event and a listener what this one is told. */
  constructor(personal) {
    this.personal = personal;
    this.listeners = []; // verification scripts, in the order in which they came
    this.observers = []; // the page's own, which hear of the session alone, and after those
    this.history = []; // in the order of happening; of the geometry only the latest
    this.waiting = []; // published while another one was being told
    this.telling = false;
    this.trace = null; // all of them, for a tool that asks
  }

  publish(event) {
    this.together(() => this.waiting.push(event));
  }

  /** Whatever is published inside is told afterwards. */
  together(work) {
    if (this.telling) return work();
    this.telling = true;
    try {
      work();
      while (this.waiting.length) this.happen(this.waiting.shift());
    } finally {
      this.telling = false;
    }
  }

  happen(event) {
    this.remember(event);
    // Who comes while it is told hears it as one that comes late.
    for (const listener of [...this.listeners, ...this.observers])
      if (wants(listener, event.type)) this.tell(listener, event);
  }

  // What is too much is the oldest of which there is a later one of its kind.
  remember(event) {
    const { history } = this;
    const hasLater = (old, index) => history.some((other, at) => at > index && other.type === old.type);
    const isOutdated = (old) => old.type === event.type && event.type === 'geometryChange';
    const outdated = history.findIndex(isOutdated);
    if (outdated >= 0) history.splice(outdated, 1);
    history.push(event);
    if (history.length > longestHistory) history.splice(history.findIndex(hasLater), 1);
    if (this.trace && this.trace.push(present(event)) > longestTrace) this.trace.shift();
  }

  tell(listener, event) {
    try {
      listener.call(this.personal(event, listener));
    } catch (error) {
      // A listener's fault is its own.
    }
  }

  listen(listener) {
    this.listeners.push(listener);
    this.replay(listener);
  }

  observe(observer) {
    this.observers.push(observer);
    this.replay(observer);
  }

  replay(listener) {
    for (const event of this.history.slice()) if (wants(listener, event.type)) this.tell(listener, event);
  }

  find(type) {
    return this.history.find((event) => event.type === type);
  }
}
