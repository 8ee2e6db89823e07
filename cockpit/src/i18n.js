// SPDX-License-Identifier: MIT

/** The page's words in the language of Cockpit, whose own loading of catalogues has been before. */
import { COLUMNS } from "./command.js";

const cockpit = () => globalThis.cockpit;

export const _ = text => cockpit().gettext(text);

/** $0, $1 ... are replaced by what follows. */
export const format = (text, ...values) => cockpit().format(text, ...values);

/** "$0" stands for the number. */
export const plural = (one, many, number) =>
    format(cockpit().ngettext(one, many, number), number.toLocaleString(locale()));

/** As Cockpit's own languages are called where the browser's are meant. */
export const locale = () => cockpit().language.replace("_", "-");

export function columnLabel(key) {
    const labels = {
        service: _("Service"),
        user: _("User"),
        host: _("Host"),
        share: _("Share"),
        path: _("Path"),
        command: _("Process"),
        pid: _("Process ID"),
        owner: _("Owner"),
        unit: _("Unit"),
        mode: _("Mode"),
        size: _("Size"),
        started: _("Since"),
        full_path: _("Full path"),
    };
    return labels[key];
}

export const bytes = number => cockpit().format_bytes(number);

/** A time of the command for people. */
export const time = text =>
    new Intl.DateTimeFormat(locale(), { dateStyle: "short", timeStyle: "medium" }).format(new Date(text));

export const columnKeys = COLUMNS.map(column => column.key);
