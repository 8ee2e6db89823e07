// SPDX-License-Identifier: MIT
import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import { NOTHING, withAll, withOne } from "../choice.js";
import { bytesOf } from "../command.js";
import { _, bytes, columnLabel, format, locale } from "../i18n.js";
import { plainOf } from "../names.js";
import { rowAfter, topToShow, visibleRows } from "../rows.js";
import { sortedBy } from "../selection.js";
import { Cell } from "./name.jsx";

/**
 * The table of records. Only rows that can be seen are made, so that its length costs nothing; one
 * of them is reached by the Tab key, the others from there by those that move. Where something can
 * be done with records, choice has the ids and the number of those that are chosen, and how to choose.
 */
export function Table({ records, selection, select, opened, open, choice }) {
    const { scroller, frame, onScroll, scrollTo } = useScroller();
    const [active, setActive] = useState(0);
    const wanted = useRef(null);
    const count = records.length;
    const rowHeight = frame.rowHeight;
    const current = Math.min(active, Math.max(0, count - 1));
    const { first, end } = visibleRows({ ...frame, count });

    useLayoutEffect(() => {
        if (wanted.current) {
            scroller.current.querySelector(`tbody ${wanted.current}[tabindex='0']`)?.focus();
            wanted.current = null;
        }
    });
    const onKeyDown = event => {
        const page = Math.max(1, Math.floor(frame.height / rowHeight) - 1);
        const row = rowAfter(event.key, current, { count, page });
        if (row !== null) {
            event.preventDefault();
            wanted.current = event.target.localName;
            setActive(row);
            scrollTo(topToShow(row, frame));
        } else if (event.key === "Enter" && event.target.localName === "input") {
            open(records[current]); // A box for choosing does nothing by itself there.
        }
    };
    return (
        <div class="table-scroller" ref={scroller} onScroll={onScroll}>
            <table class="pf-v6-c-table pf-m-compact" aria-rowcount={count + 1}
                   aria-label={_("Open files")} data-columns={selection.columns.length}>
                <Head selection={selection} select={select}>
                    {choice && <ChooseAll records={records} choice={choice} />}
                </Head>
                <tbody class="pf-v6-c-table__tbody" onKeyDown={onKeyDown}>
                    <Gap height={first * rowHeight} />
                    {records.slice(first, end).map((record, index) => (
                        <Row key={record.id} record={record} columns={selection.columns}
                             number={first + index} active={first + index === current}
                             opened={record.id === opened}
                             onOpen={() => { setActive(first + index); open(record); }}>
                            {choice && <Choose record={record} active={first + index === current} choice={choice} />}
                        </Row>
                    ))}
                    <Gap height={(count - end) * rowHeight} />
                </tbody>
            </table>
        </div>
    );
}

/** Where the table is scrolled to, and how much of it is seen. */
function useScroller() {
    const scroller = useRef();
    const [frame, setFrame] = useState({ top: 0, height: 600, rowHeight: 37 });
    const measure = () => {
        if (!scroller.current) {
            return; // It was replaced by something else meanwhile.
        }
        const { scrollTop, clientHeight } = scroller.current;
        const rowHeight = parseFloat(getComputedStyle(scroller.current).getPropertyValue("--row-height"))
            * parseFloat(getComputedStyle(document.documentElement).fontSize) || 37;
        setFrame(last => last.top === scrollTop && last.height === clientHeight && last.rowHeight === rowHeight
            ? last : { top: scrollTop, height: clientHeight, rowHeight });
    };
    useEffect(() => {
        const observer = new ResizeObserver(measure);
        observer.observe(scroller.current);
        return () => observer.disconnect();
    }, []);
    const scrollTo = top => {
        scroller.current.scrollTop = top;
        measure();
    };
    return { scroller, frame, onScroll: measure, scrollTo };
}

function ChooseAll({ records, choice: { count, choose } }) {
    return (
        <td class="pf-v6-c-table__td choose">
            <input type="checkbox" aria-label={_("Choose all")} checked={count > 0}
                   indeterminate={count > 0 && count < records.length}
                   onChange={event => choose(event.target.checked ? withAll(records) : NOTHING)} />
        </td>
    );
}

