// SPDX-License-Identifier: MIT

/** Dark or light as Cockpit's own pages are: as chosen in its menu, else as the system has it. */
export function followTheme(window) {
    const system = window.matchMedia("(prefers-color-scheme: dark)");
    const apply = chosen => {
        const style = chosen ?? window.localStorage.getItem("shell:style") ?? "auto";
        const dark = style === "dark" || (style === "auto" && system.matches);
        window.document.documentElement.classList.toggle("pf-v6-theme-dark", dark);
    };
    window.addEventListener("storage", event => event.key === "shell:style" && apply());
    window.addEventListener("cockpit-style", event => apply(event.detail.style));
    system.addEventListener("change", () => apply());
    apply();
}
