// SPDX-License-Identifier: MIT

import { isFlat, outline } from './extent.mjs';

/** What must be known of all elements before the first can be written: how far they reach, whether they are flat, how tall the
    tallest text is, and which characters there are beyond ASCII. */
export class Survey {
  low = [Infinity, Infinity, Infinity];
  high = [-Infinity, -Infinity, -Infinity];
  isFlat = true;
  tallestText = 0;
  characters = new Set();

  push(element) {
    const { low, high } = this;
    for (const p of outline(element)) {
      for (let i = 0; i < 3; i++) {
        if (p[i] < low[i]) low[i] = p[i];
        if (p[i] > high[i]) high[i] = p[i];
      }
    }
    this.isFlat &&= isFlat(element);
    this.#texts(element);
  }

  #texts(element) {
    if (element.members) {
      for (const member of element.members) this.#texts(member);
    } else if (element.kind === 'text') {
      this.tallestText = Math.max(this.tallestText, element.height, element.width);
      for (let i = 0; i < element.text.length; i++) if (element.text[i] > '\x7f') this.characters.add(element.text[i]);
    }
  }

  /** `elements` have forEach(); those whose number is in `without` do not count. */
  static of(elements, without = new Set()) {
    const survey = new Survey();
    elements.forEach((element, i) => { if (!without.has(i)) survey.push(element); });
    return survey;
  }
}
