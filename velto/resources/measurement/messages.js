// The messages by which clients call: { omid_message_guid, …_method, …_version, …_args }. Each answer carries the guid
// of the call that it answers.
import { own } from './values.js';

// Since 1.0.3 the arguments are a list, before that they were the text of one.
function takesList(version) {
  const [major, minor, patch] = version.split('.').map((part) => parseInt(part, 10) || 0);
  return major !== 1 ? major > 1 : minor > 0 || patch >= 3;
}

function argumentsOf(message) {
  const given = message.omid_message_args;
  try {
    const list = typeof given === 'string' ? JSON.parse(given) : given;
    return Array.isArray(list) ? Array.from(list) : [];
  } catch (error) {
    return null;
  }
}

export class Messages {
  constructor(verification, session) {
    this.methods = { VerificationService: verification, SessionService: session };
    this.clientId = undefined; // ends each of the session client's argument lists, once it has told it
  }

  /** `send` takes the answers; `near` is who can touch this window. Whatever is no call is left alone. */
  receive(message, send, near) {
    if (!message || typeof message !== 'object') return;
    const { omid_message_guid: guid, omid_message_method: method, omid_message_version: version } = message;
    if ([guid, method, version].some((text) => typeof text !== 'string')) return;
    const list = argumentsOf(message);
    const [service, name] = method.split('.');
    const called = own(own(this.methods, service) || {}, name);
    if (!list || !called) return;
    if (service === 'SessionService') this.dropClientId(name, list);
    const reply = (event) =>
      send({
        omid_message_guid: guid,
        omid_message_method: 'response',
        omid_message_version: version,
        omid_message_args: takesList(version) ? [event] : JSON.stringify([event]),
      });
    called({ reply, near }, ...list);
  }

  dropClientId(name, list) {
    if (name === 'setClientInfo' && list.length > 3) this.clientId = list[3];
    if (this.clientId !== undefined && list[list.length - 1] === this.clientId) list.pop();
  }
}
