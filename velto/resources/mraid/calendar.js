// What a creative may say of a calendar event, and what of it is sent.

import { copy, isNumber, isObject, isText } from './values.js';

// The host reads dates with seconds at most.
function dateText(value) {
  if (value instanceof Date) value = value.toISOString();
  if (typeof value !== 'string') return null;
  var parts = /^(\d{4}-\d\d-\d\dT\d\d:\d\d(?::\d\d)?)(?:\.\d+)?(Z|[+-]\d\d:?\d\d)$/.exec(value);
  return parts && parts[1] + parts[2].replace(/^(.\d\d)(\d\d)$/, '$1:$2');
}

function textFault(object, names) {
  for (var i = 0; i < names.length; ++i) {
    var value = object[names[i]];
    if (value !== undefined && value !== null && typeof value !== 'string') return names[i] + ' is not a text.';
  }
}

function numbersFault(object, names) {
  for (var i = 0; i < names.length; ++i) {
    var value = object[names[i]];
    if (value === undefined || value === null) continue;
    if (!Array.isArray(value) || !value.every(isNumber)) return names[i] + ' is not a list of numbers.';
  }
}

// Puts a date into the target as the host reads it; says what is wrong with it otherwise.
function dateFault(target, object, name) {
  if (object[name] === undefined || object[name] === null || object[name] === '') return;
  target[name] = dateText(object[name]);
  if (!target[name]) return name + ' is not a date and time with zone.';
}

function recurrenceFault(target, rule) {
  if (rule === undefined || rule === null) return;
  if (!isObject(rule)) return 'recurrence is not an object.';
  var sent = copy(rule);
  var fault =
    textFault(rule, ['frequency']) ||
    numbersFault(rule, ['daysInWeek', 'daysInMonth', 'daysInYear', 'weeksInYear', 'monthsInYear']) ||
    dateFault(sent, rule, 'expires');
  target.recurrence = JSON.stringify(sent); // a text within the text
  return fault;
}

/** What is wrong with the event, or nothing; what is to be sent of it stands in `sent` then. */
export function eventFault(sent, event) {
  if (!isText(event.description)) return 'description is missing.';
  if (!event.start) return 'start is missing.';
  return (
    textFault(event, ['id', 'location', 'summary', 'reminder', 'status', 'transparency']) ||
    dateFault(sent, event, 'start') ||
    dateFault(sent, event, 'end') ||
    recurrenceFault(sent, event.recurrence)
  );
}
