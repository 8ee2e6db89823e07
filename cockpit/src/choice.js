// SPDX-License-Identifier: MIT

/** Records that were chosen, as a set of their ids that is never changed: each step gives another. */

export const NOTHING = new Set();

export function withOne(choice, id, chosen) {
    const next = new Set(choice);
    next[chosen ? "add" : "delete"](id);
    return next;
}

/** All of these records that are open. */
export const withAll = records => new Set(records.filter(isOpen).map(({ id }) => id));

/** What is chosen of these records: who can't see a record any more hasn't chosen it. */
export function chosenOf(records, choice) {
    return choice.size === 0 ? [] : records.filter(record => choice.has(record.id) && isOpen(record));
}

const isOpen = ({ mark }) => mark !== "closed";
