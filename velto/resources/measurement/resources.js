// Verification scripts that the ad or the application names, by their address. Each runs in a frame of its own, which
// gives it the access that it was named with.
const accessModes = ['full', 'domain', 'limited'];

export class Resources {
  /** `open` makes the frame: see openFrame(). */
  constructor(open) {
    this.open = open;
    this.list = [];
  }

  add(entries) {
    for (const entry of Array.isArray(entries) ? entries : []) {
      if (!entry || typeof entry.resourceUrl !== 'string' || !/^https?:\/\//i.test(entry.resourceUrl)) continue;
      this.list.push({
        resourceUrl: entry.resourceUrl,
        vendorKey: typeof entry.vendorKey === 'string' ? entry.vendorKey : '',
        verificationParameters: entry.verificationParameters ?? undefined,
        accessMode: accessModes.includes(entry.accessMode) ? entry.accessMode : 'limited',
        loss: /^[\dA-F-]+$/i.test(entry.loss) ? entry.loss : undefined,
      });
    }
  }

  /** Lets run what does not yet. Where the application isolates scripts, none reaches into the page. */
  inject(isolated) {
    for (const resource of this.list) {
      if (resource.injectionId) continue;
      if (isolated && resource.accessMode === 'full') resource.accessMode = 'limited';
      resource.injectionId = `${resource.vendorKey}-${Math.random().toString(36).slice(2)}`;
      this.open(resource);
    }
  }

  /** The one that a listening script was loaded from, as far as can be told. */
  of(listener) {
    if (listener.injectionId) return this.list.find((resource) => resource.injectionId === listener.injectionId);
    return this.list.find((resource) => resource.vendorKey && resource.vendorKey === listener.vendorKey);
  }
}

/** What a listener can reach: what it was named with, but never more than the way by which it came. */
export function accessOf(listener, resource) {
  if (listener.near) return resource ? resource.accessMode : 'full';
  return resource && resource.accessMode === 'domain' ? 'domain' : 'limited';
}

// A script that cannot be loaded is told to the application that gave a word for it, by going to a place that is nowhere, in the
// script's own frame: ServicePage hears it, and lets nothing go there. The word is in no other frame, so no script speaks for another.
const tellsLoss = ({ loss }) => (loss ? ` onerror="location='https://not-loaded.invalid/${loss}'"` : '');
const attribute = (text) => text.replace(/&/g, '&amp;').replace(/"/g, '&quot;');

export function openFrame(document, resource) {
  if (!document.body) return;
  const properties = JSON.stringify({ injectionId: resource.injectionId, injectionSource: 'app' });
  const frame = document.createElement('iframe');
  frame.setAttribute('sandbox', `allow-scripts${resource.accessMode === 'full' ? ' allow-same-origin' : ''}`);
  frame.style.display = 'none';
  frame.srcdoc =
    `<script>omidVerificationProperties=${properties.replace(/</g, '\\u003c')};` +
    'omidVerificationProperties.serviceWindow=parent<' + '/script>' +
    `<script src="${attribute(resource.resourceUrl)}"${tellsLoss(resource)}><` + '/script>';
  document.body.appendChild(frame);
}
