// SPDX-License-Identifier: MIT

/**
 * Builds the page: node build.mjs [FOLDER], by default into dist beside this file. What comes out is
 * static and needs nothing but Cockpit.
 */
import { build } from "esbuild";
import { execFileSync } from "node:child_process";
import { mkdir, readdir, readFile, rm, writeFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseCatalogue, scriptOf } from "./steps/catalogue.mjs";
import { licencesOf } from "./steps/licences.mjs";
import { stylesheetOf } from "./steps/stylesheet.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const target = resolve(process.argv[2] ?? join(here, "dist"));
const source = name => join(here, "src", name);

async function script() {
    const { outputFiles } = await build({
        entryPoints: [source("index.jsx")], bundle: true, minify: true, write: false, format: "iife",
        target: ["es2022"], jsx: "automatic", jsxImportSource: "preact", legalComments: "none",
        logLevel: "error",
    });
    return outputFiles[0].text;
}

async function catalogues(put) {
    const manifest = JSON.parse(await readFile(source("manifest.json"), "utf8"));
    const shown = new Set(Object.values(manifest.menu).map(({ label }) => label));
    for (const name of (await readdir(join(here, "po"))).filter(file => file.endsWith(".po"))) {
        const language = name.slice(0, -3);
        const messages = parseCatalogue(await readFile(join(here, "po", name), "utf8"));
        const ofManifest = messages.filter(({ id }) => id === "" || shown.has(id));
        await put(`po.${language}.js`, scriptOf(language, messages));
        await put(`po.manifest.${language}.js`, scriptOf(language, ofManifest));
    }
}

/** The command's manual, as a page that the help leads to. */
function manual() {
    const text = execFileSync("mandoc", ["-T", "html", "-O", "fragment",
        join(here, "..", "data", "man", "vorn-openfiles.8")], { encoding: "utf8" });
    return `<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>vorn-openfiles(8)</title>
<link rel="stylesheet" href="manual.css">
</head>
<body>
${text.replace(/ style="[^"]*"/g, "")}</body>
</html>
`;
}

async function main() {
    await rm(target, { recursive: true, force: true });
    await mkdir(target, { recursive: true });
    const put = (name, text) => writeFile(join(target, name), text);
    const bundle = await script();
    await put("openfiles.js", bundle);
    await put("openfiles.css", await stylesheetOf(source("patternfly.css"), bundle));
    await put("manual.html", manual());
    for (const name of ["index.html", "manifest.json", "manual.css"]) {
        await put(name, await readFile(source(name), "utf8"));
    }
    await catalogues(put);
    await put("LICENSES.txt", await licencesOf(here));
}

await main();
