import { eventFault } from '../../../velto/resources/mraid/calendar.js';
import { equal, test } from '../harness.js';

test('dates are sent as the host reads them', () => {
  const sent = (start) => {
    const event = { start };
    return eventFault(event, { description: 'd', start }) || event.start;
  };
  equal(sent('2031-02-03T04:05Z'), '2031-02-03T04:05Z');
  equal(sent('2031-02-03T04:05:06.789+0100'), '2031-02-03T04:05:06+01:00');
  equal(sent(new Date(0)), '1970-01-01T00:00:00Z');
  equal(sent('tomorrow'), 'start is not a date and time with zone.');
});
