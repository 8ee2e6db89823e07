// SPDX-License-Identifier: MIT
import assert from "node:assert/strict";
import { test } from "node:test";
import { Superuser } from "../../../cockpit/src/superuser.js";

/** What the bridge says of its access, one state after another: what is allowed then, and how often all is begun anew. */
function followed(...states) {
    const proxy = { valid: false, Current: null, addEventListener: (_event, then) => { proxy.changed = then; } };
    let reloads = 0;
    const superuser = new Superuser({ dbus: () => ({ proxy: () => proxy }) }, () => {}, () => { ++reloads; });
    const allowed = states.map(state => {
        Object.assign(proxy, { valid: state !== null, Current: state });
        proxy.changed();
        return superuser.allowed;
    });
    return { allowed, reloads };
}

test("access is had when the bridge has it, not while it asks", () => {
    assert.deepEqual(followed(null, "none", "init", "none"), { allowed: [null, false, false, false], reloads: 0 });
    assert.deepEqual(followed(null, "none", "init", "sudo"), { allowed: [null, false, false, true], reloads: 1 });
});

test("who has it from the beginning goes on; who loses it begins anew", () => {
    assert.deepEqual(followed(null, "root"), { allowed: [null, true], reloads: 0 });
    assert.deepEqual(followed(null, "sudo", "none"), { allowed: [null, true, false], reloads: 1 });
});
