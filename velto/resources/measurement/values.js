// Values on their way to those who listen.

const DEEPEST = 20; // of what pages say

/**
 * A copy in which whatever is absent, null or no number stays out; elements do not survive it. Made by hand, since old
 * libraries of pages give lists and texts a toJSON().
 */
export function present(value, depth = 0) {
  if (typeof value === 'number') return isFinite(value) ? value : undefined;
  if (typeof value === 'string' || typeof value === 'boolean') return value;
  if (typeof value !== 'object' || value === null || depth > DEEPEST) return undefined;
  if (Array.isArray(value)) return value.map((part) => present(part, depth + 1));
  const copy = {};
  for (const name of Object.keys(value)) {
    const part = present(value[name], depth + 1);
    if (part !== undefined) copy[name] = part;
  }
  return copy;
}

/** What the table itself holds under that name: pages name methods and types as they like. */
export const own = (table, name) => (Object.prototype.hasOwnProperty.call(table, name) ? table[name] : undefined);
