// SPDX-License-Identifier: MIT
import { build, transform } from "esbuild";
import { PurgeCSS } from "purgecss";

// What the page's script puts together, and what stands in no script.
const ALWAYS = [
    "pf-v6-theme-dark", "open", "html", "body", "dir", "rtl",
    ...["primary", "secondary", "link", "plain", "danger", "warning", "success", "info"].map(kind => `pf-m-${kind}`),
];

/** PatternFly's parts and the page's own rules as one stylesheet, cut to what the page can show. */
export async function stylesheetOf(entry, script) {
    const { outputFiles } = await build({
        entryPoints: [entry], bundle: true, write: false, external: ["*.woff2", "*.woff", "*.ttf"],
        loader: { ".svg": "dataurl" }, logLevel: "error",
    });
    const whole = withoutForeignFonts(outputFiles[0].text);
    const [{ css }] = await new PurgeCSS().purge({
        content: [{ raw: script, extension: "js" }],
        css: [{ raw: whole }],
        defaultExtractor: text => text.match(/[\w-]+/g) ?? [],
        safelist: ALWAYS,
        keyframes: true,
        variables: true,
    });
    return (await transform(css, { loader: "css", minify: true })).code;
}

/** Fonts are Cockpit's: only the rule that names those stays. */
function withoutForeignFonts(css) {
    return css.replace(/@font-face\s*{[^}]*}/g, rule => (rule.includes("../../static/fonts") ? rule : ""));
}
