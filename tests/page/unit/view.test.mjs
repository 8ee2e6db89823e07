// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import { chosenOf, withAll, withOne } from "../../../cockpit/src/choice.js";
import { toCsv } from "../../../cockpit/src/export.js";
import { groupsOf, ranked, select } from "../../../cockpit/src/facets.js";
import { Lines } from "../../../cockpit/src/lines.js";
import { piecesOf, plainOf } from "../../../cockpit/src/names.js";
import { ordered } from "../../../cockpit/src/order.js";
import { rowAfter, topToShow, visibleRows } from "../../../cockpit/src/rows.js";
import * as selection from "../../../cockpit/src/selection.js";
import { sample } from "./samples.mjs";

const { EVERYTHING } = selection;
const RECORDS = [
    sample({ path: "photo/a", user: "alice", host: "h1" }),
    sample({ path: "photo/b", user: "bob", host: "h1" }),
    sample({ path: "music/c", user: "bob", host: "h2", pid: 7 }),
];
const paths = records => records.map(record => record.path);
const choose = (...pairs) => pairs.reduce((all, [facet, value]) => selection.toggled(all, facet, value), EVERYTHING);

test("lines are put together whatever the pieces are", () => {
    const bytes = new TextEncoder().encode("eins\nzwölf\n…\nrest");
    for (let size = 1; size <= bytes.length; ++size) {
        const lines = new Lines();
        const found = [];
        for (let start = 0; start < bytes.length; start += size) {
            found.push(...lines.add(bytes.subarray(start, start + size)));
        }
        assert.deepEqual(found, ["eins", "zwölf", "…"], `in pieces of ${size}`);
    }
});

test("search takes records that have every word anywhere, in any case", () => {
    const search = text => paths(select(RECORDS, { ...EVERYTHING, search: text }).shown);
    assert.deepEqual(search("BOB"), ["photo/b", "music/c"]);
    assert.deepEqual(search("bob  h1"), ["photo/b"]);
    assert.deepEqual(search("/volume1/photo"), ["photo/a", "photo/b"]);
    assert.deepEqual(search("bobh1"), []);
    assert.deepEqual(["p", "ph", "ph m", "m", "mu", "", "b"].map(text => search(text).length), [2, 2, 2, 3, 1, 3, 3]);
});

test("values of one facet add up, facets narrow one another", () => {
    assert.deepEqual(paths(select(RECORDS, choose(["user", "alice"], ["user", "bob"])).shown), paths(RECORDS));
    assert.deepEqual(paths(select(RECORDS, choose(["user", "bob"], ["share", "photo"])).shown), ["photo/b"]);
});

test("a count says what one more choice would give", () => {
    const neither = sample({ path: "music/d", user: "alice" });
    const { counts } = select([...RECORDS, neither], choose(["user", "bob"], ["share", "photo"]));
    assert.deepEqual(ranked(counts.user), [["alice", 1], ["bob", 1]]);
    assert.deepEqual(ranked(counts.share), [["music", 1], ["photo", 1]]);
    assert.deepEqual(ranked(counts.host), [["h1", 1]]);
});

test("a group has its files and their size, each file's once", () => {
    const gone = sample({ path: "photo/gone" });
    gone.mark = "closed";
    const twice = sample({ path: "photo/a", user: "dave", pid: 99 });
    assert.deepEqual(groupsOf([...RECORDS, gone, twice, sample({ path: "photo/n", size: null })], "share"), [
        { value: "photo", files: 4, size: 20 }, { value: "music", files: 1, size: 10 }]);
});

test("what is chosen has a count when nothing has it any more; what is closed has none", () => {
    const gone = sample({ path: "photo/gone", user: "carol" });
    gone.mark = "closed";
    const { shown, counts } = select([...RECORDS, gone], choose(["user", "carol"]));
    assert.deepEqual(paths(shown), ["photo/gone"]);
    assert.equal(counts.user.get("carol"), 0);
});

test("the order is that of language for few values, of numbers for numbers", () => {
    const named = ["zoo", "Äpfel", "apfel", "file-10", "file-9"].map(user => sample({ user, path: `s/${user}` }));
    assert.deepEqual(ordered(named, "user", false, "de").map(record => record.user),
                     ["apfel", "Äpfel", "file-9", "file-10", "zoo"]);
    assert.equal(ordered(named, "user", true, "pt_BR")[0].user, "zoo");
    const numbered = [10, 9, 100].map(pid => sample({ pid }));
    assert.deepEqual(ordered(numbered, "pid", true, "en").map(record => record.pid), [100, 10, 9]);
    const sized = [5, null, 0].map(size => sample({ size }));
    assert.deepEqual(ordered(sized, "size", false, "en").map(record => record.size), [null, 0, 5]);
    const many = Array.from({ length: 3000 }, (_, index) => sample({ path: `s/${2999 - index}` }));
    assert.equal(ordered(many, "path", false, "pt_BR")[0].path, "s/0");
});

