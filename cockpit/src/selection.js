// SPDX-License-Identifier: MIT

/**
 * What of the records is to be seen, and how. A selection is never changed: each step gives another.
 * All of it stands in the page's address, so that a view can be shared.
 */
import { COLUMNS, FACETS } from "./command.js";

const KEYS = COLUMNS.map(column => column.key);
const SHOWN = COLUMNS.filter(column => column.shown).map(column => column.key);

export const EVERYTHING = Object.freeze({
    search: "",
    chosen: Object.fromEntries(FACETS.map(facet => [facet, []])),
    sort: "path",
    descending: false,
    columns: SHOWN,
    group: "",
});

export function toggled(selection, facet, value) {
    const values = selection.chosen[facet];
    const others = values.filter(other => other !== value);
    const now = others.length === values.length ? [...values, value] : others;
    return { ...selection, chosen: { ...selection.chosen, [facet]: now } };
}

/** One value of a facet alone, out of the groups. */
export function narrowed(selection, facet, value) {
    return { ...selection, group: "", chosen: { ...selection.chosen, [facet]: [value] } };
}

export function cleared(selection) {
    return { ...selection, search: "", chosen: EVERYTHING.chosen };
}

/** By this column; the other way round when it was by it already. */
export function sortedBy(selection, column) {
    const descending = selection.sort === column && !selection.descending;
    return { ...selection, sort: column, descending };
}

export function withColumn(selection, column, shown) {
    const columns = KEYS.filter(key => (key === column ? shown : selection.columns.includes(key)));
    return columns.length === 0 ? selection : { ...selection, columns };
}

/** What is chosen, one [facet, value] each. */
export function chips(selection) {
    return FACETS.flatMap(facet => selection.chosen[facet].map(value => [facet, value]));
}

export function isNarrowed(selection) {
    return selection.search !== "" || chips(selection).length > 0;
}

/** As options of an address. */
export function toOptions(selection) {
    const options = {};
    if (selection.search !== "") {
        options.search = selection.search;
    }
    for (const [facet, values] of Object.entries(selection.chosen)) {
        if (values.length > 0) {
            options[facet] = values;
        }
    }
    if (selection.sort !== EVERYTHING.sort || selection.descending) {
        options.sort = (selection.descending ? "-" : "") + selection.sort;
    }
    if (selection.columns.join() !== SHOWN.join()) {
        options.columns = selection.columns.join();
    }
    if (selection.group !== "") {
        options.group = selection.group;
    }
    return options;
}

/** From options of an address, which anybody may have written. */
export function fromOptions(options) {
    const chosen = Object.fromEntries(FACETS.map(facet => [facet, listOf(options[facet])]));
    const sort = String(options.sort ?? EVERYTHING.sort);
    const column = sort.replace(/^-/, "");
    const wanted = String(options.columns ?? "").split(",");
    const columns = KEYS.filter(key => wanted.includes(key));
    return {
        search: listOf(options.search).at(-1) ?? "",
        chosen,
        sort: KEYS.includes(column) ? column : EVERYTHING.sort,
        descending: KEYS.includes(column) && sort.startsWith("-"),
        columns: columns.length > 0 ? columns : SHOWN,
        group: FACETS.includes(options.group) ? options.group : "",
    };
}

function listOf(value) {
    return [value ?? []].flat().map(String);
}
