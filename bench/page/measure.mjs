// SPDX-License-Identifier: MIT

/**
 * How quick the page is in a real browser: scripts/sample-host.sh node bench/page/measure.mjs [FILES...]
 *
 * For each number of open files: milliseconds from loading the page to its first rows and to the
 * last one counted, each key of a search as it is typed (from the key to the frame that shows what it
 * finds), the slowest of them while files open and close meanwhile, the slowest frame while the table is
 * scrolled from end to end.
 */
import { Host, startBrowser, startCockpit } from "../../tests/page/browser/host.mjs";

const sizes = process.argv.slice(2).map(Number);
const ROW = "tr.record";

async function load(page, address, count) {
    const started = Date.now();
    await page.goto(`${address}/cockpit/@localhost/vorn-openfiles/index.html`, { waitUntil: "commit" });
    await page.waitForSelector(ROW);
    const first = Date.now() - started;
    await page.waitForFunction(wanted =>
        Number(document.querySelector(".summary [role=status]")?.textContent.replace(/\D/g, "")) >= wanted,
    count, { timeout: 120000 });
    return { first, all: Date.now() - started };
}

/** Types a word, a key at a time, and gives the milliseconds of each. */
function typed(page, word) {
    return page.evaluate(async text => {
        const input = document.querySelector("input[type=search]");
        const set = Object.getOwnPropertyDescriptor(HTMLInputElement.prototype, "value").set;
        const times = [];
        for (let length = 1; length <= text.length; ++length) {
            const started = performance.now();
            set.call(input, text.slice(0, length));
            input.dispatchEvent(new InputEvent("input", { bubbles: true }));
            await new Promise(resolve => requestAnimationFrame(() => setTimeout(resolve)));
            times.push(Math.round(performance.now() - started));
            await new Promise(resolve => setTimeout(resolve, 50));
        }
        return times;
    }, word);
}

/** The slowest key while files open and close, some at each look of the watch. */
async function typedMeanwhile(page, host) {
    let slowest = 0;
    for (let round = 0; round < 4; ++round) {
        const files = Array.from({ length: 200 }, (_, index) => `/volume1/photo/of-${round}/file-${index}`);
        const held = await host.do("hold", { files });
        for (let turn = 0; turn < 5; ++turn) {
            slowest = Math.max(slowest, ...await typed(page, "file-0001"));
        }
        await host.do("end", { what: held });
    }
    return slowest;
}

function scrolled(page) {
    return page.evaluate(async () => {
        const scroller = document.querySelector(".table-scroller");
        let slowest = 0;
        for (let step = 0; step <= 100; ++step) {
            const started = performance.now();
            scroller.scrollTop = (scroller.scrollHeight * step) / 100;
            await new Promise(resolve => requestAnimationFrame(() => setTimeout(resolve)));
            slowest = Math.max(slowest, performance.now() - started);
        }
        return Math.round(slowest);
    });
}

const host = await Host.start();
const cockpit = await startCockpit();
const browser = await startBrowser();
let held = 0;
for (const size of sizes.length > 0 ? sizes : [10000, 100000]) {
    await host.do("hold_many", { folder: `/volume1/share/to-${size}`, count: size - held, processes: 50 });
    held = size;
    const page = await browser.newPage({ viewport: { width: 1280, height: 900 } });
    const { first, all } = await load(page, cockpit.address, size);
    const slowestFrame = await scrolled(page);
    const keys = await typed(page, "file-0001");
    const cleared = await typed(page, "zzz");
    const slowestKeyMeanwhile = await typedMeanwhile(page, host);
    console.log(JSON.stringify({
        files: size, first, all, slowestFrame, keys: [...keys, ...cleared], slowestKeyMeanwhile,
    }));
    await page.close();
}
await browser.close();
await cockpit.stop();
await host.stop();
