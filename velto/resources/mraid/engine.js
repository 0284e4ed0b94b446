// What the script needs of the engine, taken before the page can replace it.

export const later = window.setTimeout.bind(window);
const now = window.performance.now.bind(window.performance);
export const encode = encodeURIComponent;

/** Runs the work as soon as the script that runs now is done. */
export const afterThis = window.queueMicrotask.bind(window);

/**
 * Something has to happen within so many milliseconds, again and again: it is set and lifted with each change. The engine's
 * timer is left to end by itself, and looks then whether there is something to wait for.
 */
export function deadline(milliseconds) {
  let work = null;
  let due = 0;
  let watched = false;
  const watch = (left) => {
    watched = true;
    later(look, left);
  };
  const look = () => {
    watched = false;
    if (!work) return;
    const left = due - now();
    if (left > 0) return watch(left);
    const late = work;
    work = null;
    late();
  };
  return {
    set: (whenLate) => {
      work = whenLate;
      due = now() + milliseconds;
      if (!watched) watch(milliseconds);
    },
    lift: () => {
      work = null;
    },
  };
}

const frame = window.requestAnimationFrame && window.requestAnimationFrame.bind(window);

/** Runs the work when the engine is about to draw: not in a page that is not seen. */
export function inNextFrame(work) {
  if (frame) frame(work);
  else later(work, 0);
}

const works = [];
const channel = window.MessageChannel && new MessageChannel();
const wake = channel && channel.port2.postMessage.bind(channel.port2);
if (channel) channel.port1.onmessage = () => works.shift()();

/** Runs the work in a task of its own, which no page can throttle and which lets the engine do other things first. */
export function inOwnTask(work) {
  if (!wake) return void later(work, 0);
  works.push(work);
  wake(0);
}

/** Does the work now, and again when the page is written anew, which takes away all listeners and all that was in it. */
export function inEachPage(work) {
  work();
  new MutationObserver(work).observe(document, { childList: true });
}
