// What PageEars puts into every document before the page's first script.
#pragma once

namespace velto::preview {

// The names of the engine's message handlers: one in the world of the listening script, which no page reaches,
// one in the page's.
constexpr char ownHandler[] = "veltoPreview";
constexpr char pageHandler[] = "veltoPreviewPage";
constexpr char ownWorld[] = "velto-preview";

// In a world of its own: what the document itself tells. A document that is written anew loses its listeners, so they
// are added again; this script may run there once more, too, and must not tell all twice.
constexpr char ownScript[] = R"JS((() => {
  if (window.veltoHears === document) return;
  window.veltoHears = document;
  const handler = window.webkit.messageHandlers.veltoPreview;
  const report = (kind, details) => {
    if (window.top !== window) details.frame = location.href;
    handler.postMessage({ kind, details });
  };
  const failed = (event) => {
    const { target } = event;
    if (!(target instanceof Element))
      return report('script-error', {
        text: String(event.message), source: event.filename || '', line: event.lineno || 0, column: event.colno || 0
      });
    const url = String(target.currentSrc || target.src || target.href || '');
    if (/(^|\/)mraid\.js([?#]|$)/.test(url)) return; // it is there in any case
    const isLast = target.localName === 'source' && target.parentNode?.networkState === HTMLMediaElement.NETWORK_NO_SOURCE;
    const reason = target.error ? target.error.message || 'It cannot be decoded.' : isLast ? 'None of the sources can be played.' : '';
    report('resource-error', { url, element: target.localName, ...(reason && { reason }) });
  };
  const refused = (event) => {
    if (event.blockedURI === 'eval') return; // the library tries that once; what the page tries throws
    report('content-policy', { directive: event.effectiveDirective, url: event.blockedURI });
  };
  const listen = () => {
    window.addEventListener('error', failed, true);
    document.addEventListener('securitypolicyviolation', refused);
  };
  listen();
  new MutationObserver(listen).observe(document, { childList: true });
})())JS";

// In the page's world: what the page calls. All that is needed later is taken before the page can replace it.
constexpr char pageScript[] = R"JS((() => {
  if (window.__veltoEars) return;
  Object.defineProperty(window, '__veltoEars', { value: true });
  const handler = window.webkit.messageHandlers.veltoPreviewPage;
  const post = handler.postMessage.bind(handler);
  const { stringify } = JSON, asText = String, Failure = Error;
  const { apply } = Reflect;
  const mostLines = 1000, longest = 4000;
  const isFrame = window.parent !== window, address = isFrame ? location.href : '';
  const report = (kind, details) => {
    details.__proto__ = null;
    if (isFrame) details.frame = address;
    post({ __proto__: null, kind, details });
  };
  const text = (value) => {
    let found = '';
    try {
      found = typeof value === 'string' ? value : value instanceof Failure ? asText(value) : stringify(value) || asText(value);
    } catch (e) {
      try { found = asText(value); } catch (e) {}
    }
    return found.length > longest ? found.substring(0, longest) + '…' : found;
  };
  // Takes the place of a function of the page's; `tell` hears the arguments and what came of them.
  const follow = (object, name, tell) => {
    const original = object[name];
    if (typeof original !== 'function') return;
    object[name] = function (...words) {
      const result = apply(original, this, words);
      tell(words, result, this);
      return result;
    };
  };
  let lines = 0;
  for (const level of ['log', 'info', 'warn', 'error', 'debug'])
    follow(console, level, (words) => {
      if (++lines > mostLines) return;
      let line = '';
      for (let i = 0; i < words.length; ++i) line += (i ? ' ' : '') + text(words[i]);
      report('console', { level, text: line });
      if (lines === mostLines) report('console', { level: 'warn', text: 'What follows of this page is not told.' });
    });
  for (const type of ['alert', 'confirm', 'prompt', 'print'])
    follow(window, type, (words) => report('dialog', { type, text: words.length ? text(words[0]) : '' }));
  follow(window, 'open', (words, opened) => {
    const url = words.length ? text(words[0]) : '';
    if (opened || /^(mraid|velto):/i.test(url)) return; // a command is no window
    report('refused', { command: 'window.open', reason: 'An ad has no windows: mraid.open() and links open what is elsewhere.', url });
  });
  follow(HTMLMediaElement.prototype, 'play', (words, promise, media) => {
    promise.then(null, (error) =>
      report('refused', { command: 'play', reason: text(error), url: media.currentSrc || media.src }));
  });
  const rejected = ({ reason }) => {
    let source = '', line = 0, column = 0;
    try {
      if (reason instanceof Failure) [source, line, column] = [text(reason.sourceURL), reason.line >>> 0, reason.column >>> 0];
    } catch (e) {}
    if (source === 'about:blank') source = ''; // the ad's own page
    report('script-error', { text: 'unhandled rejection: ' + text(reason), source, line, column });
  };
  const listen = () => window.addEventListener('unhandledrejection', rejected);
  listen();
  new MutationObserver(listen).observe(document, { childList: true });
  const { mraid } = window;
  if (!mraid || isFrame) return;
  const { addEventListener } = mraid;
  const hear = () => addEventListener('error', failed);
  const failed = (message, action) => report('refused', { command: text(action || ''), reason: text(message) });
  follow(mraid, 'removeEventListener', hear); // which may have removed all of them
  hear();
})())JS";

}  // namespace velto::preview