function Choose({ record, active, choice: { ids, choose } }) {
    const name = plainOf(record.path, bytesOf(record, "path"));
    return (
        <td class="pf-v6-c-table__td choose" onClick={event => event.stopPropagation()}>
            <input type="checkbox" tabIndex={active ? 0 : -1} aria-label={format(_("Choose $0"), name)}
                   checked={ids.has(record.id)} disabled={record.mark === "closed"}
                   onChange={event => choose(withOne(ids, record.id, event.target.checked))} />
        </td>
    );
}

function Head({ selection, select, children }) {
    return (
        <thead class="pf-v6-c-table__thead">
            <tr class="pf-v6-c-table__tr" aria-rowindex={1}>
                {children}
                {selection.columns.map(column => {
                    const sorted = selection.sort === column;
                    const order = selection.descending ? "descending" : "ascending";
                    return (
                        <th key={column} scope="col" data-column={column}
                            class={`pf-v6-c-table__th pf-v6-c-table__sort${sorted ? " pf-m-selected" : ""}`}
                            aria-sort={sorted ? order : undefined}>
                            <button type="button" class="pf-v6-c-table__button"
                                    onClick={() => select(sortedBy(selection, column))}>
                                {columnLabel(column)}
                                <span class="sort-mark" aria-hidden="true">
                                    {sorted ? (selection.descending ? "▼" : "▲") : ""}
                                </span>
                            </button>
                        </th>
                    );
                })}
            </tr>
        </thead>
    );
}

function Gap({ height }) {
    return height > 0 ? <tr class="gap" aria-hidden="true" style={{ height: `${height}px` }} /> : null;
}

const MARKS = { new: () => _("new"), closed: () => _("closed") };

function Row({ record, columns, number, active, opened, onOpen, children }) {
    const last = columns.includes("path") ? "path" : columns.at(-1);
    const label = MARKS[record.mark]?.();
    return (
        <tr class={`pf-v6-c-table__tr record ${record.mark}${opened ? " opened" : ""}`}
            aria-rowindex={number + 2} onClick={onOpen}>
            {children}
            {columns.map(column => (
                <td key={column} class="pf-v6-c-table__td" data-column={column}
                    data-label={columnLabel(column)}>
                    {column === last
                        ? (
                            <button type="button" class="open" tabIndex={active ? 0 : -1}
                                    aria-expanded={opened}>
                                {label && <span class="mark">{label}</span>}
                                <Cell record={record} column={column} />
                            </button>
                        )
                        : <Cell record={record} column={column} />}
                </td>
            ))}
        </tr>
    );
}

/** Values of a facet instead of records, with how many there are of each and how large these are. */
export function Groups({ facet, groups, onChoose, valueOf }) {
    return (
        <div class="table-scroller">
            <table class="pf-v6-c-table pf-m-compact groups" aria-label={columnLabel(facet)}>
                <thead class="pf-v6-c-table__thead">
                    <tr class="pf-v6-c-table__tr">
                        <th scope="col" class="pf-v6-c-table__th">{columnLabel(facet)}</th>
                        <th scope="col" class="pf-v6-c-table__th number">{_("Files")}</th>
                        <th scope="col" class="pf-v6-c-table__th number">{columnLabel("size")}</th>
                    </tr>
                </thead>
                <tbody class="pf-v6-c-table__tbody">
                    {groups.map(({ value, files, size }) => (
                        <tr key={value} class="pf-v6-c-table__tr record" onClick={() => onChoose(value)}>
                            <td class="pf-v6-c-table__td">
                                <button type="button" class="open">{valueOf(value)}</button>
                            </td>
                            <td class="pf-v6-c-table__td number">{files.toLocaleString(locale())}</td>
                            <td class="pf-v6-c-table__td number">{bytes(size)}</td>
                        </tr>
                    ))}
                </tbody>
            </table>
        </div>
    );
}
