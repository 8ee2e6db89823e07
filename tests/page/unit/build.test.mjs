// SPDX-License-Identifier: MIT

/** What is built, as it will be installed. */
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readdir, readFile } from "node:fs/promises";
import { dirname, join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import vm from "node:vm";
import { gzipSync } from "node:zlib";
import { parseCatalogue, scriptOf } from "../../../cockpit/steps/catalogue.mjs";

const cockpit = join(dirname(fileURLToPath(import.meta.url)), "..", "..", "..", "cockpit");
const LANGUAGES = ["de", "es", "fr", "it", "ja", "ko", "nl", "pl", "pt_BR", "ru", "zh_CN", "zh_TW"];
const LIMIT = 150 * 1024;

const read = (...parts) => readFile(join(cockpit, ...parts), "utf8");
const catalogue = async language => parseCatalogue(await read("po", `${language}.po`));

/** Texts that the page asks for: [text] or [one, many]. */
async function textsOfPage() {
    const files = (await readdir(join(cockpit, "src"), { recursive: true })).filter(file => /\.jsx?$/.test(file));
    const texts = new Map();
    for (const file of files) {
        const source = await read("src", file);
        for (const [, text] of source.matchAll(/\b_\("((?:[^"\\]|\\.)*)"\)/g)) {
            texts.set(text, [text]);
        }
        for (const [, one, many] of source.matchAll(/\bplural\("([^"]*)", "([^"]*)"/g)) {
            texts.set(one, [one, many]);
        }
    }
    return texts;
}

/** What a script tells Cockpit. */
function loaded(script) {
    let told;
    vm.runInNewContext(script, { cockpit: { locale: catalogue => { told = catalogue; } } });
    return told;
}

test("the page is small", async () => {
    let sum = 0;
    for (const file of await readdir(join(cockpit, "dist"))) {
        sum += gzipSync(await readFile(join(cockpit, "dist", file))).length;
    }
    assert.ok(sum < LIMIT, `${sum} bytes compressed`);
});

test("nothing in the page is inline, nor from elsewhere", async () => {
    const html = await read("dist", "index.html");
    assert.doesNotMatch(html, /<script(?![^>]*\bsrc=)|<style|\son\w+=|\sstyle=/);
    assert.doesNotMatch(html, /(src|href)="(https?:)?\/\//);
    assert.doesNotMatch(await read("dist", "openfiles.css"), /url\(["']?(https?:)?\/\//);
});

test("what it is made of has its licence beside it", async () => {
    const licences = await read("dist", "LICENSES.txt");
    const { dependencies } = JSON.parse(await read("package.json"));
    for (const [name, version] of Object.entries(dependencies)) {
        assert.ok(licences.includes(`${name} ${version}`), name);
    }
});

test("no module but one knows the command's options, none the process table", async () => {
    const files = (await readdir(join(cockpit, "src"), { recursive: true })).filter(file => /\.jsx?$/.test(file));
    for (const file of files) {
        const source = await read("src", file);
        assert.doesNotMatch(source, /\/proc\b/, file);
        if (file !== "command.js") {
            // Properties of the style sheet look the same.
            const asked = source.replaceAll(/getPropertyValue\([^)]*\)/g, "");
            assert.doesNotMatch(asked, /"--[a-z]/, file);
        }
    }
});

test("the packages are pinned, and the lock file names no place that they came from", async () => {
    const { dependencies, devDependencies } = JSON.parse(await read("package.json"));
    for (const version of Object.values({ ...dependencies, ...devDependencies })) {
        assert.match(version, /^\d+\.\d+\.\d+$/);
    }
    assert.doesNotMatch(await read("package-lock.json"), /"resolved"/);
});

test("Cockpit's list of applications knows the page, by its name in each language", async () => {
    const file = "vorn.openfiles.cockpit.metainfo.xml";
    execFileSync("appstreamcli", ["validate", "--no-net", join(cockpit, file)]);
    const metainfo = await read(file);
    for (const language of LANGUAGES) {
        const [name] = (await catalogue(language)).find(({ id }) => id === "Open files").texts;
        assert.ok(metainfo.includes(`<name xml:lang="${language.replace("_", "-")}">${name}</name>`), language);
    }
});

for (const language of LANGUAGES) {
    test(`${language} has every text of the page and no other`, async () => {
        const texts = await textsOfPage();
        const messages = (await catalogue(language)).filter(({ id }) => id !== "");
        assert.deepEqual(messages.map(({ id }) => id).sort(), [...texts.keys()].sort());
        const told = loaded(scriptOf(language, await catalogue(language)));
        const forms = new Set(Array.from({ length: 200 }, (_, number) => told[""]["plural-forms"](number)));
        for (const { id, plural, texts: translated } of messages) {
            assert.equal(plural, texts.get(id)[1], id);
            assert.equal(translated.length, plural === undefined ? 1 : forms.size, id);
            for (const text of translated) {
                assert.notEqual(text, "", id);
                assert.deepEqual(text.match(/\$\d/g), id.match(/\$\d/g), `${id}: ${text}`);
            }
        }
    });
}

test("a catalogue becomes what Cockpit loads", () => {
    const text = 'msgid ""\nmsgstr ""\n"Plural-Forms: nplurals=2; plural=n > 1;\\n"\n\n#: a.js\nmsgid "One\\n"\n'
        + '"two"\nmsgstr "Un\\"\\n"\n"deux"\n\nmsgid "$0 file"\nmsgid_plural "$0 files"\nmsgstr[0] "$0 a"\nmsgstr[1] "$0 b"\n'
        + '\nmsgid "later"\nmsgstr ""\n';
    const told = loaded(scriptOf("fr", parseCatalogue(text)));
    assert.equal(told["One\ntwo"][1], 'Un"\ndeux');
    assert.deepEqual([...told["$0 file"]], [null, "$0 a", "$0 b"]);
    assert.equal(told[""]["plural-forms"](1), 0);
    assert.equal(told.later, undefined);
    assert.throws(() => scriptOf("fr", parseCatalogue('msgid ""\nmsgstr "plural=alert(1);\\n"\n')), /no expression/);
});
