import { box } from '../../../velto/resources/measurement/rectangles.js';
import { clock, equal, test } from '../harness.js';
import { seen, service, started, told } from './service.js';

test('events carry the time at which they happened, and who comes late hears them all with it', () => {
  const { app, call, hear, observe } = service();
  clock.now = 5;
  call('loaded', { isSkippable: false });
  clock.now = 100;
  app.start(20, started());
  clock.now = 40;
  call('impressionOccurred');
  call('start', 30, 0.5);
  for (const nothing of ['startSession', 'finishSession', 'registerAdEvents', 'sendUrl', 'constructor']) call(nothing);
  app.geometry(60, seen({ percentageInView: 20 }));
  app.finish(70);
  equal(['session', 'media', 'impression', 'geometryChange', 'start'].map((type) => told(hear(type))), [
    'sessionStart@20 sessionFinish@70',
    'loaded@5 start@40',
    'impression@40',
    'geometryChange@60',
    'start@40',
  ]);
  const own = [];
  observe((event) => own.push(event));
  equal(told(own), 'sessionStart@20 sessionFinish@70');
});

test('what is kept is bounded, and of each kind the latest stays', () => {
  const { app, call, hear } = service();
  const spoilt = { get text() { throw new Error('spoilt'); } };
  try { call('sessionError', 'video', spoilt); } catch (error) { equal(error.message, 'spoilt'); }
  for (let i = 0; i < 1000; ++i) call('sessionError', 'video', i);
  app.start(1, started({ trace: true }));
  equal(hear('session').length, 99, 'and the geometry');
  call('start', 30, 1);
  for (let i = 0; i < 500; ++i) call(i % 2 ? 'pause' : 'resume');
  const late = hear('media');
  equal([late.length < 100, late[0].type, late[late.length - 1].type], [true, 'start', 'pause']);
});

test('one who comes while an event is told hears it once, and a fault is its own', () => {
  const { app, call, hear, observe } = service();
  const own = [];
  let late = [];
  observe((event) => {
    own.push(event.type);
    if (event.type !== 'sessionStart') throw new Error('fault');
    equal(scripts.length, 1, 'verification scripts come first, though they asked later');
    late = hear('impression');
    observe((again) => own.push(again.type));
    call('impressionOccurred');
    equal(late.length, 0, 'the start is for everybody first');
  });
  const scripts = hear('session');
  app.start(1, started());
  equal(late.length, 1);
  app.finish(2);
  equal(own.join(), 'sessionStart,sessionStart,sessionFinish,sessionFinish');
});

test('types left to the page are given once, also after the start, and not after they were told', () => {
  const byScript = { creativeType: 'definedByJavaScript', impressionType: 'definedByJavaScript' };
  const kinds = (events) => events.map((e) => [e.data.mediaType, e.data.creativeType, e.data.impressionType].join(' '));
  const { app, call, hear } = service();
  const told = hear('session');
  const rest = [hear('loaded'), hear('impression')];
  call('setCreativeType', 'video');
  call('setCreativeType', 'audio');
  app.start(1, started(byScript));
  equal([kinds(told), told[0].data.supportsLoadedEvent], [['video video definedByJavaScript'], true]);
  for (const type of ['definedByJavaScript', 'constructor', 'viewable', 'other']) call('setImpressionType', type);
  call('setContentUrl', 'https://content.example/');
  call('setClientInfo', '1.4.0', 'Tester', '7', 'own');
  const { contentUrl, context } = hear('session')[0].data;
  equal([contentUrl, context.omidJsInfo.partnerName], ['https://content.example/', 'Tester'], 'who comes late');
  call('loaded', null);
  call('impressionOccurred');
  equal(rest[1][0].data.adView.percentageInView, 100);
  for (const log of [...rest, hear('session')]) equal(kinds(log), ['video video viewable']);

  const other = service();
  other.app.start(1, started({ ...byScript, creativeType: 'htmlDisplay' }));
  other.call('setCreativeType', 'video');
  other.call('loaded', null);
  other.call('setImpressionType', 'audible');
  other.call('impressionOccurred');
  equal(kinds(other.hear('impression')), ['display htmlDisplay definedByJavaScript'], 'not after it was told');
  const bare = service();
  bare.app.start(1, started({ creativeType: undefined, impressionType: undefined }));
  equal(bare.hear('session')[0].data.supportsLoadedEvent, false);
});

