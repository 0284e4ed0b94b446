// The rich-media script before the library itself: the program that holds the engine carries commands and statements
// between the two, and time is the same for both.
import { advance } from '../harness.js';
import { sendTo, turn } from './page.js';
import { creativeMethods as mraid } from '../../../velto/resources/mraid/creative.js';
import { hostMethods } from '../../../velto/resources/mraid/statements.js';
import { ad, initialState } from '../../../velto/resources/mraid/state.js';
import { listen, make, outcome, random, randomCalls } from './model.js';

const sent = [];
sendTo((address) => sent.push(address));
const run = { calls: [], at: 0, pause: 0, next: () => 0, said: { changes: [], errors: [], opened: [] } };
window.mraid = hostMethods;

/** @type {any} */
const engine = globalThis;
engine.veltoLoad = () => {
  Object.assign(ad, initialState());
  sent.length = 0;
};
engine.veltoBegin = (seed) => {
  const next = random(seed);
  const said = { changes: [], errors: [], opened: [] };
  Object.assign(run, { calls: randomCalls(next), at: 0, pause: 0, next, said });
  listen(mraid, said);
};
engine.veltoHear = (statement) => turn(() => (0, eval)(statement));
engine.veltoSent = () => sent.splice(0).join('\n');
// Lets time pass, and makes the calls of a turn when it has come. True while there is anything to come.
engine.veltoAdvance = (milliseconds) => {
  advance(milliseconds);
  run.pause -= milliseconds;
  if (run.pause <= 0 && run.at < run.calls.length) {
    turn(() => {
      for (; run.at < run.calls.length && run.calls[run.at] !== 'wait'; ++run.at) make(mraid, run.calls[run.at], run.at);
    });
    ++run.at;
    run.pause = run.next() * 150;
  }
  return run.at < run.calls.length || ad.waiting.length > 0 || ad.underWay !== null || sent.length > 0;
};
/** The calls, what came of them, and what should have come. */
engine.veltoVerdict = (opened, ...sizes) => {
  run.said.opened = opened;
  return [run.calls.join(' '), JSON.stringify(run.said), JSON.stringify(outcome(run.calls, ...sizes))].join('\n');
};
