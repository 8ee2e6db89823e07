// SPDX-License-Identifier: MIT

/**
 * Cockpit's own administrative access: its bridge asks what sudo or polkit ask. cockpit.permission()
 * can't stand beside it: that loads the page again as soon as the bridge begins to ask.
 */
export class Superuser {
    #proxy;
    #before = null;

    /** @param reload called when it is had, or no more: what was begun before has the other rights */
    constructor(cockpit, changed, reload) {
        this.#proxy = cockpit.dbus(null, { bus: "internal" }).proxy("cockpit.Superuser", "/superuser");
        this.#proxy.addEventListener("changed", () => {
            const before = this.#before;
            this.#before = this.allowed;
            if (before !== null && this.allowed !== null && before !== this.allowed) {
                reload();
            }
            changed();
        });
    }

    /** Whether it is had; null as long as that isn't known. While the bridge asks it is not had yet. */
    get allowed() {
        return this.#proxy.valid ? this.#proxy.Current !== "none" && this.#proxy.Current !== "init" : null;
    }

    /** Whether there is a way to get it, and it isn't had already. */
    get canStart() {
        return this.#proxy.valid && this.#proxy.Current === "none" && this.#ways().length > 0;
    }

    /**
     * Begins; ask({message, prompt, error, echo}) is called for each question. Settles when it is
     * had or refused.
     */
    async start(ask) {
        const onPrompt = (_event, message, prompt, _preset, echo, error) =>
            ask({ message, prompt, echo, error });
        this.#proxy.addEventListener("Prompt", onPrompt);
        try {
            await this.#proxy.Start(this.#ways()[0]);
        } finally {
            this.#proxy.removeEventListener("Prompt", onPrompt);
        }
    }

    answer(text) {
        this.#proxy.Answer(text);
    }

    stop() {
        this.#proxy.Stop();
    }

    #ways() {
        return this.#proxy.Bridges ?? [];
    }
}
