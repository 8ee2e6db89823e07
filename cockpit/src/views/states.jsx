// SPDX-License-Identifier: MIT
import { useEffect, useState } from "preact/hooks";
import { checkCommand, missingOf } from "../command.js";
import { _ } from "../i18n.js";
import { Alert, Button, Spinner } from "./parts.jsx";
import { AccessDialog } from "./access.jsx";

/** Why there is no answer, and what to do. */
export function Failure({ cockpit, failure, retry }) {
    const { title, advice } = wordsFor(failure.kind);
    const missing = useMissing(cockpit, failure);
    return (
        <div class="pf-v6-c-empty-state" role="alert">
            <div class="pf-v6-c-empty-state__content">
                <h1 class="pf-v6-c-empty-state__title-text">{title}</h1>
                <div class="pf-v6-c-empty-state__body">
                    <p>{advice}</p>
                    {failure.detail && <pre class="said"><bdi>{failure.detail}</bdi></pre>}
                    {missing.length > 0 && (
                        <ul class="missing">
                            {missing.map(({ text, advice: todo }) => (
                                <li key={text}><bdi>{text}</bdi><br /><strong><bdi>{todo}</bdi></strong></li>
                            ))}
                        </ul>
                    )}
                </div>
                <div class="pf-v6-c-empty-state__footer">
                    <Button kind="primary" onClick={retry}>{_("Try again")}</Button>
                </div>
            </div>
        </div>
    );
}

function wordsFor(kind) {
    const words = {
        missing: {
            title: _("The command vorn-openfiles is not installed"),
            advice: _("Install the package vorn-openfiles on this host, then try again."),
        },
        denied: {
            title: _("The command vorn-openfiles may not be run"),
            advice: _("Ask the administrator of this host for the right to run it."),
        },
        old: {
            title: _("The command vorn-openfiles is too old"),
            advice: _("Upgrade the package vorn-openfiles on this host, then try again."),
        },
        "no-volume": {
            title: _("No data volume is mounted"),
            advice: _("Mount the data file systems on /volume1, /volume2 and so on."),
        },
        failed: {
            title: _("The host gives no answer"),
            advice: _("The command has ended without an answer. It said:"),
        },
    };
    return words[kind];
}

/** What the command's own check of the host finds missing. */
function useMissing(cockpit, failure) {
    const [missing, setMissing] = useState([]);
    useEffect(() => {
        setMissing([]);
        if (failure.kind !== "failed") {
            return undefined;
        }
        const show = text => text && setMissing(missingOf(text));
        const check = cockpit.spawn(checkCommand(), { superuser: "try", err: "ignore" });
        check.then(show, (_error, text) => show(text));
        return () => check.close("cancelled");
    }, [cockpit, failure]);
    return missing;
}

/** The watch has ended, but there is something that can still be seen. */
export function Stale({ failure, retry }) {
    return (
        <Alert kind="danger" title={_("These files are no longer followed: the command has ended")}
               actions={<Button kind="link" onClick={retry}>{_("Look again")}</Button>}>
            {failure.detail && <bdi>{failure.detail}</bdi>}
        </Alert>
    );
}

/** The answer is known to lack something. */
export function Incomplete({ reason, superuser }) {
    const [asking, setAsking] = useState(false);
    const access = superuser.canStart && (
        <Button kind="link" onClick={() => setAsking(true)}>{_("Turn on administrative access")}</Button>
    );
    return (
        <Alert kind="warning" title={_("Some open files may be missing here")} actions={access || null}>
            <bdi>{reason}</bdi>
            {asking && <AccessDialog superuser={superuser} onClose={() => setAsking(false)} />}
        </Alert>
    );
}

export function Looking() {
    return (
        <div class="pf-v6-c-empty-state">
            <div class="pf-v6-c-empty-state__content">
                <Spinner label={_("Looking for open files")} />
            </div>
        </div>
    );
}

/** Nothing is open, or nothing of what is sought. */
export function Nothing({ narrowed, incomplete, clear }) {
    const title = narrowed ? _("No open file matches")
        : incomplete ? _("No open file can be seen") : _("No file is open");
    return (
        <div class="pf-v6-c-empty-state" role="status">
            <div class="pf-v6-c-empty-state__content">
                <h1 class="pf-v6-c-empty-state__title-text">{title}</h1>
                {narrowed && (
                    <div class="pf-v6-c-empty-state__footer">
                        <Button kind="link" onClick={clear}>{_("Clear all filters")}</Button>
                    </div>
                )}
            </div>
        </div>
    );
}
