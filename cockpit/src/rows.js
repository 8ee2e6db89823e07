// SPDX-License-Identifier: MIT

// Rows above and below what can be seen, so that nothing flickers as it is scrolled.
const SPARE = 10;

/** Which rows of a long table are made: from first up to, not including, end. */
export function visibleRows({ top, height, rowHeight, count }) {
    const last = Math.max(0, count - 1);
    const first = Math.min(last, Math.max(0, Math.floor(top / rowHeight) - SPARE));
    const end = Math.min(count, Math.ceil((Math.max(0, top) + height) / rowHeight) + SPARE);
    return { first, end: Math.max(first, end) };
}

/** Where to scroll to so that a row is seen whole, from top; top where it is seen already. */
export function topToShow(row, { top, height, rowHeight }) {
    const upper = row * rowHeight;
    const lower = upper + rowHeight - height;
    return upper < top ? upper : lower > top ? lower : top;
}

/** The row that a key leads to from another, or nothing for another key. */
export function rowAfter(key, row, { count, page }) {
    const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -count, End: count };
    return key in steps ? Math.min(count - 1, Math.max(0, row + steps[key])) : null;
}
