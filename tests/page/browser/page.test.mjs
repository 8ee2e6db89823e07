// SPDX-License-Identifier: MIT

/** The page as an administrator sees it: real Cockpit, real servers and clients, a real browser. */
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFile, rename, writeFile } from "node:fs/promises";
import { after, afterEach, before, beforeEach, describe, test } from "node:test";
import { membersWith } from "../../../cockpit/src/command.js";
import { startCockpit, until } from "./host.mjs";
import { openShell, pathsIn, rowOf, screenshot, watchers } from "./page.mjs";
import {
    browser, checkAccessibility, click, COMMAND, complaints, expectPaths, facet, hold, host, keep, open, page,
} from "./stage.mjs";

describe("the table", () => {
    test("tells service, user, host, share and path of a real client", async () => {
        await host.do("smb", { user: "alice", client: "127.0.0.2", share: "share", names: ["report.odt"] });
        await open();
        await rowOf(page, "share/report.odt").waitFor();
        const cells = await page.locator("tr.record td[data-column]").allInnerTexts();
        assert.deepEqual(cells.map(cell => cell.trim()), ["SMB", "alice", "127.0.0.2", "share", "share/report.odt"]);
    });

    test("is sorted by each column, both ways", async () => {
        await hold(["/volume1/photo/b", "/volume1/share/a"]);
        await open();
        await expectPaths(["photo/b", "share/a"]);
        await page.getByRole("columnheader", { name: "Path" }).getByRole("button").click();
        await expectPaths(["share/a", "photo/b"]);
        assert.equal(await page.getByRole("columnheader", { name: "Path" }).getAttribute("aria-sort"), "descending");
        await page.getByRole("columnheader", { name: "Share" }).getByRole("button").click();
        await expectPaths(["photo/b", "share/a"]);
    });

    test("shows columns that are asked for", async () => {
        await hold(["/volume1/photo/b"]);
        await open();
        await rowOf(page, "photo/b").waitFor();
        await page.getByRole("button", { name: /^Columns/ }).click();
        await page.getByRole("checkbox", { name: "Owner" }).check();
        await page.getByRole("cell", { name: "root", exact: true }).waitFor();
        await page.getByRole("checkbox", { name: "Full path" }).check();
        await page.getByRole("columnheader", { name: "Full path" }).waitFor();
        await page.keyboard.press("Escape");
        assert.equal(await page.getByRole("checkbox", { name: "Full path" }).count(), 0);
        assert.match(page.url(), /columns=service/);
    });
});

