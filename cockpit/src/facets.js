// SPDX-License-Identifier: MIT
import { FACETS } from "./command.js";

/**
 * The records that a selection takes, and for each facet how many there are of each value, given
 * what is chosen in the other facets: so a count says what one more click would give.
 */
export function select(records, selection) {
    const chosen = FACETS.map(facet => new Set(selection.chosen[facet]));
    const counters = FACETS.map(() => new Counter());
    const shown = [];
    for (const record of found(records, selection.search)) {
        const failed = failedFacets(record, chosen);
        if (failed === NONE) {
            shown.push(record);
        }
        if (record.mark !== "closed") {
            count(record, failed, counters);
        }
    }
    FACETS.forEach((facet, i) => selection.chosen[facet].forEach(value => counters[i].add(value, 0)));
    return { shown, counts: Object.fromEntries(FACETS.map((facet, i) => [facet, counters[i].counts()])) };
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

// What the last search has found among which records: who types on searches among these alone.
let last = { records: null, search: "", found: [] };

function found(records, search) {
    const sought = search.toLowerCase();
    const words = sought.split(/\s+/).filter(word => word !== "");
    if (words.length === 0) {
        return records;
    }
    const isLonger = last.records === records && sought.startsWith(last.search);
    const among = isLonger ? last.found : records;
    last = {
        records,
        search: sought,
        found: among.filter(record => words.every(word => record.sought.includes(word))),
    };
    return last.found;
}

// Which facet a record fails, by its place in FACETS, or one of these.
const NONE = -1;
const SEVERAL = -2;

function failedFacets(record, chosen) {
    let failed = NONE;
    for (let i = 0; i < FACETS.length; ++i) {
        if (chosen[i].size > 0 && !chosen[i].has(record[FACETS[i]])) {
            if (failed !== NONE) {
                return SEVERAL;
            }
            failed = i;
        }
    }
    return failed;
}

function count(record, failed, counters) {
    if (failed >= 0) {
        counters[failed].add(record[FACETS[failed]], 1);
    } else if (failed === NONE) {
        for (let i = 0; i < FACETS.length; ++i) {
            counters[i].add(record[FACETS[i]], 1);
        }
    }
}

/** How many there are of each value. What follows its like, as most do in any order, is quickly counted. */
class Counter {
    #cells = new Map();
    #value;
    #cell = { count: 0 };

    add(value, number) {
        if (value !== this.#value) {
            this.#value = value;
            this.#cell = this.#cells.get(value) ?? { count: 0 };
            this.#cells.set(value, this.#cell);
        }
        this.#cell.count += number;
    }

    counts() {
        return new Map([...this.#cells].map(([value, { count: number }]) => [value, number]));
    }
}
