import { area, box, without } from '../../../velto/resources/measurement/rectangles.js';
import { equal, test } from '../harness.js';

test('what remains of a rectangle counts each covered point once', () => {
  const left = (...others) => without(box(0, 0, 10, 10), others).reduce((sum, part) => sum + area(part), 0);
  equal(left(), 100);
  equal(left(box(20, 0, 5, 5)), 100, 'beside it');
  equal(left(box(0, 0, 5, 10), box(0, 0, 10, 5)), 25, 'two that overlap');
  equal(left(box(2, 2, 6, 6)), 64, 'a hole');
  equal(left(box(-5, -5, 40, 40)), 0);
});