describe("what is to be seen", () => {
    beforeEach(() => hold(["/volume1/photo/alpha", "/volume1/photo/beta", "/volume1/share/alpha"]));

    test("is narrowed by search and facets, stands in the address, survives reload and goes back", async () => {
        await open();
        await expectPaths(["photo/alpha", "photo/beta", "share/alpha"]);
        await facet("photo 2").check();
        await expectPaths(["photo/alpha", "photo/beta"]);
        assert.match(page.url(), /share=photo/);
        await page.getByRole("searchbox").fill("ALPHA");
        await expectPaths(["photo/alpha"]);
        await facet("share 1").waitFor();
        await page.waitForURL(/search=ALPHA/);
        await page.reload();
        await expectPaths(["photo/alpha"]);
        await click("Remove photo");
        await expectPaths(["photo/alpha", "share/alpha"]);
        await page.goBack();
        await expectPaths(["photo/alpha"]);
        await click("Clear all filters");
        await expectPaths(["photo/alpha", "photo/beta", "share/alpha"]);
    });

    test("is said when nothing matches", async () => {
        await open();
        await page.getByRole("searchbox").fill("nowhere");
        await page.getByText("No open file matches").waitFor();
    });

    test("is grouped with counts, and a group opens its files", async () => {
        await open();
        await rowOf(page, "photo/alpha").waitFor();
        await page.getByLabel("Group by").selectOption("share");
        await page.getByRole("table", { name: "Share" }).waitFor();
        // Cockpit's releases write no bytes in two ways.
        const rows = await page.locator("tr.record").allInnerTexts();
        assert.deepEqual(rows.map(row => row.replace(/0( B)?$/, "0")), ["photo\t2\t0", "share\t1\t0"]);
        await page.locator("tr.record").first().click();
        await expectPaths(["photo/alpha", "photo/beta"]);
    });

    test("is exported as the command's own document and as its table", async () => {
        await open();
        await facet("photo 2").check();
        await expectPaths(["photo/alpha", "photo/beta"]);
        const saved = async kind => {
            await page.getByRole("button", { name: /^Export/ }).click();
            const [download] = await Promise.all([page.waitForEvent("download"), click(kind)]);
            return readFile(await download.path(), "utf8");
        };
        const ask = (...more) => execFileSync(COMMAND, [...more, "/volume1/photo"], { encoding: "utf8" });
        const { at, ...document } = JSON.parse(await saved("As JSON"));
        const { at: _at, ...asked } = JSON.parse(ask("--json", "--schema", "2", "--columns", membersWith([]).join()));
        assert.deepEqual(document, asked);
        assert.match(at, /^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$/);
        assert.equal(await saved("As CSV"), "service,user,host,share,path\nInternal service,-,-,photo,photo/alpha\n"
            + "Internal service,-,-,photo,photo/beta\n");
    });
});

describe("a record", () => {
    test("has its details and the others of its process beside the table, by keyboard alone", async () => {
        await hold(["/volume1/photo/a", "/volume1/photo/b"]);
        await open();
        await rowOf(page, "photo/a").waitFor();
        await page.getByRole("columnheader", { name: "Path" }).getByRole("button").focus();
        await page.keyboard.press("Tab");
        await page.keyboard.press("ArrowDown");
        await page.keyboard.press("Enter");
        const details = page.getByRole("complementary", { name: "b" });
        await details.getByText("/volume1/photo/b", { exact: true }).waitFor();
        await details.getByText(/^python3/).waitFor();
        await details.getByText("1 other file of this process").waitFor();
        await details.getByRole("button", { name: "photo/a" }).click();
        await page.getByRole("complementary", { name: "a" }).getByText("/volume1/photo/a", { exact: true }).waitFor();
        await page.keyboard.press("Escape");
        assert.equal(await page.locator(".details").count(), 0);
        assert.equal(await page.evaluate(() => document.activeElement.className), "open");
    });

    test("with a hostile name is shown as what it is", async () => {
        const names = Array.from({ length: 300 }, (_, index) =>
            [`<img src=x onerror=alert(${index})>`, `\u202e${index}gpj.exe`, `a\nb${index}`, `\u001b[31m${index}`,
             `'"&amp;${index}`, `${index} \u200b\u2066`][index % 6]);
        await hold(names.map(name => `/volume1/photo/${name}`).concat("/volume1/photo/raw-\udcff\udcc3"));
        await open({ height: 4000 });
        page.on("dialog", () => complaints.push("a dialogue"));
        await page.getByRole("searchbox").fill("gpj");
        await rowOf(page, "photo/\\u{202E}1gpj.exe").waitFor();
        await page.getByRole("searchbox").fill("");
        await until(async () => (await page.locator(".summary [role=status]").innerText()) === "301 files", "all");
        await page.getByRole("searchbox").fill("raw-");
        await rowOf(page, "photo/raw-\\xFF\\xC3").waitFor();
        await page.getByRole("searchbox").fill("onerror");
        await until(async () => (await pathsIn(page)).length === 50, "the tags");
        assert.equal(await page.locator("img").count(), 0);
        await page.getByRole("searchbox").fill("");
        // What would turn the direction, hide or control something is nowhere in the page.
        const text = await page.evaluate(() => document.querySelector("table").textContent);
        assert.doesNotMatch(text, /[\p{Cc}\p{Cf}]/u);
        assert.ok(await page.evaluate(() => [...document.querySelectorAll("td[data-column=path] .open")]
            .every(cell => cell.lastElementChild.tagName === "BDI")));
    });
});

