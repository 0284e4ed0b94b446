// What arguments are, and copies of them.

export function copy(object) {
  return merge({}, object);
}

export function merge(target, source) {
  for (const key of Object.keys(source)) if (source[key] !== undefined) target[key] = source[key];
  return target;
}

const escaped = (character) => '\\u' + ('000' + character.charCodeAt(0).toString(16)).slice(-4);
const quoted = (text) => '"' + text.replace(/["\\\u0000-\u001f]/g, escaped) + '"';

function listed(parts) {
  let text = '';
  for (const part of parts) text += (text && ',') + part;
  return text;
}

/** Plain data as JSON, whatever the page makes of the engine's own: old libraries give lists and texts a toJSON(). */
export function json(value) {
  if (typeof value === 'string') return quoted(value);
  if (Array.isArray(value)) return '[' + listed(value.map((part) => json(part))) + ']';
  if (typeof value === 'number') return isNumber(value) ? String(value) : 'null';
  if (typeof value !== 'object' || value === null) return typeof value === 'boolean' ? String(value) : 'null';
  const names = Object.keys(value).filter((name) => value[name] !== undefined && typeof value[name] !== 'function');
  return '{' + listed(names.map((name) => quoted(name) + ':' + json(value[name]))) + '}';
}

export function isText(value) {
  return typeof value === 'string' && value.length > 0;
}

export function isNumber(value) {
  return typeof value === 'number' && isFinite(value);
}

export function isObject(value) {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

export function isOneOf(value, list) {
  return list.indexOf(value) >= 0;
}
