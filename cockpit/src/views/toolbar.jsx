// SPDX-License-Identifier: MIT
import { documentOf, FACETS } from "../command.js";
import { toCsv } from "../export.js";
import { _, columnKeys, columnLabel, plural } from "../i18n.js";
import { withColumn } from "../selection.js";
import { Button, Check, Dropdown } from "./parts.jsx";

export function Toolbar({ live, shown, selection, select, askWhetherFree }) {
    return (
        <div class="toolbar" role="toolbar" aria-label={_("View")}>
            <span class="pf-v6-c-form-control search">
                <input type="search" aria-label={_("Search")} placeholder={_("Search")} value={selection.search}
                       onInput={event => select({ ...selection, search: event.target.value })} />
            </span>
            <GroupBy selection={selection} select={select} />
            <Columns selection={selection} select={select} />
            <Export shown={shown} columns={selection.columns} live={live} />
            {askWhetherFree && <Button onClick={askWhetherFree}>{_("Is it free?")}</Button>}
            <Pause live={live} />
        </div>
    );
}

function GroupBy({ selection, select }) {
    return (
        <label class="group-by">
            <span>{_("Group by")}</span>
            <span class="pf-v6-c-form-control">
                <select value={selection.group}
                        onChange={event => select({ ...selection, group: event.target.value })}>
                    <option value="">{_("nothing")}</option>
                    {FACETS.map(facet => <option key={facet} value={facet}>{columnLabel(facet)}</option>)}
                </select>
            </span>
        </label>
    );
}

function Columns({ selection, select }) {
    return (
        <Dropdown label={_("Columns")}>
            {() => columnKeys.map(key => (
                <Check key={key} label={columnLabel(key)} checked={selection.columns.includes(key)}
                       onChange={event => select(withColumn(selection, key, event.target.checked))} />
            ))}
        </Dropdown>
    );
}

function Export({ shown, columns, live }) {
    const open = () => shown.filter(record => record.mark !== "closed");
    return (
        <Dropdown label={_("Export")}>
            {close => (
                <>
                    <Button kind="link" onClick={() => {
                        download("open-files.csv", "text/csv", toCsv(open(), columns));
                        close();
                    }}>{_("As CSV")}</Button>
                    <Button kind="link" onClick={() => {
                        download("open-files.json", "application/json", documentOf(open(), {
                            machine: live.machine, incomplete: live.incomplete, at: new Date(),
                        }));
                        close();
                    }}>{_("As JSON")}</Button>
                </>
            )}
        </Dropdown>
    );
}

function download(name, type, text) {
    const address = URL.createObjectURL(new Blob([text], { type }));
    const link = document.createElement("a");
    link.href = address;
    link.download = name;
    link.click();
    // Not at once: the browser reads it after this.
    setTimeout(() => URL.revokeObjectURL(address), 60000);
}

function Pause({ live }) {
    return (
        <>
            <Button aria-pressed={live.paused} onClick={() => live.pause(!live.paused)}>
                {live.paused ? _("Resume") : _("Pause")}
            </Button>
            {live.paused && live.waiting > 0 && (
                <span role="status">{plural("$0 change waiting", "$0 changes waiting", live.waiting)}</span>
            )}
        </>
    );
}
