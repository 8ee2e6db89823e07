// SPDX-License-Identifier: MIT
import { COLUMNS } from "./command.js";

// Above so many values the words of a language are compared by their characters alone: a hundred
// thousand paths would take seconds otherwise.
const COLLATED = 2000;

// What was ordered last. Most of it is still there a moment later, and what is in order already is
// quickly sorted.
let last = { order: "", sorted: [] };

/** The records in the order of a column, and of their paths where that is the same. */
export function ordered(records, column, descending, language) {
    const order = [column, descending, language].join();
    const compare = comparison(records, column, language);
    const sign = descending ? -1 : 1;
    const sorted = order === last.order ? asBefore(records, last.sorted) : [...records];
    sorted.sort((a, b) => sign * compare(a, b) || byText(a.full_path, b.full_path));
    last = { order, sorted };
    return sorted;
}

let turn = 0;

/** Those that were there before as they were, then those that have come. Marks are quicker than a set. */
function asBefore(records, sorted) {
    const wanted = ++turn;
    const taken = ++turn;
    const take = record => {
        const isWanted = record.turn === wanted;
        record.turn = taken;
        return isWanted;
    };
    records.forEach(record => { record.turn = wanted; });
    const known = sorted.filter(take);
    return known.concat(records.filter(take));
}

function comparison(records, key, language) {
    const { kind } = COLUMNS.find(column => column.key === key);
    if (kind === "number" || kind === "size") {
        return (a, b) => (a[key] ?? -1) - (b[key] ?? -1);
    }
    const values = new Set();
    for (const record of records) {
        values.add(record[key]);
        if (values.size > COLLATED) {
            return (a, b) => byText(a[key], b[key]);
        }
    }
    const { compare } = new Intl.Collator(language.replace("_", "-"), { numeric: true });
    const ranks = new Map([...values].sort(compare).map((value, rank) => [value, rank]));
    return (a, b) => ranks.get(a[key]) - ranks.get(b[key]);
}

function byText(a, b) {
    return a < b ? -1 : a > b ? 1 : 0;
}
