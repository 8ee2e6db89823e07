// SPDX-License-Identifier: MIT

/** A host with the page on it, Cockpit that serves it, and a browser that shows it. */
import { spawn } from "node:child_process";
import { once } from "node:events";
import { cp, mkdir, rm } from "node:fs/promises";
import { createRequire } from "node:module";
import { connect, createServer } from "node:net";
import { dirname, join } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";

export const project = join(dirname(fileURLToPath(import.meta.url)), "..", "..", "..");
// What the page is built with brings what it is tested with.
export const packages = createRequire(join(project, "cockpit", "package.json"));
export const PATIENCE = 60000;
export const PAGE = "/usr/share/cockpit/vorn-openfiles";

/** The sample host's own servant: clients, servers, files. */
export class Host {
    static async start() {
        const host = new Host();
        host.process = spawn("/usr/bin/python3", [join(project, "tests", "page", "host.py")],
                             { stdio: ["pipe", "pipe", "inherit"] });
        host.lines = createInterface({ input: host.process.stdout })[Symbol.asyncIterator]();
        await host.answer();
        await rm(PAGE, { recursive: true, force: true });
        await mkdir(PAGE, { recursive: true });
        await cp(join(project, "cockpit", "dist"), PAGE, { recursive: true });
        return host;
    }

    async do(name, more = {}) {
        this.process.stdin.write(`${JSON.stringify({ do: name, ...more })}\n`);
        return this.answer();
    }

    async answer() {
        const { value, done } = await this.lines.next();
        if (done) {
            throw new Error("the host's servant has ended");
        }
        const { done: result, failed } = JSON.parse(value);
        if (failed) {
            throw new Error(failed);
        }
        return result;
    }

    async stop() {
        const ended = once(this.process, "exit");
        this.process.stdin.end();
        await ended;
    }
}

/** Cockpit's web server on a port of its own; gives {address, stop}. An agent lets it in elsewhere. */
export async function startCockpit({ user, login = false, agent } = {}) {
    const port = await freePort();
    const local = login ? [] : ["--local-session=cockpit-bridge"];
    const command = ["/usr/lib/cockpit/cockpit-ws", ...local, "--no-tls", "-a", "127.0.0.1", "-p", String(port)];
    const whole = user ? ["/usr/sbin/runuser", "-u", user, "--", ...command] : command;
    const env = { ...process.env, ...(agent && { SSH_AUTH_SOCK: agent }) };
    const server = spawn(whole[0], whole.slice(1), { env, stdio: ["ignore", "inherit", "inherit"], detached: true });
    await until(() => accepts(port), "Cockpit to listen");
    const stop = async () => {
        if (server.exitCode !== null) {
            return;
        }
        const ended = once(server, "exit");
        process.kill(-server.pid, "SIGTERM");
        await ended;
    };
    return { address: `http://127.0.0.1:${port}`, stop };
}

export async function startBrowser() {
    const { chromium } = packages("playwright-core");
    return chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
}

/** Waits until something is true, and gives it. */
export async function until(condition, what, patience = PATIENCE) {
    for (const end = Date.now() + patience; ;) {
        const value = await condition();
        if (value) {
            return value;
        }
        if (Date.now() > end) {
            throw new Error(`waited ${patience} ms in vain for ${what}`);
        }
        await new Promise(resolve => setTimeout(resolve, 50));
    }
}

function freePort() {
    return new Promise(resolve => {
        const server = createServer().listen(0, "127.0.0.1", () => {
            const { port } = server.address();
            server.close(() => resolve(port));
        });
    });
}

function accepts(port) {
    return new Promise(resolve => {
        const socket = connect(port, "127.0.0.1");
        socket.once("connect", () => { socket.destroy(); resolve(true); });
        socket.once("error", () => resolve(false));
    });
}