describe("live", () => {
    test("what opens and closes is marked, and a pause holds it back", async () => {
        await hold(["/volume1/photo/first"]);
        await open();
        await expectPaths(["photo/first"]);
        const second = await hold(["/volume1/photo/second"]);
        await page.locator("tr.new", { hasText: "photo/second" }).getByText("new", { exact: true }).waitFor();
        await click("Pause");
        await host.do("end", { what: second });
        await page.getByText("1 change waiting").waitFor();
        assert.equal(await page.locator("tr.closed").count(), 0);
        await click("Resume");
        await page.locator("tr.closed", { hasText: "photo/second" }).waitFor();
        await expectPaths(["photo/first"]);
    });

    test("one process watches; it ends when the page is hidden or left and begins again", async () => {
        await hold(["/volume1/photo/first"]);
        await open();
        await expectPaths(["photo/first"]);
        assert.equal(watchers().length, 1);
        const hide = hidden => page.evaluate(value => {
            Object.defineProperty(document, "hidden", { value, configurable: true });
            document.dispatchEvent(new Event("visibilitychange"));
        }, hidden);
        await hide(true);
        await until(() => watchers().length === 0, "the watch to end");
        await hold(["/volume1/photo/meanwhile"]);
        await hide(false);
        await rowOf(page, "photo/meanwhile").waitFor();
        assert.equal(watchers().length, 1);
        await page.goto("about:blank");
        await until(() => watchers().length === 0, "the watch to end");
    });

    test("a command that is killed is told, and followed again on request", async () => {
        await hold(["/volume1/photo/first"]);
        await open();
        await expectPaths(["photo/first"]);
        watchers().forEach(pid => process.kill(pid, "SIGKILL"));
        await page.getByText("These files are no longer followed").waitFor();
        assert.deepEqual(await pathsIn(page), ["photo/first"]);
        await click("Look again");
        await page.getByText("These files are no longer followed").waitFor({ state: "detached" });
        await hold(["/volume1/photo/second"]);
        await rowOf(page, "photo/second").waitFor();
    });
});

describe("is it free?", () => {
    // The sample host is all that matters here, and it is a namespace of processes.
    before(async () => {
        await rename(COMMAND, `${COMMAND}.real`);
        await writeFile(COMMAND, `#!/bin/sh\n[ "$1" != busy ] || { shift; set -- busy --inside "$@"; }\n`
            + `exec ${COMMAND}.real "$@"\n`, { mode: 0o755 });
    });

    after(() => rename(`${COMMAND}.real`, COMMAND));

    test("tells who keeps a share in use, and waits until nobody does", async () => {
        const held = await hold(["/volume1/photo/held"]);
        await open();
        await facet("photo 1").check();
        await click("Is it free?");
        const dialog = page.getByRole("dialog", { name: "Is it free?" });
        assert.equal(await dialog.getByRole("combobox").inputValue(), "/volume1/photo");
        await dialog.getByRole("button", { name: "Ask" }).click();
        await dialog.getByText("/volume1/photo is in use").waitFor();
        await dialog.getByRole("cell", { name: "open file" }).waitFor();
        await screenshot(page, "busy");
        await dialog.getByRole("button", { name: "Wait until it is free" }).click();
        await dialog.getByText("Waiting until it is free").waitFor();
        await host.do("end", { what: held });
        await dialog.getByText("/volume1/photo is free").waitFor();
        await page.keyboard.press("Escape");
        assert.equal(await page.getByRole("dialog").count(), 0);
    });

    test("tells what can't be asked", async () => {
        await open();
        await click("Is it free?");
        await page.getByRole("combobox", { name: "Share, volume or folder" }).fill("/nowhere");
        await click("Ask");
        await page.getByText("can't tell about '/nowhere': No such file or directory").waitFor();
    });
});

