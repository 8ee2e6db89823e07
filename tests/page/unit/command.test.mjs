// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import {
    busyOf, changeOf, detailsOf, disconnectCommand, disconnectionOf, documentOf, factsFor, failureOf, filenameOf,
    folderOfShare, lackOf, missingOf, totalOf, volumeOf,
} from "../../../cockpit/src/command.js";
import { fileOf, sample } from "./samples.mjs";

const line = (event, file, initial = false) => JSON.stringify({ event, at: "2026-01-01T00:00:00Z", initial, file });

test("what a record doesn't know has a stand-in", () => {
    const record = sample({ user: null, host: null, command: null, owner: null, unit: null, mode: null, size: null,
                            started: null, locks: null });
    for (const key of ["user", "host", "command", "owner", "unit", "mode", "started"]) {
        assert.equal(record[key], "-", key);
    }
    assert.deepEqual([record.size, record.locks], [null, []]);
    assert.equal(sample({ mode: ["r", "w"] }).mode, "r w");
});

test("a file's name is the end of its path, in bytes too", () => {
    assert.deepEqual(filenameOf(sample({ path: "photo/x/a" })), { text: "a", bytes: undefined });
    assert.deepEqual(filenameOf(sample({ full_path: "/v/x\ufffd", full_path_b64: btoa("/v/x\xff") })),
                     { text: "x\ufffd", bytes: btoa("x\xff") });
});

test("facts are asked where they are shown", () => {
    assert.deepEqual(factsFor(["path", "pid"], false), []);
    assert.deepEqual(factsFor(["path", "owner"], true), ["owner", "size"]);
});

test("details are those of the record, not of its process's others", () => {
    const text = JSON.stringify({ files: [fileOf({ path: "photo/b" }), fileOf({ size: 77 })] });
    assert.equal(detailsOf(text, sample()).size, 77);
    assert.equal(detailsOf(text, sample({ pid: 9 })), null);
});

test("records become a document of the command", () => {
    const at = new Date("2026-01-02T03:04:05.678Z");
    const document = JSON.parse(documentOf([sample()], { machine: "m", incomplete: "why", at }));
    assert.deepEqual(document, { schema: 2, machine: "m", at: "2026-01-02T03:04:05Z", by: "share", complete: false,
                                 reason: "why", files: [fileOf()] });
    assert.equal(JSON.parse(documentOf([], { machine: "m", incomplete: "", at })).complete, true);
});

test("records are told apart by process and by the path's bytes", () => {
    assert.notEqual(sample({ pid: 1 }).id, sample({ pid: 2 }).id);
    assert.notEqual(sample({ full_path: "\ufffd", full_path_b64: "/w==" }).id,
                    sample({ full_path: "\ufffd", full_path_b64: "/g==" }).id);
});

test("an event is a change, a complaint a note, all else nothing", () => {
    const change = changeOf(line("opened", fileOf(), true));
    assert.deepEqual([change.event, change.initial, change.record.path], ["opened", true, "photo/a.jpg"]);
    assert.equal(changeOf(line("closed", fileOf())).event, "closed");
    assert.deepEqual(changeOf("vorn-openfiles: incomplete: x"), { note: "incomplete: x" });
    for (const other of ["", "{", line("moved", fileOf()), line("opened", {}), '{"event":"opened"}', "{}"]) {
        assert.equal(changeOf(other), null, other);
    }
});

test("what an answer lacks is told by the document and by a note", () => {
    const counts = [{ service: "SMB", files: 2 }, { service: "SSH", files: 3 }];
    assert.deepEqual(totalOf(JSON.stringify({ complete: true, machine: "m", counts })),
                     { total: 5, incomplete: "", machine: "m" });
    assert.deepEqual(totalOf(JSON.stringify({ complete: false, reason: "why", machine: "m", counts: [] })),
                     { total: 0, incomplete: "why", machine: "m" });
    assert.equal(lackOf("incomplete: why"), "why");
    assert.equal(lackOf("no share is exported"), "");
});

