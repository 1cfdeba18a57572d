// SPDX-License-Identifier: MIT

/** Numbers of one size in a row that grows: a tenth of the memory of an array of objects. */
export class Growing {
  #values;
  length = 0;

  /** `Type` is that of the typed array which holds them. */
  constructor(Type, room = 1024) {
    this.#values = new Type(room);
  }

  push(value) {
    if (this.length === this.#values.length) {
      const larger = new this.#values.constructor(2 * this.length);
      larger.set(this.#values);
      this.#values = larger;
    }
    this.#values[this.length++] = value;
  }

  get values() { return this.#values.subarray(0, this.length); }
}
