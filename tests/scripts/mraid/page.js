// What the rich-media script finds in a page, without a page, and a host that follows the native rules. To be imported
// before the script: it keeps what it needs of the engine.
import { advance } from '../harness.js';

/** @type {any} */
const engine = globalThis;
const microtasks = [];

/** Runs the work as the engine runs a script: what was to come right after it comes. */
export function turn(work) {
  work();
  while (microtasks.length) microtasks.shift()();
}

const addTimer = engine.setTimeout;
engine.setTimeout = (work, delay) => addTimer(() => turn(work), delay);
engine.queueMicrotask = (work) => microtasks.push(work);
engine.MessageChannel = undefined;
if (!engine.document) {
  const node = () => ({ style: { setProperty() {} }, remove() {}, appendChild() {}, addEventListener() {}, parentNode: null });
  engine.document = { createElement: node, documentElement: node(), body: node(), baseURI: 'https://ads.example/' };
}

/** @type {(address: string) => void} */
let hear = () => {};
/** All that the script sends goes there. */
export function sendTo(listener) {
  hear = listener;
}
const channel = { messageHandlers: { veltoNavigation: { postMessage: (lines) => lines.split('\n').forEach((address) => hear(address)) } } };
Object.defineProperty(engine, 'webkit', { value: channel, configurable: true, writable: true });

/** Does as the library does, to a banner of 320 × 50 in a view of 400 × 600. */
export class Host {
  constructor(methods) {
    this.methods = methods;
    this.state = 'default';
    this.heard = [];
    this.statements = [];
    this.latency = () => 1;
    sendTo((address) => this.command(decodeURIComponent(address.slice('mraid://'.length))));
  }
  ready(placement = 'inline') {
    this.placement = placement;
    this.tell(['setSupports', 'inlineVideo', true], ['setScreenSize', { width: 400, height: 600 }]);
    this.tell(['setMaxSize', { width: 400, height: 600 }]);
    const frame = { x: 0, y: 0, width: 320, height: 50 };
    this.tell(['setDefaultPosition', frame], ['setCurrentPosition', frame], ['setVersion', '2.0']);
    this.tell(['setPlacementType', placement], ['setIsViewable', true], ['setState', this.state]);
    this.tell(['fireEvent', 'viewableChange', true], ['fireEvent', 'sizeChange', { width: 320, height: 50 }]);
    this.tell(this.exposure(frame), ['fireEvent', 'ready']);
    advance(100);
  }
  exposure(frame) {
    return ['fireEvent', 'exposureChange', { exposedPercentage: 100, visibleRectangle: frame, occlusionRectangles: null }];
  }
  // Each statement is a task of its own, and they keep their order.
  tell(...statements) {
    for (const statement of statements) {
      this.statements.push(statement);
      setTimeout(() => this.sayNext(), this.latency());
    }
  }
  sayNext() {
    const [name, ...args] = this.statements.shift();
    this.methods[name](...args);
  }
  /** @param {any} [told] */
  goes(state, x, y, width, height, told = { width, height }) {
    this.state = state;
    const frame = { x, y, width, height };
    const size = { width: told.width, height: told.height };
    this.tell(['setCurrentPosition', frame], ['fireEvent', 'sizeChange', size], this.exposure(frame));
    this.tell(['setState', state]);
  }
  command(text) {
    this.heard.push(text);
    const [name, argument] = text.split(/\?\w+=(.*)/s);
    if (name === 'setResizeProperties') this.resizeProperties = JSON.parse(argument);
    if (name === 'expand' && this.state === 'default') {
      if (argument) this.state = 'expanded'; // a second part, of which the first is not told
      else this.goes('expanded', 0, 0, 400, 600);
    }
    if (name === 'resize') this.resize(this.resizeProperties);
    if (name === 'close') this.close();
  }
  // A far edge that is too far: the host refuses without a word.
  resize({ width, height, offsetX, offsetY, allowOffscreen, customClosePosition }) {
    if (this.state === 'expanded') return this.tell(['setState', (this.state = 'resized')]);
    const [vertical, horizontal] = customClosePosition.split('-');
    const y = offsetY + (vertical === 'bottom' ? height : 0);
    const x = offsetX + (horizontal === 'right' ? width : 0);
    if (allowOffscreen && (y < 0 || y > 550 || x < 0 || x > 350)) return;
    const [left, top] = [(400 - width) / 2, 600 - height];
    // With the properties that it has by then.
    setTimeout(() => this.goes('resized', left, top, width, height, this.resizeProperties), 100);
  }
  close() {
    if (this.placement === 'interstitial')
      this.tell(['setState', 'hidden'], ['setIsViewable', false], ['fireEvent', 'viewableChange', false]);
    else if (this.state === 'expanded') this.goes('default', 40, 0, 320, 50);
    else if (this.state === 'resized') setTimeout(() => this.goes('default', 40, 0, 320, 50), 100);
  }
}
