// SPDX-License-Identifier: MIT
import { Facets } from "./facets.js";
import { merged, orderOf } from "./order.js";
import { ABSENT, OPEN } from "./records.js";

// Where more than one record in so many has changed, all are looked at anew.
const FEW = 10;

/**
 * What is to be seen of the records: in which order, what is found, what is chosen, how many there are
 * of what. Records that have come or gone are put into their place and looked at alone, so that of a
 * hundred thousand the others cost nothing; another order, search or choice looks at all.
 */
export class View {
    #records = [];
    #asked = {};
    #order = null;
    #found = null;
    #facets = null;

    /** Takes what has changed, as Records tells it. */
    take(changes) {
        if (changes.length === 0) {
            return;
        }
        const coming = changes.filter(({ was }) => was === ABSENT).map(({ record }) => record);
        const isFew = changes.length * FEW < this.#records.length;
        if (isFew && this.#order && coming.every(this.#order.knows)) {
            this.#insert(changes);
        } else {
            const gone = new Set(changes.filter(({ is }) => is === ABSENT).map(({ record }) => record));
            this.#records = this.#records.filter(record => !gone.has(record)).concat(coming);
            this.#order = null;
        }
    }

    /** Those that a selection shows, beside all in its order, with its counts. */
    ask(selection, language) {
        const asked = { ...selection, language };
        const isOther = (...keys) => keys.some(key => asked[key] !== this.#asked[key]);
        if (!this.#order || isOther("sort", "descending", "language")) {
            this.#order = orderOf(this.#records, selection, language);
            this.#records = [...this.#records].sort(this.#order.compare);
            this.#found = null;
        }
        if (!this.#found || isOther("search")) {
            this.#found = this.#search(selection.search);
            this.#facets = null;
        }
        if (!this.#facets || isOther("chosen")) {
            this.#facets = new Facets(this.#found, selection.chosen);
        }
        this.#asked = asked;
        const { shown, count, counts } = this.#facets;
        return { records: this.#records, shown, count, counts };
    }

    #insert(changes) {
        const { compare } = this.#order;
        const isFound = matcher(this.#asked.search);
        const found = changes.filter(({ record }) => isFound(record));
        const isSame = this.#found === this.#records;
        this.#records = merged(this.#records, changes, compare);
        this.#found = isSame ? this.#records : merged(this.#found, found, compare);
        this.#facets.change(found, this.#found, compare);
    }

    /** Who types on searches among what the shorter word has found. */
    #search(search) {
        const isLonger = this.#found && search.startsWith(this.#asked.search);
        const among = isLonger ? this.#found : this.#records;
        return search.trim() === "" ? this.#records : among.filter(matcher(search));
    }
}

/** Whether a record has every word anywhere, in any case. */
function matcher(search) {
    const words = search.toLowerCase().split(/\s+/).filter(word => word !== "");
    const [first, ...others] = words;
    return record => first === undefined || record.sought.includes(first)
        && others.every(word => record.sought.includes(word));
}
