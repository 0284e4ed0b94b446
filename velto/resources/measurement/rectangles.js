// Rectangles { x, y, width, height }, in points.

export const box = (x, y, width, height) => ({ x, y, width, height });
export const overlap = (a, b) => {
  const x = Math.max(a.x, b.x), y = Math.max(a.y, b.y);
  return box(x, y, Math.max(0, Math.min(a.x + a.width, b.x + b.width) - x),
    Math.max(0, Math.min(a.y + a.height, b.y + b.height) - y));
};
export const area = (a) => a.width * a.height;

// What remains of the rectangle once the others are cut out of it: a list of rectangles that do not overlap.
export const without = (rect, others) => others.reduce((rest, other) => rest.flatMap((r) => {
  const cut = overlap(r, other);
  if (!area(cut)) return [r];
  const below = cut.y + cut.height, right = cut.x + cut.width;
  return [box(r.x, r.y, r.width, cut.y - r.y), box(r.x, below, r.width, r.y + r.height - below),
    box(r.x, cut.y, cut.x - r.x, cut.height), box(right, cut.y, r.x + r.width - right, cut.height)]
    .filter((part) => area(part) > 0);
}), [rect]);
