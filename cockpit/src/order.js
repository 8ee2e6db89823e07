// SPDX-License-Identifier: MIT
import { COLUMNS } from "./command.js";
import { ABSENT } from "./records.js";

// Above so many values the words of a language are compared by their characters alone: a hundred
// thousand paths would take seconds otherwise.
const COLLATED = 2000;

/**
 * The order of records by a column, by their paths where that is the same, and by what tells them
 * apart at last: {compare, knows}. Not every record that comes later can be compared so; "knows" says.
 */
export function orderOf(records, { sort, descending }, language) {
    const { byColumn, knows } = comparison(records, sort, language);
    const sign = descending ? -1 : 1;
    const compare = (a, b) => sign * byColumn(a, b) || byText(a.full_path, b.full_path) || byText(a.id, b.id);
    return { compare, knows };
}

/** A list in order, without what has gone and with what has come, as Records tells it. */
export function merged(list, changes, compare) {
    const pieces = [];
    let next = 0;
    const steps = changes.filter(({ was, is }) => was === ABSENT || is === ABSENT)
        .sort((a, b) => compare(a.record, b.record));
    for (const { record, is } of steps) {
        const at = placeOf(list, record, compare);
        pieces.push(list.slice(next, at));
        next = Math.max(next, at);
        if (is === ABSENT) {
            next = at + 1;
        } else {
            pieces.push(record);
        }
    }
    return [].concat(...pieces, list.slice(next));
}

/** Where in a list a record is, or would be. */
function placeOf(list, record, compare) {
    let first = 0;
    let end = list.length;
    while (first < end) {
        const middle = (first + end) >> 1;
        if (compare(list[middle], record) < 0) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return first;
}

function comparison(records, key, language) {
    const { kind } = COLUMNS.find(column => column.key === key);
    if (kind === "number" || kind === "size") {
        return { byColumn: (a, b) => (a[key] ?? -1) - (b[key] ?? -1), knows: () => true };
    }
    const values = new Set();
    for (const record of records) {
        values.add(record[key]);
        if (values.size > COLLATED) {
            return { byColumn: (a, b) => byText(a[key], b[key]), knows: () => true };
        }
    }
    const { compare } = new Intl.Collator(language.replace("_", "-"), { numeric: true });
    const ranks = new Map([...values].sort(compare).map((value, rank) => [value, rank]));
    return { byColumn: (a, b) => ranks.get(a[key]) - ranks.get(b[key]), knows: record => ranks.has(record[key]) };
}

function byText(a, b) {
    return a < b ? -1 : a > b ? 1 : 0;
}
