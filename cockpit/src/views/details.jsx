// SPDX-License-Identifier: MIT
import { useEffect, useRef, useState } from "preact/hooks";
import { detailsCommand, detailsOf, filenameOf, NONE } from "../command.js";
import { _, columnLabel, format, plural } from "../i18n.js";
import { Cell, Name } from "./name.jsx";
import { Button, CloseButton } from "./parts.jsx";

const SHOWN = [
    "service", "user", "host", "share", "command", "pid", "owner", "unit", "started", "mode", "size",
];
// Others of the same connection that are listed.
const OTHERS = 50;

/** Everything about one record, beside the table. */
export function Details({ cockpit, record: listed, records, open, close, disconnect }) {
    const panel = useRef();
    const record = useDetails(cockpit, listed);
    useEffect(() => panel.current.focus(), [record.id]);
    const kinds = [record.deleted && _("deleted"), record.folder && _("folder"), record.hidden && _("hidden")]
        .filter(kind => kind);
    return (
        <aside class="details" ref={panel} tabIndex={-1} aria-labelledby="details-title"
               onKeyDown={event => event.key === "Escape" && close()}>
            <header>
                <h2 id="details-title" class="pf-v6-c-title pf-m-lg">
                    <Name {...filenameOf(record)} />
                </h2>
                <CloseButton label={_("Close details")} onClick={close} />
            </header>
            <dl class="pf-v6-c-description-list">
                <Term label={columnLabel("full_path")}>
                    <code class="full-path"><Cell record={record} column="full_path" /></code>
                </Term>
                {kinds.length > 0 && <Term label={_("Kind")}>{kinds.join(", ")}</Term>}
                {SHOWN.map(column => (
                    <Term key={column} label={columnLabel(column)}><Cell record={record} column={column} /></Term>
                ))}
                {record.locks.length > 0 && (
                    <Term label={_("Locks")}>
                        {record.locks.map((lock, index) => <Lock key={index} lock={lock} />)}
                    </Term>
                )}
            </dl>
            {disconnect && isClient(record) && (
                <Button kind="danger" small onClick={disconnect}>{_("Disconnect")}</Button>
            )}
            <Others record={record} records={records} open={open} />
        </aside>
    );
}

/** The record with all that the command can tell of it, once it has. */
function useDetails(cockpit, record) {
    const [details, setDetails] = useState(null);
    useEffect(() => {
        const show = text => setDetails(detailsOf(text, record));
        const asked = cockpit.spawn(detailsCommand(record), { superuser: "try", err: "ignore" });
        // What can't be told stays as the table has it.
        asked.then(show, () => {});
        return () => asked.close("cancelled");
    }, [record.id]);
    return details?.id === record.id ? details : record;
}

function Term({ label, children }) {
    return (
        <div class="pf-v6-c-description-list__group">
            <dt class="pf-v6-c-description-list__term">
                <span class="pf-v6-c-description-list__text">{label}</span>
            </dt>
            <dd class="pf-v6-c-description-list__description">
                <div class="pf-v6-c-description-list__text">{children}</div>
            </dd>
        </div>
    );
}

/** A lock that the process has on the file, and who waits for it. */
function Lock({ lock }) {
    const { kind, access, begin, end, awaited_by: waiting } = lock;
    return (
        <div>
            {`${kind} ${access} ${begin}–${end ?? "∞"}`}
            {waiting.map(({ pid, command, command_b64: bytes }) => (
                <div key={pid}>
                    {format(_("Process $0 waits for it:"), pid)} <Name text={command ?? NONE} bytes={bytes} />
                </div>
            ))}
        </div>
    );
}

function Others({ record, records, open }) {
    const others = records.filter(other => other.id !== record.id && isSameConnection(other, record));
    if (others.length === 0) {
        return null;
    }
    return (
        <section>
            <h3 class="pf-v6-c-title pf-m-md">
                {isClient(record)
                    ? plural("$0 other file of this connection", "$0 other files of this connection", others.length)
                    : plural("$0 other file of this process", "$0 other files of this process", others.length)}
            </h3>
            <ul class="others">
                {others.slice(0, OTHERS).map(other => (
                    <li key={other.id}>
                        <button type="button" class="open" onClick={() => open(other)}>
                            <Cell record={other} column="path" />
                        </button>
                    </li>
                ))}
            </ul>
        </section>
    );
}

function isClient(record) {
    return record.user !== NONE || record.host !== NONE;
}

function isSameConnection(a, b) {
    return a.pid === b.pid && a.user === b.user && a.host === b.host && a.mark !== "closed";
}
