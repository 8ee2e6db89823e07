// SPDX-License-Identifier: MIT

/** What tests in a browser share: a host, Cockpit anew for each test, the page that is looked at. */
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { after, afterEach, before, beforeEach } from "node:test";
import { Host, packages, startBrowser, startCockpit, until } from "./host.mjs";
import { openPage, pathsIn } from "./page.mjs";

export const COMMAND = "/usr/sbin/vorn-openfiles";

export let host;
export let cockpit;
export let browser;
export let page;
export let complaints;

before(async () => {
    host = await Host.start();
    browser = await startBrowser();
});

after(async () => {
    await browser?.close();
    await host?.stop();
});

// One for each: a session that nobody has a page of for a while is ended for good.
beforeEach(async () => {
    complaints = [];
    cockpit = await startCockpit();
});

afterEach(async () => {
    await page?.context().close();
    await cockpit.stop();
    await host.do("end_all");
    page = null;
    // Nothing was refused by the security policy, nothing was thrown.
    assert.deepEqual(complaints, []);
});

/** The page from now on. */
export function keep(opened) {
    page = opened;
}

export async function open(options = {}) {
    keep(await openPage(browser, options.address ?? cockpit.address, complaints, options));
}

export const hold = files => host.do("hold", { files });
export const click = name => page.getByRole("button", { name, exact: true }).click();
export const facet = name => page.getByRole("checkbox", { name });

export async function expectPaths(wanted) {
    // The page may be about to be loaded again.
    const paths = () => pathsIn(page).catch(() => []);
    try {
        await until(async () => (await paths()).join() === wanted.join(), "rows", 30000);
    } catch {
        assert.deepEqual(await paths(), wanted);
    }
}

export async function checkAccessibility() {
    await page.evaluate(await readFile(packages.resolve("axe-core/axe.min.js"), "utf8"));
    const { violations } = await page.evaluate(() => globalThis.axe.run(document));
    assert.deepEqual(violations.map(({ id, nodes }) => [id, nodes.map(node => node.html)]), []);
}
