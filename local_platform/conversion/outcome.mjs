// SPDX-License-Identifier: MIT

/** Why a drawing cannot be converted, in words for its owner. Any other error is a fault of ours. */
export class Refusal extends Error {}

/** Counts what a conversion leaves out. */
export class Tally {
  #counts = new Map();

  add(name, count = 1) {
    if (count > 0) this.#counts.set(name, (this.#counts.get(name) ?? 0) + count);
  }

  toString() {
    return [...this.#counts].map(([name, count]) => `${count} ${name}`).join(', ');
  }
}
