import { advance, clock, equal, test, waiting } from '../harness.js';
import { load } from './load.js';
import { turn } from './page.js';
import { deadline } from '../../../velto/resources/mraid/engine.js';
import { creativeMethods as mraid } from '../../../velto/resources/mraid/creative.js';
import { ad } from '../../../velto/resources/mraid/state.js';
import { listen, make, outcome, random, randomCalls } from './model.js';

test('what a call finds is what it was made with, though it waits', () => {
  const { host, heard } = load('inline');
  turn(() => {
    mraid.setResizeProperties({ width: 300, height: 250, offsetX: 0, offsetY: 0 });
    mraid.expand();
    mraid.close();
    mraid.resize();
    mraid.setResizeProperties({ height: 100 });
    mraid.unload();
    equal(mraid.getResizeProperties().height, 100, 'the getter answers at once');
  });
  advance(3000);
  equal(host.heard.map((text) => text.split('?')[0]).join(' '), 'setResizeProperties expand close resize setResizeProperties unload');
  equal(heard().filter((line) => line.startsWith('size')).pop(), 'sizeChange 300 250');
});

test('random sequences of calls do as if they came one by one', () => {
  for (let seed = 1; seed <= 10000; ++seed) {
    const next = random(seed);
    const calls = randomCalls(next);
    const { host } = load('inline');
    const said = { changes: [], errors: [], opened: [] };
    listen(mraid, said);
    host.latency = () => Math.floor(next() * 3);
    let at = 0;
    while (at < calls.length) {
      turn(() => {
        for (; at < calls.length && calls[at] !== 'wait'; ++at) make(mraid, calls[at], at);
      });
      advance(Math.floor(next() * 150)); // nothing, or into the middle of a change
      ++at;
    }
    advance(10000);
    said.opened = host.heard.filter((text) => text.startsWith('open')).map((text) => text.slice('open?url='.length));
    equal(said, outcome(calls, [320, 50], [400, 600]), seed + ': ' + calls.join(' '));
    equal([mraid.getState(), ad.waiting.length, ad.underWay], [host.state, 0, null], String(seed));
  }
});

test('a flood is bounded, told once, and the page goes on', () => {
  const { host, heard } = load('inline');
  heard();
  for (const flood of [() => mraid.open('shop.example'), () => (mraid.expand(), mraid.close())]) {
    host.heard.length = 0;
    turn(() => {
      for (let i = 0; i < 5000; ++i) flood();
    });
    advance(5000);
    const errors = heard().filter((line) => line.startsWith('error'));
    equal([errors.length, errors[0].endsWith(': Too many calls at once: some are dropped.')], [1, true]);
    equal(host.heard.length > 200 && host.heard.length <= 1000, true, String(host.heard.length));
  }
  turn(() => mraid.expand());
  advance(100);
  equal(mraid.getState(), 'expanded');
  // A listener of errors that makes errors lets others have their turn.
  let errors = 0;
  let others = 0;
  mraid.addEventListener('error', () => ++errors < 1000 && mraid.resize());
  setTimeout(() => (others = errors), 0);
  turn(() => mraid.resize());
  advance(100);
  equal([errors, others < 5], [1000, true]);
});

test('a second part is not told of, and nobody waits for it', () => {
  const { host } = load('inline');
  turn(() => {
    mraid.expand('https://ads.example/second part.html');
    mraid.expand('another.html');
    mraid.resize();
    mraid.close();
  });
  equal(host.heard, ['expand?url=https://ads.example/second%20part.html', 'close']);
  advance(5000);
  equal(ad.underWay, null);
});

test('events come after the call, once, and to those who listened when they came', () => {
  const { host, heard } = load();
  const late = [];
  mraid.addEventListener('ready', () => {
    equal([mraid.isViewable(), mraid.getState()], [true, 'default'], 'values are in place');
    mraid.addEventListener('viewableChange', (value) => late.push(value));
    mraid.addEventListener('stateChange', () => mraid.addEventListener('stateChange', (state) => late.push(state)));
  });
  turn(() => {
    mraid.resize();
    mraid.addEventListener('nothing', () => {});
    equal(heard(), [], 'not inside the call');
  });
  host.ready('inline');
  equal(heard(), [
    'error resize: resize() is not possible in state loading.',
    'error addEventListener: There is no event nothing.',
    'ready',
    'viewableChange true',
    'stateChange default',
    'sizeChange 320 50',
  ]);
  equal(late, [true]);
  const removed = () => late.push('removed');
  mraid.addEventListener('stateChange', () => mraid.removeEventListener('stateChange', removed));
  mraid.addEventListener('stateChange', removed);
  turn(() => mraid.expand());
  advance(100);
  equal(late, [true, 'expanded']);
  host.tell(['setIsViewable', true], ['setState', 'expanded'], ['fireEvent', 'audioVolumeChange', null]);
  advance(100);
  equal(heard(), ['sizeChange 400 600', 'stateChange expanded'], 'what is as before is no news');
});

