// SPDX-License-Identifier: MIT
import { useEffect, useState } from "preact/hooks";
import { disconnectCommand, disconnectionOf, failureOf } from "../command.js";
import { _, plural } from "../i18n.js";
import { Name } from "./name.jsx";
import { Alert, Button, Dialog, Spinner } from "./parts.jsx";
import { FileNames, Rows } from "./rows.jsx";

/** Ends the connections of records: shows first whose these are and what else they hold. */
export function DisconnectDialog({ cockpit, records, onClose }) {
    const { answer, failure, ending, end } = useDisconnection(cockpit, records);
    const canEnd = answer?.state === "planned" && !ending;
    const footer = (
        <>
            {canEnd && <Button kind="danger" onClick={end}>{_("Disconnect")}</Button>}
            <Button kind="link" onClick={onClose}>{canEnd ? _("Cancel") : _("Close")}</Button>
        </>
    );
    return (
        <Dialog title={_("Disconnect")} onClose={onClose} footer={footer}>
            <div class="stack" aria-live="polite">
                {(!answer && !failure || ending) && <Spinner label={_("Please wait")} />}
                {failure && (
                    <Alert kind="danger" title={_("The host gives no answer")}><bdi>{failure.detail}</bdi></Alert>
                )}
                {answer && <Answer answer={answer} />}
            </div>
        </Dialog>
    );
}

/** What would end, then what has ended. */
function useDisconnection(cockpit, records) {
    const [result, setResult] = useState({ answer: null, failure: null, ending: false });
    const ask = dry => {
        const asked = cockpit.spawn(disconnectCommand(records, { dry }), { superuser: "require", err: "message" });
        const done = (text, error) => setResult(text
            ? { answer: disconnectionOf(text, records), failure: null, ending: false }
            : { answer: null, failure: failureOf(error, ""), ending: false });
        // Nothing to end is status 1, something that remains is 2: both with a document.
        asked.then(text => done(text), (error, text) => done(text, error));
        return asked;
    };
    useEffect(() => {
        const asked = ask(true);
        return () => asked.close("cancelled");
    }, []);
    const end = () => {
        setResult({ ...result, ending: true });
        // Who closes the dialogue now has ended them all the same.
        ask(false);
    };
    return { ...result, end };
}

function Answer({ answer }) {
    const { state, reason, connections, leftAlone, heldSince } = answer;
    const ended = connections.filter(connection => connection.state !== "remaining").length;
    const titles = {
        nothing: ["info", _("There is no connection to end")],
        planned: ["warning",
                  plural("$0 connection will be ended", "$0 connections will be ended", connections.length)],
        ended: ["success", plural("$0 connection has ended", "$0 connections have ended", ended)],
        remaining: ["warning", _("Not everything has ended")],
    };
    const [kind, title] = titles[state];
    return (
        <>
            <Alert kind={kind} title={title}>
                {state === "planned" && <p>{_("What these users have not saved may be lost.")}</p>}
                {reason && <p><bdi>{reason}</bdi></p>}
            </Alert>
            {connections.length > 0 && <Connections connections={connections} />}
            {leftAlone.length > 0 && <LeftAlone processes={leftAlone} />}
            {heldSince.length > 0 && (
                <section>
                    <h2 class="pf-v6-c-title pf-m-md">{_("Opened again meanwhile")}</h2>
                    <FileNames files={heldSince} />
                </section>
            )}
        </>
    );
}

function Connections({ connections }) {
    const heads = [_("Service"), _("User"), _("Host"), _("Chosen files"), _("Other files"), _("State")];
    return (
        <Rows label={_("Connections")} heads={heads} rows={connections.map(connection => [
            <Name text={connection.service} bytes={connection.service_b64} />,
            <Name text={connection.user} bytes={connection.user_b64} />,
            <Name text={connection.host} bytes={connection.host_b64} />,
            <FileNames files={connection.chosen} />,
            <FileNames files={connection.others} />,
            stateLabel(connection.state),
        ])} />
    );
}

function LeftAlone({ processes }) {
    return (
        <Rows label={_("Left alone")} heads={[_("Left alone"), _("Reason"), _("What would end it"), _("Files")]}
              rows={processes.map(process => [
                  <><Name text={process.program} bytes={process.program_b64} /> ({process.pid})</>,
                  whyLabel(process.why),
                  <code><Name text={process.remedy} bytes={process.remedy_b64} /></code>,
                  <FileNames files={process.selected} />,
              ])} />
    );
}

function stateLabel(state) {
    const labels = {
        planned: _("will be ended"),
        ended: _("ended"),
        left: _("was gone before"),
        remaining: _("still there"),
    };
    return labels[state] ?? state;
}

function whyLabel(why) {
    const labels = {
        "no client": _("it serves no client"),
        "other service": _("its service can't be asked to disconnect its clients"),
        daemon: _("it is a server, and other clients would go with it"),
        init: _("it is the first process of a container"),
        own: _("this page runs over its connection"),
        apart: _("it has left its client's session"),
        unknown: _("it can't be told what it serves"),
    };
    return labels[why] ?? why;
}
