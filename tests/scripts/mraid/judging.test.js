import { advance, equal, test } from '../harness.js';
import { load } from './load.js';
import { turn } from './page.js';
import { creativeMethods as mraid } from '../../../velto/resources/mraid/creative.js';
import { hostMethods } from '../../../velto/resources/mraid/statements.js';

/** What the calls of a page are answered with: errors with the method's name, and the commands that leave. */
function answers(calls) {
  const { host, heard } = load('inline');
  turn(calls);
  advance(2000);
  const errors = heard().filter((line) => line.startsWith('error'));
  return { errors: errors.map((line) => line.slice('error '.length)), sent: host.heard };
}

test('resize properties are judged when they are set, by field and limit', () => {
  const whole = { width: 300, height: 250, offsetX: 0, offsetY: 0 };
  /** @type {[object, string][]} */
  const faults = [
    [{ height: undefined }, 'height is missing.'],
    [{ width: 49 }, 'width must be at least 50.'],
    [{ height: NaN }, 'height is not a number.'],
    [{ offsetX: '0' }, 'offsetX is not a number.'],
    [{ customClosePosition: 'up' }, 'customClosePosition is none of top-left, top-center, top-right, center, bottom-left, bottom-center, bottom-right.'],
    [{ allowOffscreen: 1 }, 'allowOffscreen is not a boolean.'],
    [{ width: 401, allowOffscreen: false }, 'width must be at most 400 when allowOffscreen is false.'],
    [{ height: 601, allowOffscreen: false }, 'height must be at most 600 when allowOffscreen is false.'],
    [{ width: 500 }, 'With this width the close region would be off screen, which has a width of 400.'],
    [{ offsetX: 200 }, 'With this offsetX the close region would be off screen, which has a width of 400.'],
    [{ offsetY: -1000 }, 'With this offsetY the close region would be off screen, which has a height of 600.'],
  ];
  for (const [wrong, fault] of faults) {
    const { errors, sent } = answers(() => {
      mraid.setResizeProperties({ ...whole, ...wrong });
      mraid.resize();
    });
    equal([errors[0], errors.length, sent], ['setResizeProperties: ' + fault, 2, []], fault);
  }
  // After good ones bad ones change nothing.
  const { errors, sent } = answers(() => {
    mraid.setResizeProperties(null);
    mraid.setResizeProperties({ customClosePosition: 'up' });
    mraid.setResizeProperties({ width: 300, offsetX: 0 });
    mraid.setResizeProperties({ height: 250, offsetY: 0, allowOffscreen: false });
    mraid.setResizeProperties({ width: 5 });
    equal(mraid.getResizeProperties().width, 300);
    mraid.resize();
  });
  equal(errors.length, 4);
  equal(sent.map((text) => text.split('?')[0]), ['setResizeProperties', 'resize']);
  equal(mraid.getState(), 'resized');
  equal(answers(() => mraid.resize()).errors, ['resize: resize() needs setResizeProperties() before.']);
});

test('other properties are merged, and wrong ones change nothing', () => {
  const { errors, sent } = answers(() => {
    mraid.useCustomClose(true);
    mraid.setExpandProperties({ width: 200, isModal: false });
    mraid.setExpandProperties({ height: '5' });
    mraid.setExpandProperties({ useCustomClose: 'yes' });
    mraid.setOrientationProperties({ allowOrientationChange: false });
    mraid.setOrientationProperties({ forceOrientation: 'up' });
    mraid.setOrientationProperties('landscape');
  });
  equal(mraid.getExpandProperties(), { width: 200, height: 600, useCustomClose: true, isModal: true });
  equal(mraid.getOrientationProperties(), { allowOrientationChange: false, forceOrientation: 'none' });
  equal(errors, [
    'setExpandProperties: height is not a number.',
    'setExpandProperties: useCustomClose is not a boolean.',
    'setOrientationProperties: forceOrientation is none of portrait, landscape and none.',
    'setOrientationProperties: setOrientationProperties() needs an object.',
  ]);
  equal(sent.length, 3);
});

test('addresses leave escaped, and otherwise as they are written', () => {
  const { errors, sent } = answers(() => {
    hostMethods.setSupports('storePicture', true);
    for (const method of ['open', 'playVideo', 'storePicture', 'expand']) mraid[method]('https://shop.example/a b/\u00fc?x=<1>&y=%20+,#\u{1f600}');
    mraid.open('shop.example/a b');
    for (const method of ['open', 'playVideo', 'storePicture']) mraid[method]('');
    mraid.open('https://shop.example/\ud800');
    mraid.expand(5);
  });
  const escaped = 'https://shop.example/a%20b/%C3%BC?x=%3C1%3E&y=%20+,#%F0%9F%98%80';
  equal(
    sent.map((text) => encodeURI(decodeURI(text))),
    ['open', 'playVideo', 'storePicture', 'expand'].map((name) => encodeURI(decodeURI(name + '?url=' + escaped))).concat('open?url=shop.example/a%20b')
  );
  equal(errors.length, 5);
});

