// SPDX-License-Identifier: MIT
import { useState } from "preact/hooks";
import { _ } from "../i18n.js";
import { Alert, Button } from "./parts.jsx";

const SEEN = "vorn-openfiles:help-seen";

/** Three sentences for who is here for the first time. */
export function Help() {
    const [seen, setSeen] = useState(() => localStorage.getItem(SEEN) !== null);
    if (seen) {
        return null;
    }
    const done = () => {
        localStorage.setItem(SEEN, "1");
        setSeen(true);
    };
    return (
        <Alert kind="info" title={_("What this page shows")}
               actions={(
                   <>
                       <a class="pf-v6-c-button pf-m-link" href="manual.html" target="_blank" rel="noopener">
                           <span class="pf-v6-c-button__text">{_("Read the manual")}</span>
                       </a>
                       <Button kind="link" onClick={done}>{_("Got it")}</Button>
                   </>
               )}>
            <p>
                {_("These are the files that are open on the data volumes, by which service, for which user and from which host.")}
                {" "}{_("The table follows what opens and closes; filters, search and groups narrow it down.")}
                {" "}{_("Choose a row for everything about it.")}
            </p>
        </Alert>
    );
}
