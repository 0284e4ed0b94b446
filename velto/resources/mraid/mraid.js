// The page's side of rich media: window.mraid and window.MRAID_ENV after the public MRAID 2.0 and 3.0 standards.
//
// Put into every document of an ad before any script of the page. The host speaks to it in single statements
// (statements.js), and it speaks to the host in command URLs (channel.js).

import { closeMarkCalls } from './closeMark.js';
import { creativeMethods } from './creative.js';
import { followSize, provide, provideFromPage } from './document.js';
import { hostMethods } from './statements.js';
import { merge } from './values.js';

if (!window.mraid) {
  if (window.parent === window) {
    closeMarkCalls(creativeMethods.close);
    provide(merge(merge({}, creativeMethods), hostMethods), { version: '3.0', sdk: 'Velto', sdkVersion: '4.0.10' });
    followSize();
  } else {
    provideFromPage();
  }
}
