// SPDX-License-Identifier: MIT

/** Two hosts in one Cockpit: each one's page is that host's. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { PATIENCE, startCockpit, until } from "./host.mjs";
import { pathsIn, rowOf, watchers } from "./page.mjs";
import { browser, hold, host } from "./stage.mjs";

/** The page of a host in Cockpit's own frame, and what is in it. */
async function openIn(context, address, name) {
    const shell = await context.newPage();
    await shell.goto(`${address}/@${name}/vorn-openfiles`);
    return [shell, shell.frameLocator(`iframe[name$='${name}/vorn-openfiles']`)];
}

test("each host's page shows and follows that host's files", async () => {
    const second = await host.do("begin_second_host", { file: "/volume1/photo/there" });
    await hold(["/volume1/photo/here"]);
    const both = await startCockpit({ agent: second.agent });
    const context = await browser.newContext();
    context.setDefaultTimeout(PATIENCE);
    try {
        const [shell, there] = await openIn(context, both.address, second.address);
        await rowOf(there, "photo/there").waitFor();
        const [, here] = await openIn(context, both.address, "localhost");
        await rowOf(here, "photo/here").waitFor();
        await until(() => watchers().length === 2, "a watch on each");
        await hold(["/volume1/photo/here-too"]);
        await rowOf(here, "photo/here-too").waitFor();
        assert.deepEqual(await pathsIn(there), ["photo/there"]);
        await shell.close();
        await until(() => watchers().length === 1, "the end of the watch on the second host");
    } finally {
        await context.close();
        await both.stop();
    }
});
