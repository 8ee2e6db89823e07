// SPDX-License-Identifier: MIT

/** Names are bytes that anybody may have chosen. They are shown as what they are, never as what
 * they would do: characters that can't be seen, that turn the direction of writing or that are no
 * text at all are written as escapes. */

// Controls, separators of lines, marks of direction, characters without width, unassigned planes.
const UNSEEN = /[\p{Cc}\p{Cf}\p{Cs}\p{Co}\p{Zl}\p{Zp}]/u;

/** A name as pieces {text, escape}; bytes is its base64 where it is no UTF-8. */
export function piecesOf(text, bytes) {
    const pieces = [];
    for (const { shown, escape } of bytes === undefined ? ofText(text) : ofBytes(decode(bytes))) {
        const last = pieces.at(-1);
        if (last && last.escape === escape) {
            last.text += shown;
        } else {
            pieces.push({ text: shown, escape });
        }
    }
    return pieces;
}

/** The same as one text, for titles and labels, which have text only. */
export function plainOf(text, bytes) {
    return piecesOf(text, bytes).map(piece => piece.text).join("");
}

function* ofText(text) {
    for (const character of text) {
        yield UNSEEN.test(character)
            ? { shown: escapeOf(character), escape: true }
            : { shown: character, escape: false };
    }
}

function escapeOf(character) {
    const simple = { "\n": "\\n", "\r": "\\r", "\t": "\\t" }[character];
    const code = character.codePointAt(0).toString(16).toUpperCase();
    return simple ?? (code.length <= 2 ? `\\x${code.padStart(2, "0")}` : `\\u{${code}}`);
}

function* ofBytes(bytes) {
    const strict = new TextDecoder("utf-8", { fatal: true, ignoreBOM: true });
    for (let start = 0; start < bytes.length;) {
        const length = lengthOf(bytes[start]);
        try {
            yield* ofText(strict.decode(bytes.subarray(start, start + length)));
            start += length;
        } catch {
            const code = bytes[start].toString(16).toUpperCase().padStart(2, "0");
            yield { shown: `\\x${code}`, escape: true };
            ++start;
        }
    }
}

function lengthOf(lead) {
    return lead < 0x80 ? 1 : lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc0 ? 2 : 1;
}

function decode(base64) {
    return Uint8Array.from(atob(base64), character => character.charCodeAt(0));
}
