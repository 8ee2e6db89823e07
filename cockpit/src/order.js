// SPDX-License-Identifier: MIT
import { COLUMNS } from "./command.js";

// Above so many values the words of a language are compared by their characters alone: a hundred
// thousand paths would take seconds otherwise.
const COLLATED = 2000;

/** The records in the order of a column, and of their paths where that is the same. */
export function ordered(records, column, descending, language) {
    const compare = comparison(records, column, language);
    const sign = descending ? -1 : 1;
    return [...records].sort((a, b) => sign * compare(a, b) || byText(a.full_path, b.full_path));
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
