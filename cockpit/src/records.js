// SPDX-License-Identifier: MIT

// How long what has come and gone is marked.
export const MARKED_FOR = 6000;

/**
 * The records that are open, and for a while those that were. Looks follow one another where the
 * watch was begun again: what a new one hasn't found when it ends has been closed meanwhile.
 */
export class Records {
    #open = new Map();
    #closed = new Map();
    #marked = new Set();
    #look = 0;
    #all = null;

    get size() {
        return this.#open.size;
    }

    /** How many the present look has found. */
    found = 0;

    /** All that is to be shown; the same array until something changes. */
    all() {
        this.#all ??= [...this.#open.values(), ...this.#closed.values()];
        return this.#all;
    }

    apply({ event, initial, record }, now) {
        if (event === "opened") {
            this.#add(record, initial, now);
        } else {
            this.#remove(this.#open.get(record.id), now);
        }
    }

    beginLook() {
        ++this.#look;
        this.found = 0;
    }

    endLook(now) {
        for (const record of this.#open.values()) {
            if (record.look !== this.#look) {
                this.#remove(record, now);
            }
        }
    }

    /** Forgets marks that are old; gives when to come again, or nothing. */
    expire(now) {
        for (const record of this.#marked) {
            if (now - record.markedAt >= MARKED_FOR) {
                this.#marked.delete(record);
                this.#closed.delete(record.id);
                record.mark = "";
                this.#all = null;
            }
        }
        return this.#marked.size > 0;
    }

    #add(record, initial, now) {
        const known = this.#open.get(record.id);
        record.look = this.#look;
        ++this.found;
        if (known) {
            record.mark = known.mark;
            record.markedAt = known.markedAt;
            this.#marked.delete(known);
        } else if (!initial || this.#look > 1) {
            record.mark = "new";
            record.markedAt = now;
        }
        if (record.mark) {
            this.#marked.add(record);
        }
        this.#closed.delete(record.id);
        this.#open.set(record.id, record);
        this.#all = null;
    }

    #remove(record, now) {
        if (!record) {
            return;
        }
        this.#open.delete(record.id);
        record.mark = "closed";
        record.markedAt = now;
        this.#marked.add(record);
        this.#closed.set(record.id, record);
        this.#all = null;
    }
}
