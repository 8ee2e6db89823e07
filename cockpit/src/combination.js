// SPDX-License-Identifier: MIT

const known = new Map();

/**
 * Texts that a record has together, as one object for all records that have the same: many thousand
 * records have a few combinations, which are then told apart without looking at any text.
 */
export function combinationOf(texts) {
    const key = texts.join("\u0000"); // No text has it.
    const combination = known.get(key) ?? Object.freeze(texts);
    known.set(key, combination);
    return combination;
}
