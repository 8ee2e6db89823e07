// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import { MARKED_FOR, Records } from "../../../cockpit/src/records.js";
import { closed, opened } from "./samples.mjs";

const A = { path: "photo/a" };
const B = { path: "photo/b" };
const marks = records => Object.fromEntries(records.all().map(record => [record.path, record.mark]));

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
    assert.equal(records.all().length, 2);
    assert.equal(records.expire(1000 + MARKED_FOR), false);
    assert.deepEqual(marks(records), { "photo/b": "" });
});

test("what is opened again while it is marked as closed is there once", () => {
    const records = begun(A);
    records.apply(closed(A), 0);
    records.apply(opened(A), 10);
    assert.deepEqual(marks(records), { "photo/a": "new" });
    records.expire(MARKED_FOR);
    assert.equal(records.all().length, 1);
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

test("all are the same array until something changes", () => {
    const records = begun(A);
    const before = records.all();
    records.expire(0);
    assert.equal(records.all(), before);
    records.apply(opened(B), 0);
    assert.notEqual(records.all(), before);
});
