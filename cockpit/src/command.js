// SPDX-License-Identifier: MIT
import { combinationOf } from "./combination.js";

/** All that the page knows of the command: how it is asked, what it answers, how it fails. */

export const PROGRAM = "vorn-openfiles";

// A volume that doesn't answer is given up after so many seconds.
const PATIENCE = ["--timeout", "10"];

const MEMBERS = ["service", "user", "host", "share", "path", "full_path", "pid", "hidden", "folder", "deleted"];
// What is read for each record by itself, which takes seconds for a hundred thousand: asked where it
// is shown.
const FACTS = ["command", "owner", "unit", "mode", "size", "started", "locks"];

/** Which of the facts a table with these columns needs, in groups or not. */
export const factsFor = (columns, grouped) =>
    FACTS.filter(fact => columns.includes(fact) || (grouped && fact === "size"));

export const membersWith = facts => [...MEMBERS, ...facts];

export const watchCommand = facts =>
    [PROGRAM, "--watch", "2", ...PATIENCE, "--format", "jsonl", "--schema", "2",
        "--columns", membersWith(facts).join()];
/** All about the records of a process, of which one is wanted. */
export const detailsCommand = record =>
    [PROGRAM, ...PATIENCE, "--json", "--schema", "2", "--columns", membersWith(FACTS).join(),
        "--where", `pid=${record.pid}`];
export const totalCommand = () => [PROGRAM, "--count-by", "service", ...PATIENCE, "--json", "--schema", "2"];
export const checkCommand = () => [PROGRAM, "check", ...PATIENCE, "--json"];
export const busyCommand = path => [PROGRAM, "busy", "--json", ...PATIENCE, "--", path];
/**
 * Ends the connections that hold these records, or tells what that would take. A process of that
 * number that serves another host by now is none of them.
 */
export const disconnectCommand = (records, { dry }) =>
    [PROGRAM, "disconnect", dry ? "--dry-run" : "--yes", "--json", ...PATIENCE,
        ...["pid", "host"].flatMap(column => [...new Set(records.map(record => record[column]))]
            .flatMap(value => ["--where", `${column}=${value}`]))];

/**
 * What a record tells, in the order of the table. Those that are "facets" are counted and chosen;
 * "number" is one or nothing, "time" a text that is ordered as it stands.
 */
export const COLUMNS = [
    { key: "service", facet: true, shown: true },
    { key: "user", facet: true, shown: true },
    { key: "host", facet: true, shown: true },
    { key: "share", facet: true, shown: true },
    { key: "path", shown: true },
    { key: "command" },
    { key: "pid", kind: "number" },
    { key: "owner" },
    { key: "mode" },
    { key: "size", kind: "size" },
    { key: "started", kind: "time" },
    { key: "full_path" },
];

export const FACETS = COLUMNS.filter(column => column.facet).map(column => column.key);

/** What stands for a text that there is none of, or that isn't known. */
export const NONE = "-";

// No text has it, so that nothing is found across two of them.
const BETWEEN = "\u0000";

/** What the command itself tells one record from another by. */
const idOf = file => `${file.pid}:${file.full_path_b64 ?? file.full_path}`;

/** A record of the page from one of the command. Numbers may be null, facts may not have been asked. */
export function recordOf(file) {
    const user = file.user ?? NONE;
    const host = file.host ?? NONE;
    const record = {
        id: idOf(file),
        service: file.service,
        user,
        host,
        share: file.share,
        path: file.path,
        command: file.command ?? NONE,
        pid: file.pid,
        owner: file.owner ?? NONE,
        unit: file.unit ?? NONE,
        mode: file.mode?.join(" ") ?? NONE,
        size: file.size ?? null,
        started: file.started ?? NONE,
        full_path: file.full_path,
        locks: file.locks ?? [],
        deleted: file.deleted,
        folder: file.folder,
        hidden: file.hidden,
        file,
        combination: null,
        mark: "",
        look: 0,
        seen: 0,
        sought: [file.service, user, host, ...pathsOf(file), file.pid, file.command, file.owner]
            .join(BETWEEN).toLowerCase(),
    };
    record.combination = combinationOf(FACETS.map(facet => record[facet]));
    return record;
}

/** Those that don't say the same: a path mostly is the end of the full one. */
const pathsOf = ({ path, full_path: full }) => (full.endsWith(path) ? [full] : [path, full]);

/** The bytes of a record's column, where its text can't show them all. */
export function bytesOf(record, column) {
    return record.file[`${column}_b64`];
}

