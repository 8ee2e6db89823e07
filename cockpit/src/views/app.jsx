// SPDX-License-Identifier: MIT
import { useEffect, useMemo, useRef, useState } from "preact/hooks";
import { useAddress } from "../address.js";
import { chosenOf, NOTHING } from "../choice.js";
import { factsFor, folderOfShare } from "../command.js";
import { groupsOf } from "../facets.js";
import { _, plural } from "../i18n.js";
import { cleared, isNarrowed, narrowed } from "../selection.js";
import { Superuser } from "../superuser.js";
import { View } from "../view.js";
import { BusyDialog } from "./busy.jsx";
import { Details } from "./details.jsx";
import { DisconnectDialog } from "./disconnect.jsx";
import { Chips, Facets } from "./facets.jsx";
import { Help } from "./help.jsx";
import { plainValue } from "./name.jsx";
import { Button } from "./parts.jsx";
import { Failure, Incomplete, Looking, Nothing, Stale } from "./states.jsx";
import { Groups, Table } from "./table.jsx";
import { Toolbar } from "./toolbar.jsx";

export function App({ cockpit, createLive }) {
    const [live, view] = useLive(cockpit, createLive);
    const [superuser, allowed] = useRights(cockpit);
    const [selection, select] = useAddress(cockpit);
    const [opened, setOpened] = useState(null);
    const [asking, setAsking] = useState(false);
    const [filters, setFilters] = useState(false);
    const [choice, choose] = useState(NOTHING);
    const [ending, setEnding] = useState(null);

    useEffect(() => live.want(factsFor(selection.columns, selection.group !== "")),
              [selection.columns, selection.group]);
    const { records, shown, count, counts } = view.ask(selection, cockpit.language);
    const chosen = useMemo(() => chosenOf(shown, choice), [shown, choice]);
    const retry = () => live.start();

    if (live.state === "failed" && records.length === 0) {
        return <Page><Failure cockpit={cockpit} failure={live.failure} retry={retry} /></Page>;
    }
    const close = () => {
        setOpened(null);
        document.querySelector(".record button[tabindex='0']")?.focus();
    };
    return (
        <Page>
            <Help />
            {live.failure && <Stale failure={live.failure} retry={retry} />}
            {live.incomplete && <Incomplete reason={live.incomplete} superuser={superuser} />}
            <Toolbar live={live} shown={shown} selection={selection} select={select}
                     askWhetherFree={allowed && (() => setAsking(true))} />
            <Chips selection={selection} select={select} />
            <div class="summary">
                <span role="status">{plural("$0 file", "$0 files", count)}</span>
                <span class="filters-switch">
                    <Button kind="link" small aria-expanded={filters} onClick={() => setFilters(!filters)}>
                        {_("Filters")}
                    </Button>
                </span>
                {chosen.length > 0 && allowed && (
                    <>
                        <span>{plural("$0 chosen", "$0 chosen", chosen.length)}</span>
                        <Button kind="danger" small onClick={() => setEnding(chosen)}>{_("Disconnect")}</Button>
                    </>
                )}
            </div>
            <div class={`panels${filters ? " with-filters" : ""}${opened ? " with-details" : ""}`}>
                <Facets counts={counts} selection={selection} select={select} />
                <Content live={live} records={records} shown={shown} selection={selection} select={select}
                         opened={opened?.id} open={setOpened}
                         choice={allowed && { ids: choice, count: chosen.length, choose }} />
                {opened && (
                    <Details cockpit={cockpit} record={opened} records={records} open={setOpened} close={close}
                             disconnect={allowed && (() => setEnding([opened]))} />
                )}
            </div>
            {asking && (
                <BusyDialog cockpit={cockpit} records={records} path={placeOf(shown, selection)}
                            onClose={() => setAsking(false)} />
            )}
            {ending && <DisconnectDialog cockpit={cockpit} records={ending} onClose={() => setEnding(null)} />}
        </Page>
    );
}

function Page({ children }) {
    return (
        <main class="page">
            <h1 class="pf-v6-c-title pf-m-2xl">{_("Open files")}</h1>
            {children}
        </main>
    );
}

function Content({ live, records, shown, selection, select, ...table }) {
    if (shown.length === 0) {
        return live.state === "looking" && records.length === 0 ? <Looking />
            : <Nothing narrowed={isNarrowed(selection)} incomplete={live.incomplete}
                       clear={() => select(cleared(selection))} />;
    }
    if (selection.group) {
        return <Groups facet={selection.group} groups={groupsOf(shown, selection.group)} valueOf={value => <bdi>{plainValue(value)}</bdi>}
                       onChoose={value => select(narrowed(selection, selection.group, value))} />;
    }
    return <Table records={shown} selection={selection} select={select} {...table} />;
}

/** The folder of the one share that is chosen, to begin with. */
function placeOf(shown, selection) {
    const [share, ...others] = selection.chosen.share;
    const record = others.length === 0 && shown.find(one => one.share === share);
    return record ? folderOfShare(record) : "";
}

/**
 * The records, followed for as long as the page can be seen: how, and the view of them. What is in
 * this stays the same from one update to the next.
 */
function useLive(cockpit, createLive) {
    const [, setShown] = useState();
    const live = useRef();
    const view = useRef();
    const update = useRef();
    view.current ??= new View();
    update.current ??= atIntervals(() => {
        view.current.take(live.current.records.changes());
        setShown({});
    });
    live.current ??= createLive(update.current);
    useEffect(() => {
        const follow = () => (cockpit.hidden || document.hidden ? live.current.stop() : live.current.start());
        const leave = () => live.current.stop();
        const expire = setInterval(() => {
            const { version } = live.current.records;
            if (!live.current.paused) {
                live.current.records.expire(Date.now());
            }
            if (live.current.records.version !== version) {
                update.current();
            }
        }, 1000);
        cockpit.addEventListener("visibilitychange", follow);
        document.addEventListener("visibilitychange", follow);
        window.addEventListener("pagehide", leave);
        window.addEventListener("pageshow", follow);
        follow();
        return () => {
            clearInterval(expire);
            leave();
        };
    }, []);
    return [live.current, view.current];
}

// Who types sees what is found at once, and what is new after a pause of so many milliseconds.
const TYPING = 400;

/** Calls at once, then at intervals that leave most of the time to who types, and never meanwhile. */
function atIntervals(call) {
    let timer = null;
    let next = 0;
    const later = () => setTimeout(callOrWait, Math.max(0, next - performance.now()));
    const callOrWait = () => {
        timer = null;
        const started = performance.now();
        if (started < next) {
            timer = later();
            return;
        }
        call();
        requestAnimationFrame(() => {
            const ended = performance.now();
            next = Math.max(next, ended + Math.max(150, 4 * (ended - started)));
        });
    };
    window.addEventListener("input", () => { next = Math.max(next, performance.now() + TYPING); });
    return () => { timer ??= later(); };
}

/** Cockpit's administrative access: the way to it, and whether it is had. */
function useRights(cockpit) {
    const [, setVersion] = useState(0);
    const superuser = useRef();
    superuser.current ??= new Superuser(cockpit, () => setVersion(version => version + 1),
                                        () => window.location.reload());
    return [superuser.current, superuser.current.allowed === true];
}
