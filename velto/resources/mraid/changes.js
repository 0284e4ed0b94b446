// The host tells one change in several statements. They are gathered: all values are in place before the first listener
// hears of any.

import { inOneMessage } from './channel.js';
import { closeMarkIsDue } from './closeMark.js';
import { fire, tellAtOnce } from './events.js';
import { sendOrientationProperties } from './properties.js';
import { proceed } from './queue.js';
import { ad } from './state.js';
import { isOneOf, json } from './values.js';

const args = {
  stateChange: () => [ad.state],
  viewableChange: () => [ad.viewable],
  sizeChange: () => [ad.size.width, ad.size.height],
  exposureChange: () => [ad.exposure.exposedPercentage, ad.exposure.visibleRectangle, ad.exposure.occlusionRectangles],
  audioVolumeChange: () => [ad.volume],
};

/** A change begins, which the given statement will end. */
export function begin(lastStatement) {
  if (ad.lastStatement || !ad.isReady) return;
  ad.lastStatement = lastStatement;
  ad.silence.set(tellChange);
}

export function note(event) {
  if (!isOneOf(event, ad.news)) ad.news.push(event);
}

/** This statement has come. Nobody hears of anything before the page is ready. */
export function end(statement) {
  if (ad.isReady ? !ad.lastStatement || ad.lastStatement === statement : statement === 'ready') tellChange();
}

/** The listeners hear of it, and what they say to that leaves, before the host's next statement. */
export function tellChange() {
  inOneMessage(() => tellAtOnce(gathered));
}

function gathered() {
  ad.silence.lift();
  ad.lastStatement = null;
  ad.isOfOtherPart = false;
  const news = ad.news;
  ad.news = [];
  closeMarkIsDue();
  if (!ad.isReady) {
    ad.isReady = true;
    ad.isSecondPart = ad.state === 'expanded';
    if (ad.turnedEarly) sendOrientationProperties();
    fire('ready', []);
  }
  news.forEach(tellIfNew);
  proceed();
}

function tellIfNew(event) {
  if (!args[event]) return;
  const values = args[event]();
  const text = json(values);
  if (ad.told[event] === text) return;
  ad.told[event] = text;
  fire(event, values);
}
