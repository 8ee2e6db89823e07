// SPDX-License-Identifier: MIT
import { useState } from "preact/hooks";
import { FACETS } from "../command.js";
import { ranked } from "../facets.js";
import { _, columnLabel, format, locale, plural } from "../i18n.js";
import { chips, cleared, isNarrowed, toggled } from "../selection.js";
import { plainValue } from "./name.jsx";
import { Button, Check, Cross } from "./parts.jsx";

// More values than these are shown on request.
const FEW = 6;
const MANY = 200;

export function Facets({ counts, selection, select }) {
    return (
        <aside class="facets" aria-label={_("Filters")}>
            {FACETS.map(facet => (
                <Facet key={facet} facet={facet} counts={counts[facet]} chosen={selection.chosen[facet]}
                       onToggle={value => select(toggled(selection, facet, value))} />
            ))}
        </aside>
    );
}

function Facet({ facet, counts, chosen, onToggle }) {
    const [all, setAll] = useState(false);
    const values = ranked(counts);
    const shown = values.slice(0, all ? MANY : FEW);
    const seen = new Set(shown.map(([value]) => value));
    const further = values.filter(([value]) => chosen.includes(value) && !seen.has(value));
    return (
        <fieldset class="facet">
            <legend>{columnLabel(facet)}</legend>
            {[...shown, ...further].map(([value, count]) => (
                <Check key={value} label={<bdi>{plainValue(value)}</bdi>} count={count.toLocaleString(locale())}
                       checked={chosen.includes(value)} onChange={() => onToggle(value)} />
            ))}
            {values.length > FEW && (
                <Button kind="link" small onClick={() => setAll(!all)}>
                    {all ? _("Show less")
                        : plural("Show $0 more", "Show $0 more", values.length - FEW)}
                </Button>
            )}
        </fieldset>
    );
}

/** What is chosen, each with a button that takes it back. */
export function Chips({ selection, select }) {
    if (!isNarrowed(selection)) {
        return null;
    }
    return (
        <div class="chips" role="group" aria-label={_("Chosen filters")}>
            {chips(selection).map(([facet, value]) => (
                <span key={`${facet}:${value}`} class="pf-v6-c-label pf-m-outline">
                    <span class="pf-v6-c-label__content">
                        <span class="pf-v6-c-label__text">
                            {columnLabel(facet)}: <bdi>{plainValue(value)}</bdi>
                        </span>
                    </span>
                    <span class="pf-v6-c-label__actions">
                        <button type="button" class="pf-v6-c-button pf-m-plain pf-m-no-padding"
                                aria-label={format(_("Remove $0"), plainValue(value))}
                                onClick={() => select(toggled(selection, facet, value))}>
                            <span class="pf-v6-c-button__icon"><Cross /></span>
                        </button>
                    </span>
                </span>
            ))}
            <Button kind="link" small onClick={() => select(cleared(selection))}>{_("Clear all filters")}</Button>
        </div>
    );
}
