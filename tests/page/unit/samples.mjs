// SPDX-License-Identifier: MIT
import { recordOf } from "../../../cockpit/src/command.js";

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
