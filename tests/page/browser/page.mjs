// SPDX-License-Identifier: MIT

/** The page in the browser, and what can be read off it. */
import { readdirSync, readFileSync } from "node:fs";
import { mkdir } from "node:fs/promises";
import { join } from "node:path";
import { PATIENCE, project } from "./host.mjs";

const PICTURES = join(project, "build", "page");

/** Opens the page in a browser of its own; what that complains of is added to complaints. */
export async function openPage(browser, address, complaints, options = {}) {
    const { width = 1280, height = 800, colorScheme = "light", language = "en", keepHelp = false } = options;
    const context = await browser.newContext({ viewport: { width, height }, colorScheme, acceptDownloads: true });
    context.setDefaultTimeout(PATIENCE);
    await context.addCookies([{ name: "CockpitLang", value: language, url: address }]);
    if (!keepHelp) {
        await context.addInitScript(() => {
            if (location.protocol === "http:") {
                localStorage.setItem("vorn-openfiles:help-seen", "1");
            }
        });
    }
    const page = await context.newPage();
    page.on("pageerror", error => complaints.push(error.message));
    page.on("console", message => {
        if (message.type() === "error" || /Content.Security.Policy/.test(message.text())) {
            complaints.push(message.text());
        }
    });
    await page.goto(`${address}/cockpit/@localhost/vorn-openfiles/index.html`);
    return page;
}

/** Logs in where people do; gives Cockpit's own frame, in which pages are. */
export async function openShell(browser, address, user, password) {
    const context = await browser.newContext({ viewport: { width: 1280, height: 800 } });
    context.setDefaultTimeout(PATIENCE);
    const page = await context.newPage();
    await page.goto(address);
    await page.fill("#login-user-input", user);
    await page.fill("#login-password-input", password);
    await page.click("#login-button");
    return page;
}

/** The paths of the rows that can be seen, without their marks. */
export function pathsIn(page) {
    return page.locator("tr.record:not(.closed) td[data-column=path] .open > bdi").allInnerTexts();
}

export function rowOf(page, path) {
    return page.locator("tr.record").filter({ has: page.getByText(path, { exact: true }) });
}

export async function screenshot(page, name) {
    await mkdir(PICTURES, { recursive: true });
    await page.screenshot({ path: join(PICTURES, `${name}.png`) });
}

/** Processes of the command that watch and that nobody waits for but the bridge. */
export function watchers() {
    const commandOf = pid => {
        try {
            return readFileSync(`/proc/${pid}/cmdline`, "utf8").split("\0");
        } catch {
            return [];
        }
    };
    const parentOf = pid => {
        try {
            return /\) \S (\d+)/.exec(readFileSync(`/proc/${pid}/stat`, "utf8"))?.[1];
        } catch {
            return undefined;
        }
    };
    const pids = readdirSync("/proc").filter(name => /^\d+$/.test(name) && commandOf(name).includes("--watch"));
    // A supervisor and its worker are one.
    return pids.filter(pid => !pids.includes(parentOf(pid))).map(Number);
}