describe("everybody", () => {
    const themes = { light: { colorScheme: "light" }, dark: { colorScheme: "dark" },
                     narrow: { colorScheme: "light", width: 390 } };
    for (const [name, options] of Object.entries(themes)) {
        test(`can read it: ${name}`, async () => {
            await host.do("smb", { user: "alice", client: "127.0.0.2", share: "share", names: ["report.odt"] });
            await host.do("smb", { user: "bob", client: "127.0.0.3", share: "photo", names: ["beach.jpg"] });
            await hold(["/volume1/photo/2026/שלום.jpg", "/volume1/share/minutes.txt"]);
            await open({ ...options, keepHelp: true });
            await page.getByText("What this page shows").waitFor();
            await checkAccessibility();
            await click("Got it");
            await until(async () => (await pathsIn(page)).length === 4, "all");
            await checkAccessibility();
            await screenshot(page, name);
            await rowOf(page, "share/report.odt").click();
            await page.locator(".details").waitFor();
            await checkAccessibility();
            await screenshot(page, `${name}-details`);
        });
    }

    test("can use the dialogue and the menus", async () => {
        await open();
        await page.getByText("No file is open").waitFor();
        await page.getByRole("button", { name: /^Columns/ }).click();
        await checkAccessibility();
        await click("Is it free?");
        await checkAccessibility();
    });

    for (const [language, title, service] of [["de", "Offene Dateien", "Interner Dienst"],
                                              ["ja", "開いているファイル", "内部サービス"],
                                              ["pt-br", "Arquivos abertos", "Serviço interno"]]) {
        test(`reads it in the language of Cockpit: ${language}`, async () => {
            await hold(["/volume1/photo/a"]);
            await open({ language });
            await page.getByRole("heading", { name: title, exact: true }).waitFor();
            await rowOf(page, "photo/a").getByText(service).waitFor();
        });
    }

    test("finds the manual", async () => {
        await open({ keepHelp: true });
        const [manual] = await Promise.all([
            page.waitForEvent("popup"), page.getByRole("link", { name: "Read the manual" }).click()]);
        await manual.getByText("vorn-openfiles", { exact: true }).first().waitFor();
    });
});

describe("what the host can't answer", () => {
    afterEach(() => rename(`${COMMAND}.away`, COMMAND));

    async function instead(script) {
        await rename(COMMAND, `${COMMAND}.away`);
        if (script) {
            await writeFile(COMMAND, `#!/bin/sh\n${script}\n`, { mode: 0o755 });
        }
        await open();
    }

    test("without the command is said, until it is there", async () => {
        await instead(null);
        await page.getByText("The command vorn-openfiles is not installed").waitFor();
        await hold(["/volume1/photo/a"]);
        await writeFile(COMMAND, `#!/bin/sh\nexec ${COMMAND}.away "$@"\n`, { mode: 0o755 });
        await click("Try again");
        await expectPaths(["photo/a"]);
    });

    test("with an old command is said", async () => {
        await instead("echo \"vorn-openfiles: there is no option '--watch'\" >&2; exit 2");
        await page.getByText("The command vorn-openfiles is too old").waitFor();
    });

    test("because the command was cut off in mid-stream is said, and what came before is kept", async () => {
        const paths = Array.from({ length: 20 }, (_, index) => `photo/${index + 10}`);
        await hold(paths.map(path => `/volume1/${path}`));
        await instead(`case "$*" in *--watch*) ${COMMAND}.away "$@" | head -c 900; kill -KILL $$;; esac\n`
            + `exec ${COMMAND}.away "$@"`);
        await page.getByText("These files are no longer followed").waitFor();
        const kept = await pathsIn(page);
        assert.ok(kept.length > 0 && kept.length < paths.length, kept.join());
        await writeFile(COMMAND, `#!/bin/sh\nexec ${COMMAND}.away "$@"\n`, { mode: 0o755 });
        await click("Look again");
        await expectPaths(paths);
    });

    test("because of its own troubles is said with what is missing", async () => {
        const check = JSON.stringify({ schema: 1, ready: false, checks: [
            { subject: "x", state: "missing", text: "it is broken", advice: "mend it" }] });
        await instead(`case $1 in check) echo '${check}';; *) echo 'vorn-openfiles: no luck' >&2; exit 2;; esac`);
        await page.getByText("The host gives no answer").waitFor();
        await page.getByText("no luck").waitFor();
        await page.getByText("mend it").waitFor();
    });
});

