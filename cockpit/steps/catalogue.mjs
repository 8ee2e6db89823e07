// SPDX-License-Identifier: MIT

/** Catalogues of gettext (po/LANGUAGE.po) as scripts that Cockpit loads. */

/** Messages as [{id, plural, texts}], the header as the one with an empty id. */
export function parseCatalogue(text) {
    return text.split(/\n\s*\n/).map(messageOf).filter(message => message !== null);
}

function messageOf(block) {
    const values = {};
    let key = null;
    for (const line of block.split("\n")) {
        const [, name, quoted] = /^(?:(msgid_plural|msgid|msgstr(?:\[\d\])?)\s+)?("(?:[^"\\]|\\.)*")\s*$/.exec(line) ?? [];
        if (quoted !== undefined) {
            key = name ?? key;
            values[key] = (values[key] ?? "") + JSON.parse(quoted);
        }
    }
    if (values.msgid === undefined) {
        return null;
    }
    const texts = Object.keys(values).filter(name => name.startsWith("msgstr")).sort().map(name => values[name]);
    return { id: values.msgid, plural: values.msgid_plural, texts };
}

/** The script for a language: what Cockpit's own catalogues look like. */
export function scriptOf(language, messages) {
    const header = messages.find(message => message.id === "")?.texts[0] ?? "";
    const rule = /plural=([^;\n]+)/.exec(header)?.[1] ?? "n != 1";
    if (!/^[n0-9 ?:()%=!<>&|]+$/.test(rule)) {
        throw new Error(`${language}: the rule of plurals is no expression: ${rule}`);
    }
    const entries = messages.filter(({ id, texts }) => id !== "" && texts.every(text => text !== ""))
        .map(({ id, texts }) => `${JSON.stringify(id)}:${JSON.stringify([null, ...texts])}`);
    const about = `"":{"plural-forms":(n)=>Number(${rule}),"language":${JSON.stringify(language)},`
        + `"language-direction":"ltr"}`;
    return `cockpit.locale({${[about, ...entries].join(",\n")}});\n`;
}
