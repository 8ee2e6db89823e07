// SPDX-License-Identifier: MIT
import { bytesOf, COLUMNS, NONE } from "../command.js";
import { _, bytes, time } from "../i18n.js";
import { piecesOf, plainOf } from "../names.js";

/** A name from the host, isolated from the direction of what stands around it. */
export function Name({ text, bytes }) {
    const pieces = piecesOf(text, bytes);
    return (
        <bdi>
            {pieces.map(({ text: shown, escape }, index) =>
                escape ? <span key={index} class="escape">{shown}</span> : shown)}
        </bdi>
    );
}

const KINDS = Object.fromEntries(COLUMNS.map(({ key, kind }) => [key, kind]));

/** What a record has in a column. */
export function Cell({ record, column }) {
    const text = record[column];
    if (KINDS[column] !== undefined && text !== NONE && text !== null) {
        const shown = { number: String, size: bytes, time }[KINDS[column]];
        return <span>{shown(text)}</span>;
    }
    return text === NONE || text === null
        ? <span class="none">{_("none")}</span>
        : <Name text={text} bytes={bytesOf(record, column)} />;
}

/** A facet's value where only plain text can stand. */
export function plainValue(value) {
    return value === NONE ? _("none") : plainOf(value);
}
