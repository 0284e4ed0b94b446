import { Messages } from '../../../velto/resources/measurement/messages.js';
import { equal, test } from '../harness.js';

test('calls are answered in the way of their version, and what is none is left alone', () => {
  const answers = [];
  const called = [];
  const echo = (caller, ...list) => {
    called.push(list);
    caller.reply({ type: 'echo' });
  };
  const messages = new Messages({ echo }, { echo, setClientInfo: echo });
  const send = (method, args, version = '1.4.0', guid = 'g') => {
    const message = { omid_message_guid: guid, omid_message_method: method, omid_message_version: version };
    messages.receive({ ...message, omid_message_args: args }, (answer) => answers.push(answer), true);
  };
  const unversioned = { omid_message_guid: 'g', omid_message_method: 'VerificationService.echo', omid_message_version: 1 };
  for (const message of [null, 'text', 7, {}, [], unversioned]) messages.receive(message, () => {}, false);
  for (const name of ['sendUrl', 'setTimeout', 'constructor', '']) send(`VerificationService.${name}`, ['u']);
  for (const method of ['echo', '__proto__.echo', 'toString']) send(method, []);
  send('VerificationService.echo', '{', '1.0.2');
  equal([answers, called], [[], []]);
  send('VerificationService.echo', ['a'], '1.0.3');
  send('VerificationService.echo', '["a"]', '1.0.2');
  equal(answers.map((answer) => [answer.omid_message_guid, answer.omid_message_method, answer.omid_message_args]), [
    ['g', 'response', [{ type: 'echo' }]],
    ['g', 'response', '[{"type":"echo"}]'],
  ]);
  send('SessionService.setClientInfo', ['1', 'p', 'v', 'own']);
  send('SessionService.echo', ['own', 'own']);
  equal(called, [['a'], ['a'], ['1', 'p', 'v'], ['own']], 'the client ends its arguments with its own name');
});
