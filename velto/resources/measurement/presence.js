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

/** `listen` is called once more when the page may have been written anew, which takes all listeners away. */
export function announcePresence(document, listen) {
  const watcher = new MutationObserver(stay);
  // A page that fills its body anew would take the frames away, one that is written anew the body.
  function stay() {
    for (const node of [document, document.documentElement, document.body])
      if (node) watcher.observe(node, { childList: true });
    if (document.body && !document.getElementById(names[0])) addFrames(document);
    listen();
  }
  stay();
}
