// Scripts in frames of another origin look for two frames by their names, as soon as there is a body: the first inline
// script of it may ask already.
const names = ['omid_v1_present', 'omid_v1_present_app'];

function addFrames(document) {
  for (const name of names) {
    const frame = document.createElement('iframe');
    frame.name = frame.id = name;
    frame.style.display = 'none';
    frame.loading = 'lazy'; // out of sight for ever, so nothing is loaded, and the page does not wait for it
    frame.src = 'data:,';
    document.body.appendChild(frame);
  }
}

export function announcePresence(document) {
  // A page that fills its body anew would take them away.
  const stay = () => {
    addFrames(document);
    new MutationObserver(() => {
      if (document.body && !document.getElementById(names[0])) addFrames(document);
    }).observe(document.body, { childList: true });
  };
  if (document.body) return stay();
  const watcher = new MutationObserver(() => {
    if (!document.body) return;
    watcher.disconnect();
    stay();
  });
  watcher.observe(document.documentElement, { childList: true });
}
