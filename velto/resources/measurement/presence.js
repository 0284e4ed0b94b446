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
  if (document.body) return addFrames(document);
  const watcher = new MutationObserver(() => {
    if (!document.body) return;
    watcher.disconnect();
    addFrames(document);
  });
  watcher.observe(document.documentElement, { childList: true });
}
