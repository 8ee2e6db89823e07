// SPDX-License-Identifier: MIT

/** Cockpit's own administrative access: its bridge asks what sudo or polkit ask. */
export class Superuser {
    #proxy;

    constructor(cockpit, changed) {
        this.#proxy = cockpit.dbus(null, { bus: "internal" }).proxy("cockpit.Superuser", "/superuser");
        this.#proxy.addEventListener("changed", changed);
    }

    /** Whether there is a way to get it, and it isn't had already. */
    get canStart() {
        return this.#proxy.valid && this.#proxy.Current === "none" && this.#ways().length > 0;
    }

    /**
     * Begins; ask({message, prompt, error, echo}) is called for each question. Settles when it is
     * had or refused. Cockpit then loads the page again.
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