test('what the host tells is heard with its last statement, or 50 ms after none, and not inside a listener', () => {
  const { host, heard } = load('inline');
  heard();
  host.methods.setCurrentPosition({ x: 0, y: 0, width: 300, height: 50 });
  host.methods.fireEvent('sizeChange', { width: 300, height: 50 });
  advance(49);
  equal(heard(), []);
  advance(1);
  equal(heard(), ['sizeChange 300 50']);
  const order = [];
  mraid.addEventListener('stateChange', (state) => {
    order.push(state);
    if (state === 'expanded') host.methods.setState('default');
    order.push('end of ' + state);
  });
  host.methods.setState('expanded');
  equal(order, ['expanded', 'end of expanded'], 'at once');
  advance(1);
  equal(order.slice(2), ['default', 'end of default']);
});

test('a deadline counts from when it was set last, comes once, and costs one timer', () => {
  const late = [];
  const limit = deadline(50);
  const begin = clock.now;
  const before = waiting();
  const set = () => limit.set(() => late.push(clock.now - begin));
  set();
  advance(30);
  set();
  equal(waiting() - before, 1);
  advance(49);
  equal(late, []);
  advance(100);
  equal(late, [80]);
  set();
  limit.lift();
  advance(100);
  set();
  advance(50);
  equal(late, [80, 329]);
});

test('after a turn of the screen all sizes are new before the event', () => {
  const turned = { width: 600, height: 400 };
  for (const byAd of [true, false]) {
    const { host } = load('inline');
    let sizes;
    mraid.addEventListener('sizeChange', () => (sizes = [mraid.getScreenSize(), mraid.getMaxSize(), mraid.getCurrentPosition()]));
    turn(() => mraid.expand());
    advance(100);
    if (byAd) turn(() => mraid.setOrientationProperties({ forceOrientation: 'landscape' }));
    const frame = { x: 0, y: 0, ...turned };
    host.tell(['setCurrentPosition', frame], ['setScreenSize', turned], ['fireEvent', 'sizeChange', turned], host.exposure(frame));
    advance(100);
    equal(sizes, [turned, turned, frame]);
    equal(mraid.getCurrentAppOrientation(), { orientation: 'landscape', locked: false });
    turn(() => mraid.close());
    advance(100);
    equal(mraid.getMaxSize(), byAd ? { width: 400, height: 600 } : turned, 'what the ad turned goes back');
    equal(mraid.getDefaultPosition(), { x: byAd ? 0 : 40, y: 0, width: 320, height: 50 }, 'as does its place');
  }
});

test('an interstitial neither expands nor resizes, and ends hidden', () => {
  const { heard } = load('interstitial');
  heard();
  turn(() => {
    mraid.expand();
    mraid.resize();
    mraid.close();
    mraid.close();
  });
  equal(heard(), ['error expand: An interstitial does not expand.', 'error resize: An interstitial does not resize.']);
  advance(100);
  equal(heard(), ['stateChange hidden', 'viewableChange false']);
});

test('a change that the host does not make is an error, and the next call has its turn', () => {
  const { host, heard } = load('inline');
  heard();
  host.command = (text) => host.heard.push(text);
  turn(() => mraid.expand());
  turn(() => mraid.close());
  advance(3100);
  equal(heard(), ['error expand: The ad could not be changed.']);
  equal(host.heard, ['expand', 'close']);
});

test('where a first part stands is told it by the close of the second, unless that has turned the screen', () => {
  for (const [x, width, height] of [[40, 500, 600], [0, 600, 400]]) {
    const { host } = load('inline');
    turn(() => mraid.expand('https://ads.example/two'));
    advance(5000);
    const frame = { x: 0, y: 0, width, height };
    host.tell(['setCurrentPosition', frame], ['setScreenSize', { width, height }], host.exposure(frame));
    advance(100);
    equal(mraid.getCurrentPosition().width, 320);
    host.close();
    advance(200);
    equal([mraid.getState(), mraid.getDefaultPosition().x, mraid.getCurrentPosition().x], ['default', x, x]);
    equal(mraid.getScreenSize().width, x ? 500 : 400);
  }
});
