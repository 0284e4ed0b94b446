import { seenOf } from '../../../velto/resources/measurement/geometry.js';
import { box } from '../../../velto/resources/measurement/rectangles.js';
import { advance, clock, equal, test } from '../harness.js';
import { seen, service, started } from './service.js';

const whole = box(40, 50, 320, 100);

test('an element is seen as far as page, list, window and covers let it be, and reasons say which', () => {
  const check = (rect, changes, percentage, reasons, about) => {
    const { adView } = seenOf(seen(changes), { rect });
    equal([adView.percentageInView, adView.reasons], [percentage, reasons], about);
  };
  const cut = (rect, reasons, ...obstructions) => ({ reasons, onScreenGeometry: { ...rect, obstructions } });
  const list = cut(box(40, 50, 160, 100), ['clipped']);
  const edge = { ...cut(box(240, 50, 160, 100), ['viewport']), geometry: box(240, 50, 320, 100) };
  const covered = cut(whole, ['obstructed'], box(40, 50, 80, 100), box(60, 50, 60, 100));
  check(box(0, 0, 320, 100), {}, 100, [], 'all of it');
  check(box(0, 50, 320, 100), {}, 50, ['clipped'], 'over the edge of the page');
  check(box(80, 0, 160, 100), list, 50, ['clipped'], 'cut by a list');
  check(box(0, 0, 80, 100), list, 100, [], 'in the part of the list that is seen');
  check(box(80, 0, 160, 100), edge, 50, ['viewport'], 'cut by the window');
  check(box(80, 50, 160, 100), edge, 25, ['viewport', 'clipped'], 'and by the page');
  check(box(0, 0, 160, 100), edge, 100, []);
  check(box(0, 0, 160, 100), covered, 50, ['obstructed'], 'covered parts count once');
  check(box(160, 0, 100, 100), covered, 100, []);
  check(box(0, 0, 320, 100), cut(whole, ['obstructed'], box(80, 75, 160, 50)), 75, ['obstructed'], 'a hole');
  check(box(0, 0, 0, 100), {}, 0, ['hidden']);
  const away = { reasons: ['backgrounded', 'viewport'] };
  check(box(0, 50, 320, 100), away, 0, ['backgrounded', 'clipped'], 'what holds of all holds of it');
  check(box(0, 0, 9, 9), { geometry: box(0, 0, 0, 0), reasons: ['notFound'] }, 0, ['notFound'], 'in no window');
});

test('an element in frames is where they put it, and follows its moves', () => {
  const { app, call, hear, top } = service();
  top.frameElement = null;
  const frameAt = (x) => ({ clientLeft: 1, clientTop: 2, getBoundingClientRect: () => box(x, 0, 200, 90) });
  const inner = { parent: top, frameElement: frameAt(20) };
  const element = { isConnected: true, ownerDocument: { defaultView: inner }, at: 0 };
  const slot = { ...element, getBoundingClientRect: () => box(slot.at, 0, 100, 50) };
  call('setSlotElement', slot);
  const log = hear('geometryChange');
  advance(200);
  app.start(1, started());
  const last = () => log[log.length - 1].data.adView;
  equal([last().geometry, last().percentageInView], [box(61, 52, 100, 50), 100]);
  slot.at = -81;
  call('setElementBounds', { x: 0, y: 0, width: 200, height: 50 });
  equal([last().geometry.x, last().reasons], [-20, ['clipped']]);
  for (let width = 0; width < 100; ++width) call('setElementBounds', { x: 0, y: 0, width, height: 50 });
  call('setElementBounds', { x: 0, y: 0, width: -1, height: 50 });
  equal(log.length, 2, 'not more often than it is looked at');
  advance(200);
  equal([log.length, last().geometry.width], [3, 100], 'what is no rectangle is the whole element');
  slot.at = NaN;
  app.geometry(clock.now, seen());
  equal(last().reasons, ['unmeasurable']);
  slot.at = -81;
  app.geometry(clock.now, seen());
  inner.frameElement = null; // of another origin
  app.geometry(clock.now, seen());
  equal([last().percentageInView, last().reasons], [0, ['unmeasurable']]);
  for (const goes of [() => (slot.ownerDocument.defaultView = null), () => (slot.isConnected = false)]) {
    slot.ownerDocument.defaultView = inner;
    goes(); // its frame, or it alone
    app.geometry(clock.now, seen());
    equal(last().reasons, ['notFound']);
  }
  app.finish(clock.now);
  const before = log.length;
  slot.isConnected = true;
  advance(1000);
  equal(log.length, before);
});
