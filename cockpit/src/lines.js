// SPDX-License-Identifier: MIT

/** Lines out of a stream of bytes, which may be cut anywhere, within a character too. */
export class Lines {
    #decoder = new TextDecoder();
    #rest = "";

    /** The lines that these bytes have completed. */
    add(bytes) {
        const lines = (this.#rest + this.#decoder.decode(bytes, { stream: true })).split("\n");
        this.#rest = lines.pop();
        return lines;
    }
}
