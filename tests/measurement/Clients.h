// Clients of the measurement service as public scripts have them, written after the message contract alone: a
// verification client that finds the service on its own, and an ad's session client. For pages under test;
// events go to the list `log` of the page at the top.
#pragma once

#include <string>

namespace velto::test {

// verify(vendorKey): listens to a session and to all of its events. `version` decides how arguments travel.
inline const std::string verificationClient = R"(
function verify(vendorKey, types, version) {
  version = version || '1.4.0';
  const properties = window.omidVerificationProperties || {};
  const note = (way, event) => {
    const entry = { by: vendorKey, way, event };
    if (window.report) report(entry);
    else if (window === top) log.push(entry); else top.postMessage({ log: JSON.parse(JSON.stringify(entry)) }, '*');
  };
  const list = version === '1.4.0';
  const handlers = {};
  let send;
  const take = (message) => {
    if (!message || message.omid_message_method !== 'response') return;
    const args = list ? message.omid_message_args : JSON.parse(message.omid_message_args);
    if (handlers[message.omid_message_guid]) handlers[message.omid_message_guid](args[0]);
  };
  for (const target of [properties.serviceWindow, top]) {
    if (!target || send) continue;
    let service = null, present = false;
    try { service = target.omid && target.omid.v1_VerificationServiceCommunication; } catch (e) {}
    try { present = !!(target.frames['omid_v1_present'] && target.frames['omid_v1_present_app']); } catch (e) {}
    if (service) {
      const self = { handleExportedMessage: take };
      send = (message) => service.handleExportedMessage(message, self);
      send.way = 'direct';
    } else if (present) {
      addEventListener('message', (event) => take(event.data));
      send = (message) => target.postMessage(message, '*');
      send.way = 'posted';
    }
  }
  if (!send) { note('none', {}); return; }
  const call = (method, args, handler) => {
    const guid = vendorKey + Math.random();
    handlers[guid] = handler;
    send({ omid_message_guid: guid, omid_message_method: 'VerificationService.' + method,
      omid_message_version: version, omid_message_args: list ? args : JSON.stringify(args) });
  };
  call('addSessionListener', [vendorKey, properties.injectionId], (event) => note(send.way, event));
  for (const type of types)
    call('addEventListener', [type, properties.injectionId], (event) => note(send.way, event));
}
)";

// session(observer): introduces itself, and returns a function that calls the service.
inline const std::string sessionClient = R"(
function session(observer) {
  const service = omid.v1_SessionServiceCommunication;
  const handlers = {};
  const self = { handleExportedMessage: (message) => {
    const handler = handlers[message.omid_message_guid];
    if (handler) handler(message.omid_message_args[0]);
  } };
  const call = (method, args, handler) => {
    const guid = method + Math.random();
    handlers[guid] = handler;
    service.handleExportedMessage({ omid_message_guid: guid, omid_message_method: 'SessionService.' + method,
      omid_message_version: '1.4.0', omid_message_args: args.concat('own-session') }, self);
  };
  call('setClientInfo', ['1.4.0', 'Tester', '7']);
  if (observer) call('registerSessionObserver', [], observer);
  return call;
}
)";

// The head that both need, and what takes in what frames found out.
inline const std::string logging =
    "<script>var log = []; addEventListener('message', (e) => { if (e.data && e.data.log) "
    "log.push(e.data.log); });"
    "</script>";

}  // namespace velto::test
