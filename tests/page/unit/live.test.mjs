// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { beforeEach, test } from "node:test";
import { Live } from "../../../cockpit/src/live.js";
import { allOf, fileOf } from "./samples.mjs";

/** A process as cockpit.spawn gives it, which says what a test has it say. */
class Process {
    constructor(command) {
        this.command = command;
        this.closed = null;
        this.promise = new Promise((resolve, reject) => Object.assign(this, { resolve, reject }));
    }

    stream(take) {
        this.take = take;
        return this;
    }

    then(...handlers) {
        return this.promise.then(...handlers);
    }

    close(problem) {
        this.closed = problem;
    }

    say(...lines) {
        this.take(new TextEncoder().encode(lines.map(line => `${line}\n`).join("")));
    }
}

const event = (name, path, initial = false) => JSON.stringify({ event: name, initial, file: fileOf({ path }) });
const settled = () => new Promise(resolve => setImmediate(resolve));
const total = (files, reason) => JSON.stringify({
    complete: reason === undefined, reason, counts: files ? [{ service: "SMB", files }] : [],
});

let processes;
let live;
const [watches, counts] = ["--watch", "--count-by"].map(option =>
    () => processes.filter(process => process.command.includes(option)));
const paths = () => allOf(live.records).map(record => record.path + record.mark);

beforeEach(() => {
    processes = [];
    live = new Live(command => {
        processes.push(new Process(command));
        return processes.at(-1);
    }, () => {});
    live.start();
});

test("it is live when the first look has found what was counted", async () => {
    watches()[0].say(event("opened", "s/a", true));
    assert.equal(live.state, "looking");
    counts()[0].resolve(total(2));
    await settled();
    assert.equal(live.state, "looking");
    watches()[0].say(event("opened", "s/b", true));
    assert.equal(live.state, "live");
});

test("nothing open is an answer, though the command ends with 1 for it", async () => {
    const error = Object.assign(new Error(), { exit_status: 1 });
    live = new Live(command => {
        const process = new Process(command);
        if (command.includes("--count-by")) {
            process.then = (_done, failed) => failed(error, total(0));
        }
        processes.push(process);
        return process;
    }, () => {});
    live.start();
    await settled();
    assert.equal(live.state, "live");
});

test("one process watches however often it is started, and ends when it is stopped", () => {
    live.start();
    assert.equal(watches().length, 1);
    live.stop();
    assert.equal(watches()[0].closed, "cancelled");
    assert.equal(live.state, "off");
    live.start();
    assert.equal(watches().length, 2);
});

test("other facts begin the watch anew, the same ones don't", () => {
    live.want([]);
    assert.equal(watches().length, 1);
    live.want(["size"]);
    assert.equal(watches()[0].closed, "cancelled");
    assert.equal(watches().length, 2);
    assert.match(watches()[1].command.at(-1), /,size$/);
    live.stop();
    live.want([]);
    assert.equal(watches().length, 2);
});

test("what a stopped process says is nobody's business", async () => {
    const [watch] = watches();
    live.stop();
    watch.say(event("opened", "s/a"));
    watch.reject({ problem: "cancelled" });
    await settled();
    assert.deepEqual([paths(), live.state, live.failure], [[], "off", null]);
});

test("what is missing is told by the count and by the watch", async () => {
    counts()[0].resolve(total(0, "no rights"));
    await settled();
    assert.equal(live.incomplete, "no rights");
    watches()[0].say("vorn-openfiles: incomplete: a process can't be examined");
    assert.equal(live.incomplete, "a process can't be examined");
});

test("an end is told with what the command has said", async () => {
    watches()[0].say("vorn-openfiles: no data volume is mounted: volumes are ...");
    watches()[0].reject({ exit_status: 2, message: "ended" });
    await settled();
    assert.equal(live.state, "failed");
    assert.equal(live.failure.kind, "no-volume");
    live.start();
    assert.deepEqual([live.state, live.failure], ["looking", null]);
});

test("during a pause nothing moves; what came and went meanwhile is forgotten", () => {
    watches()[0].say(event("opened", "s/a", true));
    live.pause(true);
    watches()[0].say(event("opened", "s/b"), event("opened", "s/c"), event("closed", "s/c"), event("closed", "s/a"));
    assert.deepEqual([paths(), live.waiting], [["s/a"], 2]);
    live.pause(false);
    assert.deepEqual([paths().sort(), live.waiting], [["s/aclosed", "s/bnew"], 0]);
});
