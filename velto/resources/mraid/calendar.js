// What a creative may say of a calendar event (the W3C's calendar entry), and what of it is sent.

import { copy, isNumber, isObject, isOneOf, isText, json } from './values.js';

const FREQUENCIES = ['daily', 'weekly', 'monthly', 'yearly'];

const isGiven = (value) => value !== undefined && value !== null;

// The host reads dates with seconds at most.
function dateText(value) {
  if (value instanceof Date) value = value.toISOString();
  if (typeof value !== 'string') return null;
  const parts = /^((\d{4}-\d\d-\d\d)T\d\d:\d\d(?::\d\d)?)(?:\.\d+)?(Z|[+-]\d\d:?\d\d)$/.exec(value);
  if (!parts) return null;
  const text = parts[1] + parts[3].replace(/^(.\d\d)(\d\d)$/, '$1:$2');
  // The language takes the 30th of February for a day in March, and 24:00 for an hour.
  const day = new Date(parts[2] + 'T00:00Z');
  const isDay = isFinite(day.getTime()) && day.toISOString().startsWith(parts[2]);
  return isDay && isFinite(Date.parse(text)) && !/T24/.test(text) ? text : null;
}

function textFault(object, names) {
  for (const name of names)
    if (isGiven(object[name]) && typeof object[name] !== 'string') return name + ' is not a text.';
}

// Puts a date into the target as the host reads it; says what is wrong with it otherwise.
function dateFault(target, object, name) {
  if (!isGiven(object[name]) || object[name] === '') return;
  target[name] = dateText(object[name]);
  if (!target[name]) return name + ' is not a date and time with zone.';
}

// Whole numbers; a negative one counts from the end, where that is allowed.
function numbersFault(rule, name, least, most, mayCountBack = false) {
  const list = rule[name];
  if (!isGiven(list)) return;
  if (!Array.isArray(list) || !list.every(isNumber)) return name + ' is not a list of numbers.';
  const isOne = (value) => Number.isInteger(value) && value >= least && value <= most;
  if (!list.every((value) => isOne(value) || (mayCountBack && isOne(-value))))
    return name + ' must be whole numbers from ' + least + ' to ' + most + '.';
}

function recurrenceFault(target, rule) {
  if (!isGiven(rule)) return;
  if (!isObject(rule)) return 'recurrence is not an object.';
  const sent = copy(rule);
  const fault =
    (isOneOf(rule.frequency, FREQUENCIES) ? undefined : 'frequency is none of ' + FREQUENCIES.join(', ') + '.') ||
    numbersFault(rule, 'daysInWeek', 1, 7) ||
    numbersFault(rule, 'daysInMonth', 1, 31, true) ||
    numbersFault(rule, 'daysInYear', 1, 366, true) ||
    numbersFault(rule, 'weeksInYear', 1, 53, true) ||
    numbersFault(rule, 'monthsInYear', 1, 12) ||
    ['weeksInMonth', 'exceptionDates'].map((name) => (isGiven(rule[name]) ? name + ' is not possible here.' : '')).join('') ||
    (isGiven(rule.interval) && rule.interval !== 1 ? 'interval must be 1.' : undefined) ||
    dateFault(sent, rule, 'expires');
  target.recurrence = json(sent); // a text within the text
  return fault;
}

/** What is wrong with the event, or nothing; what is to be sent of it stands in `sent` then. */
export function eventFault(sent, event) {
  if (!isText(event.description)) return 'description is missing.';
  if (!event.start) return 'start is missing.';
  const fault =
    textFault(event, ['id', 'location', 'summary', 'reminder', 'status', 'transparency']) ||
    dateFault(sent, event, 'start') ||
    dateFault(sent, event, 'end') ||
    recurrenceFault(sent, event.recurrence);
  if (fault) return fault;
  if (sent.end && Date.parse(sent.end) < Date.parse(sent.start)) return 'end is before start.';
}