test('version 3: exposure from the ad itself, volume, location and features', () => {
  answers(() => {});
  const told = [];
  for (const event of ['exposureChange', 'audioVolumeChange']) mraid.addEventListener(event, (...args) => told.push(args));
  const tell = (...statement) => turn(() => hostMethods.fireEvent(...statement));
  hostMethods.setCurrentPosition({ x: 40, y: 550, width: 320, height: 50 });
  turn(() => hostMethods.setState('default'));
  tell('exposureChange', { exposedPercentage: 50, visibleRectangle: { x: 40, y: 575, width: 320, height: 25 }, occlusionRectangles: null });
  tell('exposureChange', { exposedPercentage: 100, visibleRectangle: { x: 0, y: 0, width: 320, height: 50 }, occlusionRectangles: null });
  tell('exposureChange', { exposedPercentage: 0, visibleRectangle: { x: 0, y: 0, width: 0, height: 0 }, occlusionRectangles: null });
  tell('audioVolumeChange', { volumePercentage: 50 });
  tell('audioVolumeChange', null);
  equal(told, [
    [50, { x: 0, y: 25, width: 320, height: 25 }, null],
    [100, { x: 0, y: 0, width: 320, height: 50 }, null],
    [0, null, null],
    [50],
    [null],
  ]);
  equal([mraid.getLocation(), mraid.supports('location'), mraid.supports('constructor')], [-1, false, false]);
  const fix = { lat: 1, lon: 2, type: 1, accuracy: 3, lastfix: 4, ipservice: null };
  hostMethods.setLocation(fix);
  mraid.getLocation().lat = 9;
  equal(mraid.getLocation(), fix);
});

test('calendar events are judged, and written as the host reads them', () => {
  const start = '2031-02-03T04:05Z';
  const rule = (rest) => ({ description: 'd', start, recurrence: { frequency: 'weekly', ...rest } });
  const faults = [
    ['tomorrow', 'createCalendarEvent() needs an object.'],
    [{ start }, 'description is missing.'],
    [{ description: 'd' }, 'start is missing.'],
    [{ description: 'd', start: '2031-02-03' }, 'start is not a date and time with zone.'],
    [{ description: 'd', start: '2031-02-30T04:05Z' }, 'start is not a date and time with zone.'],
    [{ description: 'd', start: '2031-02-03T24:00Z' }, 'start is not a date and time with zone.'],
    [{ description: 'd', start, end: '2031-02-03T04:60Z' }, 'end is not a date and time with zone.'],
    [{ description: 'd', start, end: '2031-02-03T04:04Z' }, 'end is before start.'],
    [{ description: 'd', start, location: 5 }, 'location is not a text.'],
    [{ description: 'd', start, recurrence: 'weekly' }, 'recurrence is not an object.'],
    [rule({ frequency: 'often' }), 'frequency is none of daily, weekly, monthly, yearly.'],
    [rule({ interval: 2 }), 'interval must be 1.'],
    [rule({ weeksInMonth: [1] }), 'weeksInMonth is not possible here.'],
    [rule({ daysInWeek: [0] }), 'daysInWeek must be whole numbers from 1 to 7.'],
    [rule({ daysInWeek: ['1'] }), 'daysInWeek is not a list of numbers.'],
    [rule({ daysInMonth: [0] }), 'daysInMonth must be whole numbers from 1 to 31.'],
    [rule({ monthsInYear: [-1] }), 'monthsInYear must be whole numbers from 1 to 12.'],
    [rule({ expires: 'never' }), 'expires is not a date and time with zone.'],
    [{ get description() { throw 1; } }, 'The arguments cannot be used.'],
    [{ description: 'd', start }, 'There is no calendar here.'],
  ];
  const { errors } = answers(() => faults.forEach(([event]) => mraid.createCalendarEvent(event)));
  equal(errors, faults.map(([, fault]) => 'createCalendarEvent: ' + fault));

  /** @type {any} */
  const lists = Array.prototype; // to which old libraries of pages add this
  lists.toJSON = () => 'spoilt';
  const { sent } = answers(() => {
    hostMethods.setSupports('calendar', true);
    mraid.createCalendarEvent({
      description: 'Fair',
      start: new Date(86400000),
      end: '1970-01-02T02:00:00.500+0100',
      recurrence: { frequency: 'monthly', daysInMonth: [-1], expires: '1971-01-01T00:00Z' },
    });
  });
  delete lists.toJSON;
  equal(JSON.parse(sent[0].slice('createCalendarEvent?event='.length)), {
    description: 'Fair',
    start: '1970-01-02T00:00:00Z',
    end: '1970-01-02T02:00:00+01:00',
    recurrence: '{"frequency":"monthly","daysInMonth":[-1],"expires":"1971-01-01T00:00Z"}',
  });
});
