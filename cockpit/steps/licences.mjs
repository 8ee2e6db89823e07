// SPDX-License-Identifier: MIT
import { readFile } from "node:fs/promises";
import { join } from "node:path";

/** The licences of what the page is made of, to be installed beside it. */
export async function licencesOf(folder) {
    const versionOf = async name => {
        const text = await readFile(join(folder, "node_modules", name, "package.json"), "utf8");
        return `${name} ${JSON.parse(text).version}`;
    };
    const parts = [
        ["vorn-openfiles", join("..", "LICENSE")],
        [await versionOf("preact"), join("node_modules", "preact", "LICENSE")],
        // Its package has the licence's name only.
        [await versionOf("@patternfly/patternfly"), join("licences", "patternfly.txt")],
    ];
    const texts = await Promise.all(parts.map(async ([title, file]) =>
        `${title}\n${"=".repeat(title.length)}\n\n${await readFile(join(folder, file), "utf8")}`));
    return texts.join("\n\n");
}
