// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import { setFlagsFromString } from "node:v8";
import { ABSENT, MARKED_FOR, OPEN, Records } from "../../../cockpit/src/records.js";
import { allOf, closed, opened } from "./samples.mjs";

const A = { path: "photo/a" };
const B = { path: "photo/b" };
const marks = records => Object.fromEntries(allOf(records).map(record => [record.path, record.mark]));

function begun(...files) {
    const records = new Records();
    records.beginLook();
    files.forEach(file => records.apply(opened(file, true), 0));
    records.endLook(0);
    return records;
}

test("what the first look finds is not marked", () => {
    assert.deepEqual(marks(begun(A, B)), { "photo/a": "", "photo/b": "" });
});

test("what comes and goes is marked for a while", () => {
    const records = begun(A);
    records.apply(opened(B), 1000);
    records.apply(closed(A), 1000);
    assert.deepEqual(marks(records), { "photo/a": "closed", "photo/b": "new" });
    assert.equal(records.size, 1);
    assert.equal(records.expire(1000 + MARKED_FOR - 1), true);
    assert.equal(allOf(records).length, 2);
    assert.equal(records.expire(1000 + MARKED_FOR), false);
    assert.deepEqual(marks(records), { "photo/b": "" });
});

test("what is opened again while it is marked as closed is there once", () => {
    const records = begun(A);
    records.apply(closed(A), 0);
    assert.deepEqual(marks(records), { "photo/a": "closed" });
    records.apply(opened(A), 10);
    assert.deepEqual(marks(records), { "photo/a": "new" });
    records.apply(opened(A), 20);
    assert.equal(allOf(records).length, 1);
    records.expire(MARKED_FOR + 10);
    assert.equal(allOf(records).length, 1);
});

test("what a further look does not find has been closed, what it finds anew is new", () => {
    const records = begun(A);
    records.beginLook();
    records.apply(opened(B, true), 5);
    assert.equal(records.found, 1);
    records.endLook(5);
    assert.deepEqual(marks(records), { "photo/a": "closed", "photo/b": "new" });
});

test("a mark lasts its time, whatever the record was marked as before", () => {
    const records = begun(A);
    records.apply(opened(B), 0);
    records.apply(opened(B), 0);
    records.apply(closed(B), 5000);
    records.expire(MARKED_FOR);
    assert.deepEqual(marks(records), { "photo/a": "", "photo/b": "closed" });
});

test("what nobody has opened can be closed", () => {
    const records = begun(A);
    records.apply(closed(B), 0);
    assert.deepEqual(marks(records), { "photo/a": "" });
});

test("what has changed is told once, and nothing of what came and went between", () => {
    const records = begun(A);
    assert.deepEqual(records.changes().map(({ was, is }) => [was, is]), [[ABSENT, OPEN]]);
    assert.deepEqual(records.changes(), []);
    records.apply(opened(B), 0);
    records.apply(closed(B), 0);
    records.apply(closed(A), 0);
    records.expire(MARKED_FOR);
    assert.deepEqual(records.changes().map(({ record, was, is }) => [record.path, was, is]), [["photo/a", OPEN, ABSENT]]);
});

test("the version grows with marks that go", () => {
    const records = begun(A);
    records.apply(opened(B), 0);
    const { version } = records;
    records.expire(MARKED_FOR - 1);
    assert.equal(records.version, version);
    records.expire(MARKED_FOR);
    assert.notEqual(records.version, version);
});

test("what is closed again stays marked its time, however soon it was closed before", () => {
    const records = begun(A);
    records.apply(closed(A), 0);
    records.apply(opened(A), 10);
    records.apply(closed(A), 5000);
    records.expire(MARKED_FOR);
    assert.deepEqual(marks(records), { "photo/a": "closed" });
});

test("no record gets another form inside the engine, which would make all others anew within a key", () => {
    setFlagsFromString("--allow-natives-syntax");
    const haveSameForm = new Function("a", "b", "return %HaveSameMap(a, b)");
    const records = begun(A, { path: "photo/c", size: null, mode: null });
    const [a, c] = allOf(records);
    records.apply(opened(B), Date.now());
    records.apply(closed({ path: "photo/c" }), Date.now());
    const b = allOf(records)[2];
    records.expire(Date.now() + MARKED_FOR);
    assert.deepEqual([haveSameForm(a, b), haveSameForm(a, c)], [true, true]);
});
