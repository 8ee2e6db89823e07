// SPDX-License-Identifier: MIT

// How long what has come and gone is marked.
export const MARKED_FOR = 6000;

/** How a record is there: not at all, open, or closed and still shown. */
export const ABSENT = 0;
export const OPEN = 1;
export const CLOSED = 2;

/**
 * The records that are open, and for a while those that were. Looks follow one another where the
 * watch was begun again: what a new one hasn't found when it ends has been closed meanwhile.
 */
export class Records {
    #open = new Map();
    #closed = new Map();
    #marked = new Map(); // Since when, and not in the record: its form would change for all of them.
    #touched = new Set();
    #look = 0;

    get size() {
        return this.#open.size;
    }

    /** How many the present look has found. */
    found = 0;

    /** Grows with everything that is to be shown, marks among it. */
    version = 0;

    /** What is another than when this was asked last: {record, was, is} each. */
    changes() {
        const changes = [];
        for (const record of this.#touched) {
            const was = record.seen;
            record.seen = this.#stateOf(record);
            if (record.seen !== was) {
                changes.push({ record, was, is: record.seen });
            }
        }
        this.#touched.clear();
        return changes;
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
        for (const [record, since] of this.#marked) {
            if (now - since >= MARKED_FOR) {
                this.#marked.delete(record);
                record.mark = "";
                this.#closed.delete(record.id);
                this.#touch(record);
            }
        }
        return this.#marked.size > 0;
    }

    #add(record, initial, now) {
        const known = this.#open.get(record.id);
        record.look = this.#look;
        ++this.found;
        if (known) {
            this.#mark(record, known.mark, this.#marked.get(known));
        } else if (!initial || this.#look > 1) {
            this.#mark(record, "new", now);
        }
        const before = known ?? this.#closed.get(record.id);
        if (before) {
            this.#marked.delete(before);
            this.#closed.delete(before.id);
            this.#touch(before);
        }
        this.#open.set(record.id, record);
        this.#touch(record);
    }

    #remove(record, now) {
        if (!record) {
            return;
        }
        this.#open.delete(record.id);
        this.#mark(record, "closed", now);
        this.#closed.set(record.id, record);
        this.#touch(record);
    }

    #mark(record, mark, since) {
        record.mark = mark;
        if (mark) {
            this.#marked.set(record, since);
        }
    }

    #touch(record) {
        this.#touched.add(record);
        ++this.version;
    }

    #stateOf(record) {
        if (this.#open.get(record.id) === record) {
            return OPEN;
        }
        return this.#closed.get(record.id) === record ? CLOSED : ABSENT;
    }
}
