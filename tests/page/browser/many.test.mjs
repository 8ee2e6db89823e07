// SPDX-License-Identifier: MIT

/** A hundred thousand open files: only a window of rows is made, all else is about all of them. */
import assert from "node:assert/strict";
import { test } from "node:test";
import { until } from "./host.mjs";
import { pathsIn } from "./page.mjs";
import { facet, hold, host, open, page } from "./stage.mjs";

const COUNT = 100000;
const PROCESSES = 50;
const FOLDER = "share/many";

const found = number => page.getByRole("status").getByText(`${number} file${number === "1" ? "" : "s"}`, { exact: true });
const rows = () => page.locator("tr.record").count();
const first = async () => (await pathsIn(page))[0];

test("of a hundred thousand files a window of rows is made; search, order and counts are of all", async () => {
    await host.do("hold_many", { folder: `/volume1/${FOLDER}`, count: COUNT, processes: PROCESSES });
    await open();
    await found("100,000").waitFor();
    assert.equal(await page.getByRole("table", { name: "Open files" }).getAttribute("aria-rowcount"), `${COUNT + 1}`);
    assert.ok(await rows() < 60, `${await rows()} rows`);
    await facet("share 100,000").waitFor();

    await page.getByRole("columnheader", { name: "Path" }).getByRole("button").click();
    await until(async () => await first() === `${FOLDER}/9/file-019999.dat`, "the last path above");
    await page.locator("tr.record button[tabindex='0']").focus();
    await page.keyboard.press("End");
    await until(async () => (await pathsIn(page)).at(-1) === `${FOLDER}/0/file-000000.dat`, "the first path below");
    assert.ok(await rows() < 60, `${await rows()} rows`);
    await page.locator(".table-scroller").evaluate(scroller => { scroller.scrollTop = scroller.scrollHeight / 2; });
    await until(async () => Math.abs(Number(await page.locator("tr.record").first().getAttribute("aria-rowindex"))
        - COUNT / 2) < 60, "rows of the middle");
    assert.ok(await rows() < 60, `${await rows()} rows`);

    await page.getByRole("searchbox").fill("file-0424 many/21");
    await found("100").waitFor();
    await page.getByRole("searchbox").fill("photo");
    await found("0").waitFor();
    await hold(["/volume1/photo/one-more"]);
    await page.locator("tr.new", { hasText: "photo/one-more" }).waitFor();
    await page.getByRole("searchbox").fill("");
    await found("100,001").waitFor();

    // What opens and closes while somebody types is in its place and counted in the end.
    const several = await hold(Array.from({ length: 200 }, (_, index) => `/volume1/photo/several-${index}`));
    await page.getByRole("searchbox").pressSequentially("photo/several-1", { delay: 100 });
    await found("111").waitFor();
    await page.getByRole("searchbox").fill("");
    await found("100,201").waitFor();
    await facet("photo 201").waitFor();
    await host.do("end", { what: several });
    await facet("photo 1").waitFor();
    await found("100,001").waitFor();
    await page.locator(".table-scroller").evaluate(scroller => { scroller.scrollTop = 0; });
    await page.getByRole("columnheader", { name: "Path" }).getByRole("button").click();
    await until(async () => (await pathsIn(page)).slice(0, 2).join() === `photo/one-more,${FOLDER}/0/file-000000.dat`,
                "those that were closed to go");
});