test("a volume that doesn't answer is said", async () => {
    await host.do("begin_dead_volume");
    await open();
    await page.getByText("The host gives no answer").waitFor();
    await page.getByText(/volume9/).first().waitFor();
    await host.do("end_dead_volume");
    await click("Try again");
    await page.getByText("No file is open").waitFor();
});

describe("rights", () => {
    test("that are missing are asked for in Cockpit's own way", async () => {
        await host.do("allow_sudo", { user: "alice" });
        const held = await hold(["/volume1/photo/of-root"]);
        const mine = await startCockpit({ user: "alice" });
        try {
            await open({ address: mine.address });
            await page.getByText("Some open files may be missing here").waitFor();
            await page.getByText("No open file can be seen").waitFor();
            assert.equal(await page.getByRole("button", { name: "Is it free?" }).count(), 0);
            await click("Turn on administrative access");
            await page.getByLabel(/alice/).fill("wrong");
            await click("Authenticate");
            await page.getByRole("dialog").getByText(/Sorry|try again/).waitFor();
            await page.getByLabel(/alice/).fill("secret-of-tests");
            await click("Authenticate");
            await expectPaths(["photo/of-root"]);
            await page.getByRole("button", { name: "Is it free?" }).waitFor();
            await page.getByRole("checkbox", { name: "Choose all" }).waitFor();
            assert.equal(await page.getByText("Some open files may be missing here").count(), 0);
        } finally {
            await page.close();
            await mine.stop();
            await host.do("end", { what: held });
        }
    });
});

describe("in Cockpit's own frame, after a login by PAM", () => {
    test("it is in the menu, shares its address, gets rights and rests while another page is seen", async () => {
        await host.do("allow_sudo", { user: "alice" });
        await hold(["/volume1/photo/of-root"]);
        const real = await startCockpit({ login: true });
        try {
            keep(await openShell(browser, real.address, "alice", "secret-of-tests"));
            await page.getByRole("link", { name: "Open files" }).click();
            const inner = page.frameLocator("iframe[src*='/vorn-openfiles/']");
            await inner.getByText("No open file can be seen").waitFor();
            await inner.getByRole("button", { name: "Turn on administrative access" }).click();
            await inner.getByLabel(/alice/).fill("secret-of-tests");
            await inner.getByRole("button", { name: "Authenticate" }).click();
            await inner.getByRole("checkbox", { name: "photo 1" }).check();
            await page.waitForURL(/\/vorn-openfiles#\/\?share=photo/);
            await page.getByText("Administrative access").first().waitFor();
            assert.equal(watchers().length, 1);
            await page.getByRole("link", { name: "Services" }).click();
            await until(() => watchers().length === 0, "the watch to end");
            await page.getByRole("link", { name: "Open files" }).click();
            await until(() => watchers().length === 1, "the watch to begin again");
        } finally {
            await page?.close();
            await real.stop();
        }
    });
});

// Last: nothing brings the volumes back.
test("a host without volumes says what to do", async () => {
    execFileSync("umount", ["--lazy", "/volume1", "/volume2"]);
    await open();
    await page.getByText("No data volume is mounted", { exact: true }).waitFor();
    await page.getByText("Mount the data file systems on /volume1").waitFor();
});
