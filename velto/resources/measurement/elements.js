// The element of the page that stands for the ad, where the page names one. It may move without a word of the
// application's: it is looked at again a fifth of a second after it may have.
import { box } from './rectangles.js';

const interval = 200; // milliseconds

// Where an element stands in the page at the top, also one in a frame of it.
function placeOf(element, top) {
  try {
    if (!element.isConnected) return { reason: 'notFound' };
    const at = element.getBoundingClientRect();
    let x = at.x;
    let y = at.y;
    for (let view = element.ownerDocument.defaultView; view !== top; view = view.parent) {
      const frame = view.frameElement.getBoundingClientRect();
      x += frame.x + view.frameElement.clientLeft;
      y += frame.y + view.frameElement.clientTop;
    }
    return { rect: box(x, y, at.width, at.height) };
  } catch (error) {
    return { reason: 'unmeasurable' }; // a frame between tells nothing
  }
}

export class Elements {
  /** `changed` is called at once for what the page names, and later for what moves. */
  constructor(window, changed) {
    this.window = window;
    this.changed = changed;
    this.slot = null;
    this.video = null;
    this.bounds = null; // within the element, or within the page
    this.due = 0;
    this.noteMove = () => {
      this.due = this.due || setTimeout(() => this.lookAgain(), interval);
    };
    this.sizes = window.ResizeObserver ? new window.ResizeObserver(this.noteMove) : null;
    const threshold = Array.from({ length: 21 }, (_, step) => step / 20);
    this.sight = window.IntersectionObserver ? new window.IntersectionObserver(this.noteMove, { threshold }) : null;
  }

  setSlot(element) {
    this.slot = this.follow(element);
    this.changed();
  }

  setVideo(element) {
    this.video = this.follow(element);
    this.changed();
  }

  setBounds(bounds) {
    const numbers = bounds && [bounds.x, bounds.y, bounds.width, bounds.height];
    this.bounds = numbers && numbers.every(Number.isFinite) ? box(...numbers) : null;
    this.changed();
  }

  /** As seenOf() takes it. */
  place() {
    const element = this.video || this.slot;
    if (!element && !this.bounds) return null;
    const place = element ? placeOf(element, this.window) : { rect: box(0, 0, 0, 0) };
    if (place.reason || !this.bounds) return place;
    const { x, y, width, height } = this.bounds;
    return { rect: box(place.rect.x + x, place.rect.y + y, width, height) };
  }

  stop() {
    if (this.sizes) this.sizes.disconnect();
    if (this.sight) this.sight.disconnect();
    this.window.removeEventListener('scroll', this.noteMove, true);
    this.window.removeEventListener('resize', this.noteMove);
    clearTimeout(this.due);
  }

  follow(element) {
    if (!element || typeof element.getBoundingClientRect !== 'function') return null;
    if (this.sizes) this.sizes.observe(element);
    if (this.sight) this.sight.observe(element);
    this.window.addEventListener('scroll', this.noteMove, true);
    this.window.addEventListener('resize', this.noteMove);
    return element;
  }

  lookAgain() {
    this.due = 0;
    this.changed();
  }
}
