// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import { chosenOf, withAll, withOne } from "../../../cockpit/src/choice.js";
import { toCsv } from "../../../cockpit/src/export.js";
import { groupsOf, ranked } from "../../../cockpit/src/facets.js";
import { Lines } from "../../../cockpit/src/lines.js";
import { piecesOf, plainOf } from "../../../cockpit/src/names.js";
import { rowAfter, topToShow, visibleRows } from "../../../cockpit/src/rows.js";
import { ABSENT, MARKED_FOR, Records } from "../../../cockpit/src/records.js";
import { View } from "../../../cockpit/src/view.js";
import * as selection from "../../../cockpit/src/selection.js";
import { closed, come, opened, sample, shownOf } from "./samples.mjs";

const { EVERYTHING } = selection;
const RECORDS = [
    sample({ path: "photo/a", user: "alice", host: "h1" }),
    sample({ path: "photo/b", user: "bob", host: "h1" }),
    sample({ path: "music/c", user: "bob", host: "h2", pid: 7 }),
];
const paths = records => records.map(record => record.path);
const ordered = (records, sort, descending, language) =>
    shownOf(records, { ...EVERYTHING, sort, descending }, language).shown;
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
    const search = text => paths(shownOf(RECORDS, { ...EVERYTHING, search: text }).shown);
    assert.deepEqual(search("BOB"), ["music/c", "photo/b"]);
    assert.deepEqual(search("bob  h1"), ["photo/b"]);
    assert.deepEqual(search("/volume1/photo"), ["photo/a", "photo/b"]);
    assert.deepEqual(search("bobh1"), []);
    const view = new View();
    view.take(come(...RECORDS));
    const typed = text => view.ask({ ...EVERYTHING, search: text }, "en").shown.length;
    assert.deepEqual(["p", "ph", "ph m", "m", "mu", "", "b"].map(typed), [2, 2, 2, 3, 1, 3, 3]);
});

test("values of one facet add up, facets narrow one another", () => {
    assert.deepEqual(paths(shownOf(RECORDS, choose(["user", "alice"], ["user", "bob"])).shown),
                     ["music/c", "photo/a", "photo/b"]);
    assert.deepEqual(paths(shownOf(RECORDS, choose(["user", "bob"], ["share", "photo"])).shown), ["photo/b"]);
});

test("a count says what one more choice would give", () => {
    const neither = sample({ path: "music/d", user: "alice" });
    const { counts } = shownOf([...RECORDS, neither], choose(["user", "bob"], ["share", "photo"]));
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
    const { shown, counts } = shownOf([...RECORDS, gone], choose(["user", "carol"]));
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
    const [a, b, c, d, e] = ["a", "b", "c", "d", "e"].map(path => sample({ path: `s/${path}` }));
    const view = new View();
    const names = descending =>
        paths(view.ask({ ...EVERYTHING, descending }, "en").shown).map(path => path.slice(2)).join("");
    assert.equal(names(false), "");
    view.take(come(d, b, a));
    assert.equal(names(false), "abd");
    view.take(come(e, c));
    assert.equal(names(false), "abcde");
    assert.equal(names(true), "edcba");
});

/** The same numbers each time, so that what fails can be looked at. */
function randomNumbers(seed) {
    let state = seed;
    return below => {
        state = (state * 1103515245 + 12345) % 2147483648;
        return Math.floor((state / 2147483648) * below);
    };
}

/** Some step of those that a host and who looks on take. */
function step(records, random, now) {
    const path = `s${random(3)}/${random(2) ? "file" : "other"}-${random(120)}`;
    const file = { path, pid: random(2), user: `u${random(5)}`, host: `h${random(3)}`, size: random(4) || null };
    const kind = random(40);
    if (kind === 0) {
        records.beginLook();
    } else if (kind === 1) {
        records.endLook(now);
    } else {
        records.apply(kind < 30 ? opened(file) : closed(file), now);
    }
}

const plain = ({ records, shown, count, counts }) => ({
    records: records.map(({ id }) => id), shown: shown.map(({ id }) => id), count,
    counts: Object.entries(counts).map(([facet, values]) => [facet, [...values].sort()]),
});

test("what has changed is put where it would be if all were looked at anew", () => {
    const selections = [
        EVERYTHING, { ...EVERYTHING, sort: "user" }, { ...EVERYTHING, sort: "size", descending: true },
        { ...EVERYTHING, search: "file 1" }, { ...choose(["user", "u1"], ["user", "gone"], ["share", "s1"]), search: "file" },
        choose(["host", "h1"], ["share", "s0"], ["share", "s2"]),
    ];
    for (const [seed, chosen] of selections.entries()) {
        const random = randomNumbers(seed);
        const [records, view, all] = [new Records(), new View(), new Set()];
        records.beginLook();
        for (let turn = 0; turn < 400; ++turn) {
            for (let left = random(turn < 10 ? 50 : 4); left > 0; --left) {
                step(records, random, turn * 1000);
            }
            records.expire(turn * 1000 - random(2) * MARKED_FOR);
            const changes = records.changes();
            changes.forEach(({ record, is }) => all[is === ABSENT ? "delete" : "add"](record));
            view.take(changes);
            step(records, random, turn * 1000); // It is not taken yet, so it is not to be seen.
            const anew = new View();
            anew.take([...all].map(record => ({ record, was: ABSENT, is: record.seen })));
            assert.deepEqual(plain(view.ask(chosen, "en")), plain(anew.ask(chosen, "en")), `selection ${seed}, turn ${turn}`);
        }
    }
});

test("of many records a few that change have nobody look at the others", () => {
    const many = Array.from({ length: 3000 }, (_, index) => sample({ path: `s/${index}`, user: "alice" }));
    const view = new View();
    view.take(come(...many));
    const chosen = { ...choose(["user", "alice"], ["user", "bob"]), search: "s/" };
    view.ask(chosen, "en");
    let looked = 0;
    many.forEach(record => {
        const { combination, sought } = record;
        Object.defineProperty(record, "combination", { get: () => { ++looked; return combination; } });
        Object.defineProperty(record, "sought", { get: () => { ++looked; return sought; } });
    });
    view.take(come(sample({ path: "s/500a", user: "bob" })));
    const { shown, count, counts } = view.ask(chosen, "en");
    assert.deepEqual([shown.length, count, counts.user.get("bob"), looked], [3001, 3001, 1, 0]);
});
