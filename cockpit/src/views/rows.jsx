// SPDX-License-Identifier: MIT

/** Short tables of dialogues. */
import { plural } from "../i18n.js";
import { Name } from "./name.jsx";

// Rows, and files in one of them, that are listed.
const ROWS = 200;
const FILES = 5;

export function Rows({ label, heads, rows }) {
    return (
        <>
            <table class="pf-v6-c-table pf-m-compact" aria-label={label}>
                <thead class="pf-v6-c-table__thead">
                    <tr class="pf-v6-c-table__tr">
                        {heads.map(head => <th key={head} scope="col" class="pf-v6-c-table__th">{head}</th>)}
                    </tr>
                </thead>
                <tbody class="pf-v6-c-table__tbody">
                    {rows.slice(0, ROWS).map((cells, row) => (
                        <tr key={row} class="pf-v6-c-table__tr">
                            {cells.map((cell, column) => <td key={column} class="pf-v6-c-table__td">{cell}</td>)}
                        </tr>
                    ))}
                </tbody>
            </table>
            <More count={rows.length - ROWS} />
        </>
    );
}

/** The first of some files, and how many more there are. */
export function FileNames({ files }) {
    return (
        <>
            {files.slice(0, FILES).map((file, index) => (
                <div key={index} class="held-file"><Name text={file.path} bytes={file.path_b64} /></div>
            ))}
            <More count={files.length - FILES} />
        </>
    );
}

function More({ count }) {
    return count > 0 ? plural("and $0 more", "and $0 more", count) : null;
}
