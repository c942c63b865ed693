// SPDX-License-Identifier: MIT
//
// browser.mjs: a real browser for tests and screenshots: Debian's chromium without a window, led by
// chromedriver, which is spoken to as the WebDriver standard says.
import { spawn } from "node:child_process";
import { mkdtemp, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { createInterface } from "node:readline";

const ELEMENT = "element-6066-11e4-a52e-4f735466cecf"; // how the standard marks an element

// Starts chromedriver at a port of its own choice.
async function startDriver() {
    const driver = spawn("chromedriver", ["--port=0"], { stdio: ["ignore", "pipe", "inherit"] });
    const failure = new Promise((_, reject) => {
        driver.once("error", () => reject(new Error('"chromedriver" is missing; run scripts/setup')));
        driver.once("exit", () => reject(new Error("chromedriver has ended")));
    });
    failure.catch(() => {});
    const lines = createInterface({ input: driver.stdout });
    const started = new Promise((resolve) => {
        lines.on("line", (line) => {
            const found = line.match(/started successfully on port (\d+)/);
            if (found) {
                resolve(`http://127.0.0.1:${found[1]}`);
            }
        });
    });
    return { driver, address: await Promise.race([started, failure]) };
}

async function ask(address, method, parameters) {
    const response = await fetch(address, {
        method,
        body: method === "POST" ? JSON.stringify(parameters ?? {}) : undefined,
    });
    const { value } = await response.json();
    if (!response.ok) {
        throw new Error(`${value.error}: ${value.message}`);
    }
    return value;
}

function chromeArguments(profile, { width = 1200, height = 900, isDark = false }) {
    const options = [
        "--headless",
        "--disable-gpu",
        "--disable-quic",
        "--disable-dev-shm-usage",
        "--no-first-run",
        "--disable-background-networking",
        "--disable-component-update",
        "--disable-sync",
        "--hide-scrollbars",
        `--user-data-dir=${profile}`,
        `--window-size=${width},${height}`,
    ];
    if (isDark) {
        options.push("--force-dark-mode");
    }
    if (process.getuid() === 0) {
        options.push("--no-sandbox");
    }
    return options;
}

/** A window with one page in it. */
export class Browser {
    #session;
    #driver;
    #profile;

    /** Options: width, height, isDark, and phone: { width, height, pixelRatio } */
    static async open(options = {}) {
        const browser = new Browser();
        const { driver, address } = await startDriver();
        browser.#driver = driver;
        browser.#profile = await mkdtemp(path.join(tmpdir(), "browser-"));
        const chrome = { binary: "/usr/bin/chromium", args: chromeArguments(browser.#profile, options) };
        if (options.phone) {
            chrome.mobileEmulation = { deviceMetrics: options.phone };
        }
        const capabilities = {
            "goog:chromeOptions": chrome,
            "goog:loggingPrefs": { browser: "ALL" },
        };
        const { sessionId } = await ask(`${address}/session`, "POST", {
            capabilities: { alwaysMatch: capabilities },
        });
        browser.#session = `${address}/session/${sessionId}`;
        return browser;
    }

    async close() {
        await ask(this.#session, "DELETE").catch(() => {});
        this.#driver.kill();
        await rm(this.#profile, { recursive: true, force: true, maxRetries: 10 });
    }

    #post(command, parameters) {
        return ask(`${this.#session}/${command}`, "POST", parameters);
    }

    /** Opens an address; ends when the page is loaded. */
    visit(url) {
        return this.#post("url", { url });
    }

    url() {
        return ask(`${this.#session}/url`, "GET");
    }

    /** Runs a function in the page, and gives back what it gives back. */
    evaluate(work, ...args) {
        return this.#post("execute/sync", { script: `return (${work})(...arguments)`, args });
    }

    async #find(css) {
        const element = await this.#post("element", { using: "css selector", value: css });
        return `element/${element[ELEMENT]}`;
    }

    async click(css) {
        await this.#post(`${await this.#find(css)}/click`);
    }

    /** Clicks on what opens a page; ends when it is there. */
    async follow(css) {
        const former = await this.#find("html");
        await this.click(css);
        await until(() => this.#isGone(former), "the page that a click opens");
    }

    async #isGone(element) {
        try {
            await ask(`${this.#session}/${element}/name`, "GET");
            return false;
        } catch (failure) {
            return /stale element|no such element/.test(failure.message);
        }
    }

    /** Replaces what stands in a field. */
    async type(css, text) {
        const field = await this.#find(css);
        await this.#post(`${field}/clear`);
        await this.#post(`${field}/value`, { text });
    }

    /** The text that somebody sees. */
    async text(css) {
        return ask(`${this.#session}/${await this.#find(css)}/text`, "GET");
    }

    /** The text of each element, as it stands in the page. */
    texts(css) {
        return this.evaluate((selector) =>
            [...document.querySelectorAll(selector)].map((each) => each.textContent), css);
    }

    attribute(css, name) {
        return this.evaluate((selector, key) =>
            document.querySelector(selector).getAttribute(key), css, name);
    }

    /** What the console has shown since it was last asked for, at these levels. */
    async consoleMessages(levels = ["SEVERE", "WARNING"]) {
        const entries = await this.#post("se/log", { type: "browser" });
        return entries.filter((entry) => levels.includes(entry.level)).map((entry) => entry.message);
    }

    devtools(cmd, params = {}) {
        return this.#post("goog/cdp/execute", { cmd, params });
    }

    /** Shows the page as a window of this width does, in light or dark. */
    async emulate({ width, isDark }) {
        await this.devtools("Emulation.setDeviceMetricsOverride",
            { width, height: 700, deviceScaleFactor: 1, mobile: false });
        await this.devtools("Emulation.setEmulatedMedia",
            { features: [{ name: "prefers-color-scheme", value: isDark ? "dark" : "light" }] });
    }

    /** The whole page as PNG. */
    async screenshot() {
        const { data } = await this.devtools("Page.captureScreenshot", { captureBeyondViewport: true });
        return Buffer.from(data, "base64");
    }
}

/** Waits until a condition holds. */
export async function until(condition, what, milliseconds = 20000) {
    const end = Date.now() + milliseconds;
    while (!(await condition())) {
        if (Date.now() > end) {
            throw new Error(`waited in vain for ${what}`);
        }
        await new Promise((resolve) => setTimeout(resolve, 50));
    }
}
