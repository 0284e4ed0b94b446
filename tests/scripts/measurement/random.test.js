import { clock, equal, test } from '../harness.js';
import { seen, service, started } from './service.js';

// The model: all that happened, and the few rules of who may report what and when.
function model(owner) {
  let isRunning = false;
  let early = [];
  let happened = [];
  const latest = { geometryChange: '0' };
  const reported = {};
  const add = (type, timestamp) => {
    if (type === 'geometryChange') happened = happened.filter((event) => event.type !== type);
    happened.push({ type, timestamp });
    return [{ type, timestamp }];
  };
  const step = (type, by, time, number) => {
    const isOnce = type === 'loaded' || type === 'impression';
    if (early && type === 'sessionStart') {
      isRunning = true;
      const reports = early;
      early = null;
      const first = add(type, time);
      return [...first, ...reports.flatMap((report) => step(...report)), ...add('geometryChange', time)];
    }
    if (early && isOnce && by === 'javascript') early.push([type, by, time, number]);
    if (!isRunning || type === 'sessionStart') return [];
    const isOfAll = type === 'sessionFinish' || type === 'geometryChange';
    if ((!isOfAll && by !== owner) || (isOnce && reported[type])) return [];
    if (type === 'geometryChange' || type === 'volumeChange') {
      if (latest[type] === String(number)) return [];
      latest[type] = String(number);
    }
    reported[type] = true;
    isRunning = type !== 'sessionFinish';
    return add(type, time);
  };
  return { step, happened: (wants) => happened.filter(wants) };
}

const kinds = { media: ['loaded', 'pause', 'volumeChange'], session: ['sessionStart', 'sessionFinish'] };

test('ten thousand random steps agree with the model', () => {
  let state = 7;
  const random = (count) => (state = (state * 48271) % 2147483647) % count;
  const oneOf = (list) => list[random(list.length)];
  for (let round = 0; round < 500; ++round) {
    const owner = oneOf(['native', 'javascript']);
    const { app, call, hear } = service();
    const { step, happened } = model(owner);
    const logs = [];
    const reporters = {
      native: {
        loaded: (time) => app.loaded(time, {}),
        impression: (time) => app.impression(time),
        pause: (time) => app.media(time, 'pause'),
        volumeChange: (time, number) => app.mediaVolume(time, 'volumeChange', number / 4, 1, {}),
        geometryChange: (time, number) => app.geometry(time, seen({ pixelsInView: 32000 - number })),
        sessionFinish: (time) => app.finish(time),
        sessionStart: (time) => app.start(time, started({ impressionOwner: owner, mediaEventsOwner: owner })),
      },
      javascript: {
        loaded: () => call('loaded', null),
        impression: () => call('impressionOccurred'),
        pause: () => call('pause'),
        volumeChange: (_, number) => call('volumeChange', number / 4),
      },
    };
    for (let i = 0; i < 20; ++i) {
      clock.now += 1 + random(50);
      const by = oneOf(['native', 'javascript', 'listener', 'native']);
      if (by === 'listener') {
        const kind = oneOf(['media', 'session', 'impression', 'geometryChange']);
        const wants = ({ type }) => (kinds[kind] || [kind]).includes(type);
        logs.push({ kind, wants, heard: hear(kind), expected: happened(wants) });
        continue;
      }
      const type = oneOf(Object.keys(reporters[by]));
      const number = random(3);
      const news = step(type, by, clock.now, number);
      reporters[by][type](clock.now, number);
      for (const { expected, wants } of logs) expected.push(...news.filter(wants));
    }
    for (const { kind, heard, expected } of logs)
      equal(heard.map(({ type, timestamp }) => ({ type, timestamp })), expected, `round ${round}, ${kind}`);
  }
});
