// SPDX-License-Identifier: MIT
// A level for each layer that is used.

const LEVELS = 63;

const numberIn = (name) => {
  const number = Number(/^(?:level )?(\d{1,2})$/i.exec(name)?.[1] ?? 0);
  return number >= 1 && number <= LEVELS ? number : 0;
};

/** How many of each group get a level of their own; what is left of a group shares one. */
function shares(visible, hidden, slots) {
  const own = { visible, hidden };
  if (visible + hidden <= slots) return own;
  if (visible + 1 <= slots) own.hidden = slots - visible - 1;
  else Object.assign(own, { hidden: 0, visible: Math.max(0, slots - (hidden > 0 ? 2 : 1)) });
  return own;
}

/** `layers` are { name, use, isHidden }. A layer has the level in "Level 5" or "5", else the lowest free one; one
    without use has none. Where layers are more than levels, the least used share, but hidden ones never
    with visible ones, as long as there is a level at all. Returns { levels: Map of level by name, sharing: Set of
    names, hiddenLevels }. */
export function assignLevels(layers) {
  const used = layers.filter((layer) => layer.use > 0);
  const levels = new Map();
  const owners = new Map();
  const put = (layer, level) => {
    levels.set(layer.name, level);
    owners.set(level, [...(owners.get(level) ?? []), layer]);
  };
  for (const layer of used) {
    const number = numberIn(layer.name);
    if (number && !owners.has(number)) put(layer, number);
  }
  const rest = used.filter((layer) => !levels.has(layer.name));
  const free = Array.from({ length: LEVELS }, (_, i) => i + 1).filter((level) => !owners.has(level));
  const groups = [false, true].map((isHidden) => rest.filter((layer) => layer.isHidden === isHidden));
  const own = shares(groups[0].length, groups[1].length, free.length);
  const alone = new Set();
  groups.forEach((group, i) => {
    const byUse = [...group].sort((a, b) => b.use - a.use);
    byUse.slice(0, i === 0 ? own.visible : own.hidden).forEach((layer) => alone.add(layer));
  });
  // In the order of the drawing's own table.
  for (const layer of rest) if (alone.has(layer)) put(layer, free.shift());
  for (const group of groups) {
    const together = group.filter((layer) => !alone.has(layer));
    if (together.length === 0) continue;
    const level = free.shift() ?? [...owners].find(([, [first]]) => first.isHidden === together[0].isHidden)?.[0] ?? LEVELS;
    together.forEach((layer) => put(layer, level));
  }
  const sharing = new Set([...owners.values()].filter((group) => group.length > 1).flat().map((layer) => layer.name));
  const hiddenLevels = [...owners].filter(([, group]) => group.every((layer) => layer.isHidden)).map(([level]) => level);
  return { levels, sharing, hiddenLevels };
}