test("of the host's check what is missing is kept", () => {
    const checks = [{ state: "ok" }, { state: "missing", text: "t", advice: "a" }, { state: "warning" }];
    assert.deepEqual(missingOf(JSON.stringify({ checks })).map(check => check.text), ["t"]);
});

test("the answer to busy has state, reasons and holders", () => {
    const document = { schema: 1, state: "busy", complete: true, reasons: [], notes: ["n"], paths: [], holders: [{}] };
    assert.deepEqual(busyOf(JSON.stringify(document)),
                     { state: "busy", reasons: [], notes: ["n"], holders: [{}] });
});

test("a failure has a kind", () => {
    const cases = [
        [{ problem: "not-found" }, "", "missing", ""],
        [{ problem: "access-denied" }, "", "denied", "access-denied"],
        [{ exit_status: 2 }, "vorn-openfiles: there is no option '--x'", "old", "there is no option '--x'"],
        [{ exit_status: 2, message: "vorn-openfiles: no data volume is mounted: y" }, "", "no-volume",
            "no data volume is mounted: y"],
        [{ exit_signal: "KILL", message: "killed" }, "", "failed", "killed"],
    ];
    for (const [error, said, kind, detail] of cases) {
        assert.deepEqual(failureOf(error, said), { kind, detail });
    }
});

test("a share's folder and volume are told from the two paths", () => {
    const record = sample({ share: "pictures", path: "pictures/x/a", full_path: "/volume2/photo/x/a" });
    assert.equal(folderOfShare(record), "/volume2/photo");
    assert.equal(volumeOf(record), "/volume2");
    assert.equal(folderOfShare(sample({ path: "pictures", full_path: "/volume2/photo" })), "/volume2/photo");
    assert.equal(folderOfShare(sample({ path: "a/b", full_path: "/volume2/else" })), "");
    assert.equal(folderOfShare(sample({ full_path_b64: "/w==" })), "");
});

test("connections are ended by process and host, each named once", () => {
    const records = [sample(), sample({ path: "photo/b" }), sample({ pid: 13, host: null })];
    assert.deepEqual(disconnectCommand(records, { dry: true }), [
        "vorn-openfiles", "disconnect", "--dry-run", "--json", "--timeout", "10", "--where", "pid=12", "--where",
        "pid=13", "--where", "host=10.0.0.1", "--where", "host=-"]);
    assert.equal(disconnectCommand(records, { dry: false })[2], "--yes");
});

test("what goes with chosen files is told from them, by the path's bytes", () => {
    const file = (pid, path, more) => ({ pid: String(pid), path, full_path: `/volume1/${path}`, deleted: false, ...more });
    const raw = { full_path: "/volume1/\ufffd", full_path_b64: btoa("/volume1/\xff") };
    const otherRaw = { ...raw, full_path_b64: btoa("/volume1/\xfe") };
    const document = {
        schema: 1, state: "planned", complete: false, reason: "why", left_alone: [{ pid: "9" }], held_since: [],
        connections: [{ service: "SMB", state: "planned", selected: [file(12, "a"), file(12, "b"), file(12, "r", raw)],
                        others: [file(13, "a"), file(12, "r", otherRaw)] }],
    };
    const chosen = [sample({ path: "a" }), sample({ path: "r", ...raw })];
    const { connections: [connection], ...told } = disconnectionOf(JSON.stringify(document), chosen);
    assert.deepEqual(told, { state: "planned", reason: "why", leftAlone: [{ pid: "9" }], heldSince: [] });
    assert.deepEqual(connection.chosen, [file(12, "a"), file(12, "r", raw)]);
    assert.deepEqual(connection.others, [file(12, "b"), file(13, "a"), file(12, "r", otherRaw)]);
    assert.equal(connection.service, "SMB");
});
