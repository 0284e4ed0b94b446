// Tests of the page scripts' modules, in the engine's bare JavaScript as in a page: test() notes a case, the program
// that holds the engine calls veltoRunTests(). Time is virtual: timers run in advance() alone.
const cases = [];

export function test(name, body) {
  cases.push({ name, body });
}

const text = (value) => (value === undefined ? 'undefined' : JSON.stringify(value));

/** Values are the same when their JSON is. */
export function equal(actual, expected, about = '') {
  if (text(actual) !== text(expected))
    throw new Error(`${about ? about + ': ' : ''}${text(actual)} where ${text(expected)} was expected`);
}

// --- time

export const clock = { now: 0 };
let timers = [];
let lastTimer = 0;

const add = (work, delay, every) => {
  timers.push({ id: ++lastTimer, at: clock.now + (delay || 0), work, every });
  return lastTimer;
};
const remove = (id) => {
  timers = timers.filter((timer) => timer.id !== id);
};

/** How many timers there are. */
export const waiting = () => timers.length;

/** Runs what is due within the given milliseconds, in order. */
export function advance(milliseconds) {
  const end = clock.now + milliseconds;
  for (;;) {
    const due = timers.filter((timer) => timer.at <= end).sort((a, b) => a.at - b.at || a.id - b.id)[0];
    if (!due) break;
    clock.now = Math.max(clock.now, due.at);
    if (due.every) due.at = clock.now + due.every;
    else remove(due.id);
    due.work();
  }
  clock.now = end;
}

/** @type {any} */
const engine = globalThis;
if (typeof window === 'undefined') engine.window = engine;
engine.setTimeout = (work, delay) => add(work, delay, 0);
engine.setInterval = (work, delay) => add(work, delay, Math.max(1, delay));
engine.clearTimeout = engine.clearInterval = remove;
engine.Date.now = () => clock.now;
engine.performance = { now: () => clock.now };

engine.veltoRunTests = () => {
  const failures = [];
  for (const { name, body } of cases) {
    timers = [];
    try {
      body();
    } catch (error) {
      failures.push(`${name}: ${error && error.message} ${(error && error.stack) || ''}`);
    }
  }
  return failures.length ? failures.join('\n') : `${cases.length} cases passed`;
};
