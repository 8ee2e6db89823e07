// SPDX-License-Identifier: MIT

/** What is shown, as the command itself would write it. Nothing stands where a number isn't known. */

export function toCsv(records, columns) {
    const rows = [columns, ...records.map(record => columns.map(column => record[column]))];
    return rows.map(row => row.map(cell).join(",") + "\n").join("");
}

function cell(value) {
    const text = String(value ?? "");
    return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}
