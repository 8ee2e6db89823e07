// SPDX-License-Identifier: MIT

/** PatternFly's parts, as far as the page has them. */
import { useEffect, useId, useRef, useState } from "preact/hooks";
import { _ } from "../i18n.js";

export function Button({ kind = "secondary", small, children, ...rest }) {
    return (
        <button type="button" class={`pf-v6-c-button pf-m-${kind}${small ? " pf-m-small" : ""}`} {...rest}>
            <span class="pf-v6-c-button__text">{children}</span>
        </button>
    );
}

export function CloseButton({ label = _("Close"), onClick }) {
    return (
        <button type="button" class="pf-v6-c-button pf-m-plain" aria-label={label} onClick={onClick}>
            <span class="pf-v6-c-button__icon"><Cross /></span>
        </button>
    );
}

export function Cross() {
    return (
        <svg viewBox="0 0 10 10" width="0.75em" height="0.75em" aria-hidden="true">
            <path d="M1 1 9 9M9 1 1 9" stroke="currentColor" stroke-width="1.6" fill="none" />
        </svg>
    );
}

/** A message in the page; live, so that a screen reader tells it as it appears. */
export function Alert({ kind, title, children, actions }) {
    return (
        <div class={`pf-v6-c-alert pf-m-inline pf-m-${kind}`} role={kind === "danger" ? "alert" : "status"}>
            <div class="pf-v6-c-alert__icon" aria-hidden="true">{kind === "info" ? "i" : "!"}</div>
            <p class="pf-v6-c-alert__title">{title}</p>
            {children && <div class="pf-v6-c-alert__description">{children}</div>}
            {actions && <div class="pf-v6-c-alert__action-group">{actions}</div>}
        </div>
    );
}

export function Spinner({ label }) {
    return (
        <svg class="pf-v6-c-spinner pf-m-lg" role="progressbar" viewBox="0 0 100 100" aria-label={label}>
            <circle class="pf-v6-c-spinner__path" cx="50" cy="50" r="45" fill="none" />
        </svg>
    );
}

/** A button that opens a panel below it; Escape and a click elsewhere close that. */
export function Dropdown({ label, children }) {
    const [open, setOpen] = useState(false);
    const root = useRef();
    const id = useId();
    useEffect(() => {
        if (!open) {
            return undefined;
        }
        const close = event => !root.current.contains(event.target) && setOpen(false);
        document.addEventListener("pointerdown", close);
        document.addEventListener("focusin", close);
        return () => {
            document.removeEventListener("pointerdown", close);
            document.removeEventListener("focusin", close);
        };
    }, [open]);
    const onKeyDown = event => {
        if (event.key === "Escape" && open) {
            setOpen(false);
            root.current.querySelector("button").focus();
        }
    };
    return (
        <div class="dropdown" ref={root} onKeyDown={onKeyDown}>
            <Button aria-expanded={open} aria-controls={open ? id : undefined} onClick={() => setOpen(!open)}>
                {label} <span aria-hidden="true">▾</span>
            </Button>
            {open && <div class="dropdown-panel" id={id}>{children(() => setOpen(false))}</div>}
        </div>
    );
}

export function Check({ label, count, ...rest }) {
    return (
        <label class="pf-v6-c-check">
            <input class="pf-v6-c-check__input" type="checkbox" {...rest} />
            <span class="pf-v6-c-check__label">{label}</span>
            {count !== undefined && <span class="pf-v6-c-badge pf-m-read">{count}</span>}
        </label>
    );
}

/** A dialogue of the browser's own, which keeps the focus and ends with Escape. */
export function Dialog({ title, onClose, footer, children }) {
    const dialog = useRef();
    const id = useId();
    useEffect(() => {
        const before = document.activeElement;
        dialog.current.showModal();
        return () => before?.focus();
    }, []);
    return (
        <dialog ref={dialog} class="pf-v6-c-modal-box pf-m-md" aria-labelledby={id} onClose={onClose}>
            <div class="pf-v6-c-modal-box__close"><CloseButton onClick={onClose} /></div>
            <header class="pf-v6-c-modal-box__header">
                <h1 class="pf-v6-c-modal-box__title" id={id}>{title}</h1>
            </header>
            <div class="pf-v6-c-modal-box__body">{children}</div>
            {footer && <footer class="pf-v6-c-modal-box__footer">{footer}</footer>}
        </dialog>
    );
}
