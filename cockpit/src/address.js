// SPDX-License-Identifier: MIT
import { useEffect, useRef, useState } from "preact/hooks";
import { fromOptions, toOptions } from "./selection.js";

// The address needn't have each letter that is typed.
const TYPING = 400;

/**
 * The selection, and how to set it: the page's address follows it and it follows the address, so
 * that back, forward and reload do what they do elsewhere.
 */
export function useAddress(cockpit) {
    const [selection, setSelection] = useState(() => fromOptions(cockpit.location.options));
    const written = useRef(JSON.stringify(toOptions(selection)));
    const timer = useRef();

    useEffect(() => {
        const follow = () => {
            const next = fromOptions(cockpit.location.options);
            const text = JSON.stringify(toOptions(next));
            if (text !== written.current) {
                written.current = text;
                setSelection(next);
            }
        };
        cockpit.addEventListener("locationchanged", follow);
        return () => cockpit.removeEventListener("locationchanged", follow);
    }, [cockpit]);

    const select = next => {
        const typing = next.search !== selection.search;
        setSelection(next);
        clearTimeout(timer.current);
        const write = () => {
            const options = toOptions(next);
            written.current = JSON.stringify(options);
            // A word in the making is no place to go back to.
            cockpit.location[typing ? "replace" : "go"]([], options);
        };
        if (typing) {
            timer.current = setTimeout(write, TYPING);
        } else {
            write();
        }
    };
    return [selection, select];
}
