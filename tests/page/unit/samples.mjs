// SPDX-License-Identifier: MIT
import { recordOf } from "../../../cockpit/src/command.js";
import { ABSENT, CLOSED, OPEN } from "../../../cockpit/src/records.js";
import { View } from "../../../cockpit/src/view.js";

/** A file as the command tells it, with what a test wants of it. */
export function fileOf(more = {}) {
    const path = more.path ?? "photo/a.jpg";
    return {
        service: "SMB", pid: 12, user: "alice", host: "10.0.0.1", path, full_path: `/volume1/${path}`,
        share: path.split("/")[0], command: "smbd", owner: "root", unit: "smbd.service", mode: ["r"], size: 10,
        started: "2026-01-01T00:00:00Z", locks: [], hidden: false, folder: false, deleted: false, ...more,
    };
}

export const sample = more => recordOf(fileOf(more));

export const opened = (more, initial = false) => ({ event: "opened", initial, record: sample(more) });
export const closed = more => ({ event: "closed", initial: false, record: sample(more) });

/** Records that have come, as Records tells it. */
export function come(...records) {
    records.forEach(record => { record.seen = record.mark === "closed" ? CLOSED : OPEN; });
    return records.map(record => ({ record, was: ABSENT, is: record.seen }));
}

/** What a selection shows of records. */
export function shownOf(records, selection, language = "en") {
    const view = new View();
    view.take(come(...records));
    return view.ask(selection, language);
}

const followed = new WeakMap();

/** All that is to be shown, by what Records has told so far. */
export function allOf(records) {
    const all = followed.get(records) ?? new Set();
    followed.set(records, all);
    for (const { record, is } of records.changes()) {
        all[is === ABSENT ? "delete" : "add"](record);
    }
    return [...all];
}