test('volumes are rounded, and told when they change', () => {
  const { app, hear } = service();
  const log = hear('media');
  app.start(1, started({ mediaEventsOwner: 'native' }));
  app.mediaVolume(2, 'start', 0.30000001, 0.499, { duration: 12 });
  for (const volume of [0.3, 0.3001, 0.31, 0.31]) app.mediaVolume(3, 'volumeChange', volume, 0.5, {});
  app.mediaVolume(4, 'volumeChange', 0.31, 0.6, {});
  equal(log.map((e) => [e.type, e.data.mediaPlayerVolume, e.data.videoPlayerVolume, e.data.deviceVolume].join(' ')), [
    'start 0.3 0.3 0.5',
    'volumeChange 0.31 0.31 0.5',
    'volumeChange 0.31 0.31 0.6',
  ]);
  equal(log[0].data.duration, 12);
});

test('a script has no more access than its frame gives it, and only its own parameters', () => {
  const contextOf = (isolated, accessMode, near) => {
    const { app, call, frames, hear } = service();
    call('setSlotElement', { isConnected: true, getBoundingClientRect: () => box(0, 0, 9, 9) });
    call('injectVerificationScriptResources', [
      { resourceUrl: 'https://v.example/', vendorKey: 'v', verificationParameters: 'p', accessMode },
      { resourceUrl: 'javascript:alert()', vendorKey: 'bad' },
    ]);
    equal(frames.length, 0, 'not before the session starts');
    app.start(1, started({ isolated }));
    equal(frames.length, 1);
    const { data } = hear('session', frames[0].injectionId, near)[0];
    const foreign = hear('session', 'other', near)[0].data;
    equal([data.verificationParameters, foreign.verificationParameters], ['p', undefined]);
    const modes = [frames[0].accessMode, data.context.accessMode, foreign.context.accessMode];
    return [...modes, 'slotElement' in data.context].join(' ');
  };
  equal(contextOf(false, 'full', true), 'full full full true');
  equal(contextOf(false, 'full', false), 'full limited limited false');
  equal(contextOf(true, 'full', false), 'limited limited limited false');
  equal(contextOf(true, 'domain', false), 'domain domain limited false');
  equal(contextOf(false, 'limited', true), 'limited limited full false');
});

test('media events go to who asks for media, and come from their owner', () => {
  const { app, call, hear } = service();
  const media = hear('media');
  const one = hear('pause');
  call('start', 30, 0.5);
  app.start(1, started());
  call('loaded', { isSkippable: true, skipOffset: 5, isAutoPlay: false, position: 'preroll' });
  call('start', 30, null);
  for (const type of ['firstQuartile', 'pause', 'constructor']) call(type);
  call('playerStateChange', 'fullscreen');
  call('adUserInteraction', 'click');
  app.media(2, 'complete');
  const kind = { mediaType: 'video', creativeType: 'video', impressionType: 'beginToRender' };
  equal(media.map((event) => [event.type, event.data]), [
    ['loaded', { ...kind, skippable: true, skipOffset: 5, autoPlay: false, position: 'preroll' }],
    ['start', { duration: 30, deviceVolume: 1 }],
    ['firstQuartile', undefined],
    ['pause', undefined],
    ['playerStateChange', { state: 'fullscreen' }],
    ['adUserInteraction', { interactionType: 'click' }],
  ]);
  equal([one.length, Object.keys(one[0])], [1, ['adSessionId', 'timestamp', 'type']]);
});
