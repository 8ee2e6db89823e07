// SPDX-License-Identifier: MIT
import { FACETS } from "./command.js";
import { merged } from "./order.js";
import { OPEN } from "./records.js";

// What a record fails that fails no facet, or more than one.
const NONE = -1;
const SEVERAL = -2;

/**
 * The records that are chosen, and for each facet how many there are of each value, given what is
 * chosen in the other facets: so a count says what one more click would give. What is chosen of a
 * record, and where it counts, goes by its combination of values alone.
 */
export class Facets {
    /** Those that are to be shown, those of them that are open, and counts by facet and value. */
    shown;
    count;
    counts;

    #chosen;
    #sets;
    #tallies = new Map();

    constructor(records, chosen) {
        this.#chosen = chosen;
        this.#sets = FACETS.map(facet => new Set(chosen[facet]));
        let tally = null;
        for (const { combination, seen } of records) {
            // Most follow their like, in any order.
            if (tally?.combination !== combination) {
                tally = this.#tallyOf(combination);
            }
            tally.open += seen === OPEN ? 1 : 0;
        }
        this.shown = this.#takesAll() ? records : records.filter(record => this.#isShown(record));
        this.#tell();
    }

    /** Takes what has changed of the records, which then are these. */
    change(changes, records, compare) {
        for (const { record, was, is } of changes) {
            this.#tallyOf(record.combination).open += (is === OPEN ? 1 : 0) - (was === OPEN ? 1 : 0);
        }
        this.shown = this.#takesAll() ? records
            : merged(this.shown, changes.filter(({ record }) => this.#isShown(record)), compare);
        this.#tell();
    }

    #takesAll() {
        return this.#sets.every(({ size }) => size === 0);
    }

    #isShown({ combination }) {
        return this.#tallyOf(combination).failed === NONE;
    }

    /** How many open ones have a combination, and which facet it fails. */
    #tallyOf(combination) {
        const known = this.#tallies.get(combination);
        const tally = known ?? { combination, failed: this.#failedBy(combination), open: 0 };
        if (!known) {
            this.#tallies.set(combination, tally);
        }
        return tally;
    }

    /** A facet by its place in FACETS, or one of the others. */
    #failedBy(combination) {
        const failed = [...FACETS.keys()].filter(i => this.#sets[i].size > 0 && !this.#sets[i].has(combination[i]));
        return failed.length > 1 ? SEVERAL : failed[0] ?? NONE;
    }

    #tell() {
        this.count = 0;
        const counts = FACETS.map(facet => new Map(this.#chosen[facet].map(value => [value, 0])));
        const add = (i, value, number) => counts[i].set(value, (counts[i].get(value) ?? 0) + number);
        for (const { combination, failed, open } of this.#tallies.values()) {
            if (open > 0 && failed >= 0) {
                add(failed, combination[failed], open);
            } else if (open > 0 && failed === NONE) {
                this.count += open;
                combination.forEach((value, i) => add(i, value, open));
            }
        }
        this.counts = Object.fromEntries(FACETS.map((facet, i) => [facet, counts[i]]));
    }
}

/** Values with their counts, biggest first, those of equal count by name. */
export function ranked(counts) {
    return [...counts].sort(([a, m], [b, n]) => n - m || (a < b ? -1 : a > b ? 1 : 0));
}

/** The values of a facet, {value, files, size} each, most files first. A file's size counts once. */
export function groupsOf(records, facet) {
    const groups = new Map();
    for (const record of records.filter(({ mark }) => mark !== "closed")) {
        const group = groups.get(record[facet]) ?? { value: record[facet], files: 0, size: 0, seen: new Set() };
        groups.set(group.value, group);
        ++group.files;
        if (!group.seen.has(record.full_path)) {
            group.seen.add(record.full_path);
            group.size += record.size ?? 0;
        }
    }
    return [...groups.values()].map(({ seen, ...group }) => group)
        .sort((a, b) => b.files - a.files || (a.value < b.value ? -1 : 1));
}