test("only rows that can be seen are made", () => {
    const frame = { height: 400, rowHeight: 40 };
    assert.deepEqual(visibleRows({ ...frame, top: 0, count: 100000 }), { first: 0, end: 20 });
    assert.deepEqual(visibleRows({ ...frame, top: 40000, count: 100000 }), { first: 990, end: 1020 });
    assert.deepEqual(visibleRows({ ...frame, top: 40000, count: 5 }), { first: 4, end: 5 });
    assert.deepEqual(visibleRows({ ...frame, top: 0, count: 0 }), { first: 0, end: 0 });
});

test("keys lead from row to row, which is scrolled into view", () => {
    const rows = { count: 10, page: 4 };
    assert.deepEqual(["ArrowDown", "ArrowUp", "PageDown", "PageUp", "Home", "End", "a"].map(
        key => rowAfter(key, 5, rows)), [6, 4, 9, 1, 0, 9, null]);
    assert.deepEqual([0, 5, 30].map(row => topToShow(row, { top: 100, height: 400, rowHeight: 40 })), [0, 100, 840]);
});

test("an address brings back the selection", () => {
    let wanted = choose(["user", "bob"], ["user", "a,b"], ["share", "-"]);
    wanted = selection.withColumn(selection.sortedBy(selection.sortedBy(wanted, "pid"), "pid"), "pid", true);
    wanted = { ...wanted, search: "x y", group: "host" };
    assert.deepEqual(selection.fromOptions(selection.toOptions(wanted)), wanted);
    assert.deepEqual(selection.toOptions(EVERYTHING), {});
    assert.deepEqual(selection.fromOptions({}), { ...EVERYTHING });
});

test("an address that somebody has written can't do harm", () => {
    const strange = { sort: "-__proto__", columns: "nonsense,x", group: "constructor", user: "one", search: ["a", "b"] };
    const taken = selection.fromOptions(strange);
    assert.deepEqual(taken, { ...EVERYTHING, search: "b", chosen: { ...EVERYTHING.chosen, user: ["one"] } });
});

test("the last column stays", () => {
    const one = { ...EVERYTHING, columns: ["path"] };
    assert.equal(selection.withColumn(one, "path", false), one);
});

test("what can't be seen in a name is written out", () => {
    const cases = [
        ["plain ü 日本", undefined, "plain ü 日本"],
        ["a\nb\t\u0007", undefined, "a\\nb\\t\\x07"],
        ["x\u202etxt\u200b", undefined, "x\\u{202E}txt\\u{200B}"],
        ["<b>&\"", undefined, "<b>&\""],
        ["\ufffd", btoa("a\xff\xc3\xa9\xe2\x82"), "a\\xFFé\\xE2\\x82"],
        ["\ufffd", btoa("\xed\xa0\x80"), "\\xED\\xA0\\x80"],
    ];
    for (const [text, bytes, shown] of cases) {
        assert.equal(plainOf(text, bytes), shown);
    }
    assert.deepEqual(piecesOf("a\u202eb"), [{ text: "a", escape: false }, { text: "\\u{202E}", escape: true },
        { text: "b", escape: false }]);
});

test("CSV quotes what would end a cell or a row", () => {
    const record = sample({ path: 'a,"b"\nc', user: "bob" });
    assert.equal(toCsv([record], ["user", "path"]), 'user,path\nbob,"a,""b""\nc"\n');
    assert.equal(toCsv([sample({ size: null })], ["pid", "size"]), "pid,size\n12,\n");
});

test("what is chosen is what can be seen and is open", () => {
    const [first, second, third] = RECORDS;
    const gone = sample({ path: "photo/gone" });
    gone.mark = "closed";
    const all = withAll([...RECORDS, gone]);
    assert.deepEqual(paths(chosenOf([...RECORDS, gone], all)), paths(RECORDS));
    assert.deepEqual(paths(chosenOf([first, gone], withOne(all, gone.id, true))), [first.path]);
    assert.deepEqual(paths(chosenOf(RECORDS, withOne(all, second.id, false))), [first.path, third.path]);
    assert.equal(all.size, 3);
});

test("the order is the same whatever was ordered before", () => {
    const record = path => sample({ path: `s/${path}` });
    const [a, b, c, d, e] = ["a", "b", "c", "d", "e"].map(record);
    const names = (records, ...how) => paths(ordered(records, ...how)).map(path => path.slice(2)).join("");
    assert.equal(names([d, b, a], "path", false, "en"), "abd");
    assert.equal(names([e, d, c, a], "path", false, "en"), "acde");
    assert.equal(names([e, d, c, a], "path", true, "en"), "edca");
    assert.equal(names([b, c], "path", true, "en"), "cb");
    assert.equal(names([], "path", true, "en"), "");
});
