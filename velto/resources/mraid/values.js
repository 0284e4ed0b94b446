// What arguments are, and copies of them.

export function copy(object) {
  return merge({}, object);
}

export function merge(target, source) {
  for (var key in source) if (source[key] !== undefined) target[key] = source[key];
  return target;
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
