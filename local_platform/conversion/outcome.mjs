// SPDX-License-Identifier: MIT

/** Why a drawing cannot be converted, in words for its owner. Any other error is a fault of ours.
    `kind` is one of: notADrawing, tooOld, tooNew, damaged, empty, tooLarge, tooSlow, locked, other. */
export class Refusal extends Error {
  constructor(message, kind = 'other') {
    super(message);
    this.kind = kind;
  }
}

/** Counts by name. */
export class Tally {
  #counts = new Map();

  add(name, count = 1) {
    if (count > 0) this.#counts.set(name, (this.#counts.get(name) ?? 0) + count);
  }

  get total() { return [...this.#counts.values()].reduce((sum, count) => sum + count, 0); }

  toJSON() { return Object.fromEntries(this.#counts); }

  toString() {
    return [...this.#counts].map(([name, count]) => `${count} ${name}`).join(', ');
  }
}
