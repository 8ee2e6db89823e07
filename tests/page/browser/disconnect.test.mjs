// SPDX-License-Identifier: MIT

/** Connections of real clients that are ended on the page: the right ones, and nobody else's. */
import assert from "node:assert/strict";
import { rename, writeFile } from "node:fs/promises";
import { after, before, describe, test } from "node:test";
import { startCockpit } from "./host.mjs";
import { rowOf, screenshot } from "./page.mjs";
import { checkAccessibility, click, COMMAND, expectPaths, hold, host, open, page } from "./stage.mjs";

const choose = path => page.getByRole("checkbox", { name: `Choose ${path}` }).check();
const dialog = () => page.getByRole("dialog", { name: "Disconnect" });
const rows = name => dialog().getByRole("table", { name }).locator("tbody tr").evaluateAll(
    found => found.map(row => [...row.cells].map(cell => cell.innerText.trim()).join("\t")));
const confirm = () => dialog().getByRole("button", { name: "Disconnect" }).click();

describe("disconnect", () => {
    // Who doesn't heed a signal needn't be waited for so long.
    before(async () => {
        await rename(COMMAND, `${COMMAND}.real`);
        await writeFile(COMMAND, `#!/bin/sh\n[ "$1" != disconnect ] || { shift; set -- disconnect --grace 1 "$@"; }\n`
            + `exec ${COMMAND}.real "$@"\n`, { mode: 0o755 });
    });

    after(() => rename(`${COMMAND}.real`, COMMAND));

    test("ends the connections of chosen files, shows before what goes with them, and nobody else's", async () => {
        const smb = (user, client, ...names) => host.do("smb", { user, client, share: "share", names });
        const ssh = (user, client, path) => host.do("ssh", { user, client, path });
        await smb("alice", "127.0.0.2", "letter.odt", "minutes.odt");
        await smb("bob", "127.0.0.3", "plan.odt");
        await ssh("alice", "127.0.0.4", "/volume1/photo/alice.log");
        await ssh("bob", "127.0.0.5", "/volume1/photo/bob.log");
        await open();
        await expectPaths(["photo/alice.log", "photo/bob.log", "share/letter.odt", "share/minutes.odt", "share/plan.odt"]);
        await choose("share/letter.odt");
        await choose("photo/alice.log");
        await page.getByText("2 chosen").waitFor();
        await click("Disconnect");
        await dialog().getByText("2 connections will be ended").waitFor();
        assert.deepEqual((await rows("Connections")).sort(), [
            "SMB\talice\t127.0.0.2\tshare/letter.odt\tshare/minutes.odt\twill be ended",
            "SSH\talice\t127.0.0.4\tphoto/alice.log\t\twill be ended",
        ]);
        await checkAccessibility();
        await screenshot(page, "disconnect");
        await dialog().getByRole("button", { name: "Cancel" }).click();
        await expectPaths(["photo/alice.log", "photo/bob.log", "share/letter.odt", "share/minutes.odt", "share/plan.odt"]);
        await click("Disconnect");
        await confirm();
        await dialog().getByText("2 connections have ended").waitFor();
        assert.deepEqual((await rows("Connections")).map(row => row.split("\t").at(-1)), ["ended", "ended"]);
        await dialog().locator("footer").getByRole("button", { name: "Close" }).click();
        await expectPaths(["photo/bob.log", "share/plan.odt"]);
        assert.equal(await page.getByText(/chosen/).count(), 0);
    });

    test("says what is left alone, and what would end it", async () => {
        await hold(["/volume1/photo/own"]);
        await open();
        await choose("photo/own");
        await click("Disconnect");
        await dialog().getByText("There is no connection to end").waitFor();
        const [row] = await rows("Left alone");
        assert.match(row, /^python3\S* \(\d+\)\tit serves no client\tkill \d+\tphoto\/own$/);
        assert.equal(await dialog().getByRole("button", { name: "Disconnect" }).count(), 0);
    });

    test("says what remained, of the one record that was opened", async () => {
        await host.do("ssh", { user: "alice", client: "127.0.0.4", path: "/volume1/photo/stubborn", heeds: false });
        await open();
        await rowOf(page, "photo/stubborn").click();
        await page.locator(".details").getByRole("button", { name: "Disconnect" }).click();
        await dialog().getByText("1 connection will be ended").waitFor();
        await confirm();
        await dialog().getByText("Not everything has ended").waitFor();
        assert.match((await rows("Connections"))[0], /still there$/);
        await page.keyboard.press("Escape");
        await expectPaths(["photo/stubborn"]);
    });

    test("all that is shown can be chosen at once, by keyboard alone, and what is out of sight is not", async () => {
        await hold(["/volume1/photo/a", "/volume1/photo/b", "/volume1/share/a"]);
        await open();
        await expectPaths(["photo/a", "photo/b", "share/a"]);
        const all = page.getByRole("checkbox", { name: "Choose all" });
        await all.focus();
        await page.keyboard.press("Space");
        await page.getByText("3 chosen").waitFor();
        await page.getByRole("searchbox").fill("photo");
        await page.getByText("2 chosen").waitFor();
        await page.getByRole("checkbox", { name: "Choose photo/a" }).focus();
        await page.keyboard.press("ArrowDown");
        await page.keyboard.press("Space");
        await page.getByText("1 chosen").waitFor();
        assert.equal(await page.getByRole("checkbox", { name: "Choose photo/b" }).isChecked(), false);
        assert.equal(await all.evaluate(box => box.indeterminate), true);
    });

    test("is not offered to who hasn't the rights", async () => {
        await host.do("hold", { files: ["/volume1/photo/mine"], user: "alice" });
        const mine = await startCockpit({ user: "alice" });
        try {
            await open({ address: mine.address });
            await rowOf(page, "photo/mine").click();
            await page.locator(".details").getByText("/volume1/photo/mine").waitFor();
            assert.equal(await page.locator(".choose").count(), 0);
            assert.equal(await page.getByRole("button", { name: "Disconnect" }).count(), 0);
        } finally {
            await page?.close();
            await mine.stop();
        }
    });
});
