// Values on their way to those who listen.

/** A copy in which whatever is absent, null or no number stays out; elements do not survive it. */
export const present = (value) =>
  JSON.parse(
    JSON.stringify(value, (_, part) =>
      part === null || (typeof part === 'number' && !isFinite(part)) ? undefined : part,
    ),
  );

/** What the table itself holds under that name: pages name methods and types as they like. */
export const own = (table, name) => (Object.prototype.hasOwnProperty.call(table, name) ? table[name] : undefined);
