// Addresses as creatives write them. What no URL holds, such as blanks and letters outside ASCII, is escaped, as web
// engines do (RFC 3986, 2.1); all else stays as it is written.

import { encode } from './engine.js';

export function escaped(address) {
  return address.trim().replace(/[^!-~]+|["<>\\^`{|}]/g, encode);
}

/** What the host fetches must say where from. */
export function whole(address) {
  try {
    return escaped(/^\s*[a-z][\w+.-]*:/i.test(address) ? address : new URL(address, document.baseURI).href);
  } catch (error) {
    return escaped(address); // a page without base
  }
}
