// A page's clock that can be put forward: Date, performance.now() and timers of the page's own scripts. Stands in pages
// whose steps move it, and in no other.
#pragma once

namespace velto::preview {

constexpr char clockScript[] = R"JS((() => {
  const RealDate = Date, now = RealDate.now, sinceStart = performance.now.bind(performance);
  const later = setTimeout, notLater = clearTimeout, every = setInterval;
  const most = 10000; // timers that one move lets ring
  const timers = new Map();
  let shift = 0;
  const time = () => now() + shift;
  window.Date = new Proxy(RealDate, {
    apply: () => new RealDate(time()).toString(),
    construct: (target, words, made) => Reflect.construct(target, words.length ? words : [time()], made),
    get: (target, key) => (key === 'now' ? time : Reflect.get(target, key)),
  });
  performance.now = () => sinceStart() + shift;
  const call = (work, words) => (typeof work === 'function' ? work.apply(window, words) : (0, eval)(work));
  window.setTimeout = (work, wait = 0, ...words) => {
    const id = later(() => { timers.delete(id); call(work, words); }, wait);
    timers.set(id, { due: time() + Math.max(+wait || 0, 0), period: 0, work, words });
    return id;
  };
  window.setInterval = (work, wait = 0, ...words) => {
    const period = Math.max(+wait || 0, 1);
    const id = every(() => { timers.get(id).due = time() + period; call(work, words); }, wait);
    timers.set(id, { due: time() + period, period, work, words });
    return id;
  };
  window.clearTimeout = window.clearInterval = (id) => { timers.delete(id); notLater(id); };
  Object.defineProperty(window, '__veltoClock', { value: (by) => {
    const end = time() + by;
    for (let rung = 0; rung < most; ++rung) {
      const [id, next] = [...timers].reduce((a, b) => (b[1].due < a[1].due ? b : a), [0, { due: Infinity }]);
      if (next.due > end) break;
      shift += Math.max(next.due - time(), 0);
      if (next.period) next.due += next.period;
      else window.clearTimeout(id);
      try { call(next.work, next.words); } catch (error) { later(() => { throw error; }); }
    }
    shift += Math.max(end - time(), 0);
    return true;
  } });
})())JS";

}  // namespace velto::preview
