// What is seen of the ad: as the application tells it of the ad view, or of an element of the page that stands for it.
import { area, box, overlap, without } from './rectangles.js';

const ofPlace = ['viewport', 'clipped', 'obstructed']; // reasons that are found anew for an element

const unseen = (reasons) => ({
  percentageInView: 0,
  pixelsInView: 0,
  geometry: box(0, 0, 0, 0),
  onScreenGeometry: { ...box(0, 0, 0, 0), obstructions: [] },
  reasons,
});

/**
 * `told` is { viewport, adView, window }: all that the application knows, `window` being the part of the window that a
 * screen shows. `element` is null for the whole view, { rect } in the page's coordinates, or { reason } why there is none.
 */
export function seenOf(told, element) {
  const { viewport, adView, window } = told;
  const general = adView.reasons.filter((reason) => !ofPlace.includes(reason));
  if (!element) return { viewport, adView };
  if (general.includes('notFound')) return { viewport, adView: unseen(general) };
  if (element.reason) return { viewport, adView: unseen([...general, element.reason]) };

  const whole = adView.geometry;
  const rect = box(whole.x + element.rect.x, whole.y + element.rect.y, element.rect.width, element.rect.height);
  const inPage = overlap(rect, whole);
  const inWindow = overlap(inPage, window);
  const onScreen = overlap(inWindow, adView.onScreenGeometry);
  const obstructions = adView.onScreenGeometry.obstructions.filter((other) => area(overlap(other, onScreen)));
  const open = without(onScreen, obstructions).reduce((sum, part) => sum + area(part), 0);
  const pixelsInView = general.length ? 0 : open;
  const percentageInView = area(rect) ? Math.round((100 * pixelsInView) / area(rect)) : 0;

  const reasons = [...general];
  if (!area(rect) && !reasons.includes('hidden')) reasons.push('hidden');
  if (area(inWindow) < area(inPage)) reasons.push('viewport');
  if (area(inPage) < area(rect) || area(onScreen) < area(inWindow)) reasons.push('clipped');
  if (open < area(onScreen)) reasons.push('obstructed');
  return {
    viewport,
    adView: {
      percentageInView,
      pixelsInView,
      geometry: rect,
      onScreenGeometry: { ...onScreen, obstructions },
      reasons: percentageInView < 100 ? reasons : [],
    },
  };
}
