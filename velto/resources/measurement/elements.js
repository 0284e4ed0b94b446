// The element of the page that stands for the ad, where the page names one. It may move without a word of the
// application's: it is looked at again a fifth of a second after it may have.
import { box } from './rectangles.js';

const interval = 200; // milliseconds
const steps = Array.from({ length: 21 }, (_, step) => step / 20);

// Where an element stands in the page at the top, also one in a frame of it.
function placeOf(element, top) {
  try {
    if (!element.isConnected || !element.ownerDocument.defaultView) return { reason: 'notFound' };
    const at = element.getBoundingClientRect();
    let x = at.x;
    let y = at.y;
    for (let view = element.ownerDocument.defaultView; view !== top; view = view.parent) {
      const frame = view.frameElement.getBoundingClientRect();
      x += frame.x + view.frameElement.clientLeft;
      y += frame.y + view.frameElement.clientTop;
    }
    const isPlace = [x, y, at.width, at.height].every(Number.isFinite); // a page may make elements say anything
    return isPlace ? { rect: box(x, y, at.width, at.height) } : { reason: 'unmeasurable' };
  } catch (error) {
    return { reason: 'unmeasurable' }; // a frame between tells nothing
  }
}

export class Elements {
  /** `changed` is called at once for what the page names, later for what moves, and at most five times a second. */
  constructor(window, changed) {
    this.window = window;
    this.changed = changed;
    this.slot = null;
    this.video = null;
    this.bounds = null; // within the element, or within the page
    this.due = 0;
    this.lastLook = -interval;
    this.noteMove = () => {
      this.due = this.due || setTimeout(() => this.lookAgain(), interval);
    };
    this.sizes = window.ResizeObserver ? new window.ResizeObserver(this.noteMove) : null;
    this.sight = null; // an observer: see watchPlace()
    this.watched = ''; // the place that was told last
    this.isOver = false;
  }

  setSlot(element) {
    this.slot = this.follow(element);
    this.noteChange();
  }

  setVideo(element) {
    this.video = this.follow(element);
    this.noteChange();
  }

  setBounds(bounds) {
    const numbers = bounds && [bounds.x, bounds.y, bounds.width, bounds.height];
    const isBox = numbers && numbers.every(Number.isFinite) && numbers[2] >= 0 && numbers[3] >= 0;
    this.bounds = isBox ? box(...numbers) : null;
    this.noteChange();
  }

  /** As seenOf() takes it. */
  place() {
    const element = this.video || this.slot;
    if (!element && !this.bounds) return null;
    const place = element ? placeOf(element, this.window) : { rect: box(0, 0, 0, 0) };
    if (place.rect && element) this.watchPlace(element, place.rect);
    else this.watched = '';
    if (place.reason || !this.bounds) return place;
    const { x, y, width, height } = this.bounds;
    return { rect: box(place.rect.x + x, place.rect.y + y, width, height) };
  }

  stop() {
    if (this.sizes) this.sizes.disconnect();
    if (this.sight) this.sight.disconnect();
    this.isOver = true;
    this.window.removeEventListener('scroll', this.noteMove, true);
    this.window.removeEventListener('resize', this.noteMove);
    clearTimeout(this.due);
  }

  follow(element) {
    if (!element || typeof element.getBoundingClientRect !== 'function') return null;
    if (this.sizes) this.sizes.observe(element);
    this.watched = '';
    this.window.addEventListener('scroll', this.noteMove, true);
    this.window.addEventListener('resize', this.noteMove);
    return element;
  }

  // The engine tells when more or less of an element is in the page's view. Of that it is let see no more than where the
  // element stands now, so any move is one out of it.
  watchPlace(element, rect) {
    const { innerWidth, innerHeight, IntersectionObserver } = this.window;
    const around = ({ x, y, width, height }) =>
      [y, innerWidth - x - width, innerHeight - y - height, x].map((inset) => `${-Math.floor(inset)}px`).join(' ');
    const rootMargin = around(rect);
    const isPlace = /^[-\dpx ]+$/.test(rootMargin); // the engine reads no others
    if (!IntersectionObserver || !isPlace || this.isOver || rootMargin === this.watched) return;
    this.watched = rootMargin;
    if (this.sight) this.sight.disconnect();
    const moved = () => {
      const now = placeOf(element, this.window).rect;
      if (!now || around(now) !== this.watched) this.noteMove();
    };
    this.sight = new IntersectionObserver(moved, { rootMargin, threshold: steps });
    this.sight.observe(element);
  }

  noteChange() {
    if (Date.now() - this.lastLook < interval) this.noteMove();
    else this.lookAgain();
  }

  lookAgain() {
    clearTimeout(this.due);
    this.due = 0;
    this.lastLook = Date.now();
    this.changed();
  }
}
