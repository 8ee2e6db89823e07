// SPDX-License-Identifier: MIT
import { changeOf, failureOf, lackOf, totalCommand, totalOf, watchCommand } from "./command.js";
import { Lines } from "./lines.js";
import { Records } from "./records.js";

// A look whose records never become as many as were counted has ended when nothing more comes.
const SILENCE = 1500;

/**
 * The records as they are now, from one process that watches. A second one counts the records and
 * tells whether something is missing, so that an empty table isn't taken for an answer.
 *
 * States: "off", "looking" (the first look isn't over), "live", "failed" (see failure).
 */
export class Live {
    records = new Records();
    state = "off";
    paused = false;
    failure = null;
    incomplete = "";
    machine = "";

    #spawn;
    #changed;
    #watch = null;
    #expected = null;
    #silence = null;
    #said = "";
    #held = new Map();
    #facts = [];

    /**
     * @param spawn   as cockpit.spawn
     * @param changed called when there is something new to show
     */
    constructor(spawn, changed) {
        this.#spawn = spawn;
        this.#changed = changed;
    }

    /** Changes that wait for the end of the pause. */
    get waiting() {
        return this.#held.size;
    }

    start() {
        if (this.#watch) {
            return;
        }
        this.state = "looking";
        this.failure = null;
        this.#expected = null;
        this.#said = "";
        this.records.beginLook();
        this.#startWatch();
        this.#count();
        this.#changed();
    }

    /** Ends the process. What is shown stays. */
    stop() {
        const watch = this.#watch;
        this.#watch = null;
        clearTimeout(this.#silence);
        watch?.close("cancelled");
        if (this.state !== "failed") {
            this.state = "off";
        }
    }

    /** What is to be known of each record beside what always is; others begin the watch anew. */
    want(facts) {
        const isOther = facts.join() !== this.#facts.join();
        this.#facts = facts;
        if (isOther && this.#watch) {
            this.stop();
            this.start();
        }
    }

    pause(paused) {
        this.paused = paused;
        if (!paused) {
            const now = Date.now();
            this.#held.forEach(change => this.records.apply(change, now));
            this.#held.clear();
        }
        this.#changed();
    }

    #startWatch() {
        const lines = new Lines();
        const watch = this.#spawn(watchCommand(this.#facts), { superuser: "try", err: "out", binary: true });
        this.#watch = watch;
        const ifMine = then => argument => {
            if (this.#watch === watch) {
                then(argument);
            }
        };
        watch.stream(ifMine(bytes => this.#take(lines.add(bytes))));
        watch.then(
            ifMine(() => this.#fail({ message: "" })),
            ifMine(error => this.#fail(error)));
    }

    #count() {
        const watch = this.#watch;
        const done = text => {
            if (this.#watch === watch) {
                ({ total: this.#expected, incomplete: this.incomplete, machine: this.machine } = totalOf(text));
                this.#endLookWhenComplete();
                this.#changed();
            }
        };
        // Nothing found is status 1, with a document all the same. Of other failures the watch tells.
        this.#spawn(totalCommand(), { superuser: "try", err: "message" })
            .then(done, (error, text) => error.exit_status === 1 && text ? done(text) : null);
    }

    #take(lines) {
        const now = Date.now();
        for (const change of lines.map(changeOf)) {
            if (change?.note !== undefined) {
                this.#note(change.note);
            } else if (change && this.paused && !change.initial) {
                this.#hold(change);
            } else if (change) {
                this.records.apply(change, now);
            }
        }
        this.#endLookWhenComplete();
        this.#changed();
    }

    #note(note) {
        this.#said += `${note}\n`;
        this.incomplete = lackOf(note) || this.incomplete;
    }

    /** What opens and closes during a pause needn't be remembered, however long that is. */
    #hold(change) {
        const { id } = change.record;
        if (change.event === "closed" && this.#held.get(id)?.event === "opened") {
            this.#held.delete(id);
        } else {
            this.#held.set(id, change);
        }
    }

    #endLookWhenComplete() {
        if (this.state !== "looking" || this.#expected === null) {
            return;
        }
        clearTimeout(this.#silence);
        if (this.records.found >= this.#expected) {
            this.#endLook();
        } else {
            this.#silence = setTimeout(() => this.#endLook(), SILENCE);
        }
    }

    #endLook() {
        this.records.endLook(Date.now());
        this.state = "live";
        this.#changed();
    }

    #fail(error) {
        this.#watch = null;
        clearTimeout(this.#silence);
        this.state = "failed";
        this.failure = failureOf(error, this.#said);
        this.#changed();
    }
}
