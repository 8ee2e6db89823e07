// SPDX-License-Identifier: MIT
import { useEffect, useRef, useState } from "preact/hooks";
import { busyCommand, busyOf, failureOf, folderOfShare, volumeOf } from "../command.js";
import { _, format } from "../i18n.js";
import { plainOf } from "../names.js";
import { Name } from "./name.jsx";
import { Alert, Button, Dialog, Spinner } from "./parts.jsx";
import { FileNames, Rows } from "./rows.jsx";

// Between two questions while it is waited.
const PAUSE = 2000;

/** Asks what keeps a volume or a share in use, again and again until nothing does where wished. */
export function BusyDialog({ cockpit, records, path: first, onClose }) {
    const [path, setPath] = useState(first);
    const [asked, setAsked] = useState("");
    const [waiting, setWaiting] = useState(false);
    const { answer, failure, asking, ask } = useBusy(cockpit, asked, waiting);
    const [places] = useState(() => placesOf(records));
    const submit = event => {
        event.preventDefault();
        setWaiting(false);
        setAsked(path);
        ask(path);
    };
    const canWait = answer?.state === "busy" && !waiting;
    const footer = (
        <>
            {canWait && (
                <Button kind="primary" onClick={() => setWaiting(true)}>{_("Wait until it is free")}</Button>
            )}
            {waiting && answer?.state !== "free" && (
                <Button onClick={() => setWaiting(false)}>{_("Stop waiting")}</Button>
            )}
            <Button kind="link" onClick={onClose}>{_("Close")}</Button>
        </>
    );
    return (
        <Dialog title={_("Is it free?")} onClose={onClose} footer={footer}>
            <form class="stack" onSubmit={submit}>
                <p>{_("A share or volume is free when nothing keeps it from being unmounted.")}</p>
                <label class="field">
                    <span>{_("Share, volume or folder")}</span>
                    <span class="pf-v6-c-form-control">
                        <input name="path" list="places" value={path} required pattern="/.*"
                               onInput={event => setPath(event.target.value)} />
                    </span>
                    <datalist id="places">{places.map(place => <option key={place} value={place} />)}</datalist>
                </label>
                <div><Button type="submit" disabled={path === ""}>{_("Ask")}</Button></div>
            </form>
            <div class="stack answer" aria-live="polite">
                {asking && !answer && <Spinner label={_("Please wait")} />}
                {failure && (
                    <Alert kind="danger" title={_("The host gives no answer")}><bdi>{failure.detail}</bdi></Alert>
                )}
                {answer && <Answer answer={answer} path={asked} waiting={waiting} />}
            </div>
        </Dialog>
    );
}

/** Shares and volumes that something is open on. */
function placesOf(records) {
    const places = new Set();
    for (const record of records) {
        places.add(volumeOf(record));
        places.add(folderOfShare(record));
    }
    places.delete("");
    return [...places].sort();
}

function useBusy(cockpit, path, waiting) {
    const [result, setResult] = useState({ answer: null, failure: null, asking: false });
    const process = useRef(null);
    const end = () => {
        process.current?.close("cancelled");
        process.current = null;
    };
    const ask = (what, last = null) => {
        end();
        setResult({ answer: last, failure: null, asking: true });
        const mine = cockpit.spawn(busyCommand(what), { superuser: "require", err: "message" });
        process.current = mine;
        const done = (text, error) => {
            if (process.current === mine) {
                setResult(text
                    ? { answer: busyOf(text), failure: null, asking: false }
                    : { answer: null, failure: failureOf(error, ""), asking: false });
            }
        };
        // Free is status 1, unknown is 2: both with a document.
        mine.then(text => done(text), (error, text) => done(text, error));
    };
    useEffect(() => end, []);
    useEffect(() => {
        if (!waiting || result.asking || result.failure || result.answer?.state === "free") {
            return undefined;
        }
        const timer = setTimeout(() => ask(path, result.answer), PAUSE);
        return () => clearTimeout(timer);
    }, [waiting, result]);
    return { ...result, ask };
}

function Answer({ answer, path, waiting }) {
    const place = plainOf(path);
    const titles = {
        free: ["success", format(_("$0 is free"), place)],
        busy: ["warning", format(_("$0 is in use"), place)],
        unknown: ["warning", format(_("It can't be told whether $0 is free"), place)],
    };
    const [kind, title] = titles[answer.state];
    return (
        <>
            <Alert kind={kind} title={title}>
                {waiting && answer.state !== "free" && <p>{_("Waiting until it is free …")}</p>}
                {[...answer.reasons, ...answer.notes].map(text => <p key={text}><bdi>{text}</bdi></p>)}
            </Alert>
            {answer.holders.length > 0 && <Holders holders={answer.holders} />}
        </>
    );
}

function Holders({ holders }) {
    const heads = [_("Reason"), _("Process"), _("User"), _("Host"), _("Files")];
    return (
        <Rows label={_("What keeps it in use")} heads={heads} rows={holders.map(holder => [
            reasonLabel(holder.reason),
            holder.pid === "-" ? <Name text={holder.device} bytes={holder.device_b64} />
                : <><Name text={holder.command} bytes={holder.command_b64} /> ({holder.pid})</>,
            holder.user === "-" ? <Name text={holder.owner} bytes={holder.owner_b64} />
                : <Name text={holder.user} bytes={holder.user_b64} />,
            <Name text={holder.host} bytes={holder.host_b64} />,
            <FileNames files={holder.files} />,
        ])} />
    );
}

function reasonLabel(reason) {
    const labels = {
        file: _("open file"),
        "working directory": _("working directory"),
        "root directory": _("root directory"),
        program: _("program"),
        mapping: _("mapping"),
        socket: _("socket"),
        "loop device": _("loop device"),
        "device mapper": _("device mapper"),
        swap: _("swap"),
        mount: _("mount"),
        "NFS export": _("NFS export"),
        "NFS client": _("NFS client"),
        "NFS lock": _("NFS lock"),
    };
    return labels[reason] ?? reason;
}
