// SPDX-License-Identifier: MIT
import { render } from "preact";
import { _ } from "./i18n.js";
import { Live } from "./live.js";
import { followTheme } from "./theme.js";
import { App } from "./views/app.jsx";

const { cockpit } = globalThis;

// Names of services in the page's language, whichever the session has.
const spawn = (command, options) =>
    cockpit.spawn(command, { ...options, environ: [`LANGUAGE=${cockpit.language}`] });

followTheme(window);
cockpit.transport.wait(() => {
    document.documentElement.lang = cockpit.language.replace("_", "-");
    document.documentElement.dir = cockpit.language_direction ?? "ltr";
    document.title = _("Open files");
    render(<App cockpit={cockpit} createLive={changed => new Live(spawn, changed)} />,
           document.getElementById("app"));
});
