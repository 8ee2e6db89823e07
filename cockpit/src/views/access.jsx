// SPDX-License-Identifier: MIT
import { useEffect, useState } from "preact/hooks";
import { _ } from "../i18n.js";
import { Alert, Button, Dialog, Spinner } from "./parts.jsx";

/** Asks what Cockpit's bridge asks for administrative access, mostly the user's password. */
export function AccessDialog({ superuser, onClose }) {
    const [question, setQuestion] = useState(null);
    const [answer, setAnswer] = useState("");
    const [refused, setRefused] = useState("");
    useEffect(() => {
        superuser.start(setQuestion).then(onClose, error => setRefused(error.message || _("Access was refused")));
    }, []);
    const send = event => {
        event.preventDefault();
        superuser.answer(answer);
        setQuestion(null);
        setAnswer("");
    };
    const cancel = () => {
        if (!refused) {
            superuser.stop();
        }
        onClose();
    };
    const footer = (
        <>
            {!refused && (
                <Button kind="primary" type="submit" form="access" disabled={!question}>{_("Authenticate")}</Button>
            )}
            <Button kind="link" onClick={cancel}>{refused ? _("Close") : _("Cancel")}</Button>
        </>
    );
    return (
        <Dialog title={_("Turn on administrative access")} onClose={cancel} footer={footer}>
            {refused && <Alert kind="danger" title={refused} />}
            {!refused && !question && <Spinner label={_("Please wait")} />}
            {question && !refused && (
                <form id="access" class="stack" onSubmit={send}>
                    {question.error && <Alert kind="danger" title={question.error} />}
                    {question.message && <p>{question.message}</p>}
                    <label class="field">
                        <span>{question.prompt}</span>
                        <span class="pf-v6-c-form-control">
                            <input type={question.echo ? "text" : "password"} value={answer} autofocus
                                   autocomplete="current-password" onInput={event => setAnswer(event.target.value)} />
                        </span>
                    </label>
                </form>
            )}
        </Dialog>
    );
}