/**
 * A line of the watch: {event: "opened" or "closed", initial, record}, or {note} for what it says on
 * standard error, which comes by the same way. Nothing for a line that is neither.
 */
export function changeOf(line) {
    if (!line.startsWith("{")) {
        return line === "" ? null : { note: withoutName(line) };
    }
    try {
        const { event, initial, file } = JSON.parse(line);
        const known = (event === "opened" || event === "closed") && typeof file?.path === "string";
        return known ? { event, initial, record: recordOf(file) } : null;
    } catch {
        return null; // The end of a stream that was cut off.
    }
}

/** How many records there are, why these may not be all, and the machine's name. */
export function totalOf(text) {
    const document = JSON.parse(text);
    return {
        total: document.counts.reduce((sum, count) => sum + count.files, 0),
        incomplete: document.complete ? "" : document.reason,
        machine: document.machine,
    };
}

/** The record that details were asked for, or nothing when it is there no more. */
export function detailsOf(text, record) {
    return JSON.parse(text).files.map(recordOf).find(({ id }) => id === record.id) ?? null;
}

/** Records as a document of the command. */
export function documentOf(records, { machine, incomplete, at }) {
    const document = {
        schema: 2, machine, at: `${at.toISOString().slice(0, 19)}Z`, by: "share", complete: incomplete === "",
    };
    if (incomplete !== "") {
        document.reason = incomplete;
    }
    const head = JSON.stringify(document).slice(0, -1);
    return `${head},"files":[\n${records.map(record => JSON.stringify(record.file)).join(",\n")}\n]}\n`;
}

/** A file's name in its folder, as {text, bytes}. */
export function filenameOf(record) {
    const bytes = bytesOf(record, "full_path");
    const text = name => name.slice(name.lastIndexOf("/") + 1);
    return { text: text(record.full_path), bytes: bytes === undefined ? undefined : btoa(text(atob(bytes))) };
}

/** What is missing on the host, with the command's advice. */
export function missingOf(text) {
    return JSON.parse(text).checks.filter(check => check.state === "missing");
}

/** The answer to "is it free?": its state and the holders, a row each. */
export function busyOf(text) {
    const { state, reasons, notes, holders } = JSON.parse(text);
    return { state, reasons, notes, holders };
}

/**
 * The end of connections, planned or over: its state, why something may be missing, the connections
 * with what they hold of the records and beside these, what is left alone, and files that others
 * have taken up meanwhile.
 */
export function disconnectionOf(text, records) {
    const { state, reason = "", connections, left_alone: leftAlone, held_since: heldSince } = JSON.parse(text);
    const chosen = new Set(records.map(({ id }) => id));
    const isChosen = file => chosen.has(idOf(file));
    return {
        state,
        reason,
        connections: connections.map(({ selected, others, ...connection }) => {
            const files = [...selected, ...others];
            return { ...connection, chosen: files.filter(isChosen), others: files.filter(file => !isChosen(file)) };
        }),
        leftAlone,
        heldSince,
    };
}

/** The folder that a record's share is, or nothing where its path doesn't tell. */
export function folderOfShare(record) {
    const within = record.path.slice(record.share.length);
    const folder = record.full_path.endsWith(within)
        ? record.full_path.slice(0, record.full_path.length - within.length)
        : "";
    return bytesOf(record, "full_path") === undefined ? folder : "";
}

/** The volume that a record lies on. */
export function volumeOf(record) {
    return /^\/[^/]+/.exec(record.full_path)?.[0] ?? "";
}

/**
 * Why the command gave no answer: what cockpit.spawn was rejected with, and what the command has
 * said. Gives {kind, detail}.
 */
export function failureOf(error, said) {
    const detail = withoutName((said || error.message || error.problem || "").trim());
    if (error.problem === "not-found") {
        return { kind: "missing", detail: "" };
    }
    if (error.problem === "access-denied") {
        return { kind: "denied", detail };
    }
    if (/there is no (option|command) /.test(detail)) {
        return { kind: "old", detail };
    }
    if (detail.startsWith("no data volume is mounted")) {
        return { kind: "no-volume", detail };
    }
    return { kind: "failed", detail };
}

/** Whether a note says that the list lacks something, and what. */
export function lackOf(note) {
    return note.startsWith("incomplete: ") ? note.slice("incomplete: ".length) : "";
}

function withoutName(text) {
    return text.replace(/^vorn-openfiles: /gm, "");
}
