// SPDX-License-Identifier: MIT
//
// appliance.mjs: a sample appliance whose pages a browser on this host reaches, with a shell in it.
import { spawn } from "node:child_process";
import { once } from "node:events";
import { fileURLToPath } from "node:url";

const START = fileURLToPath(new URL("../../appliance/start", import.meta.url));

export const STATUS_FILE = "/etc/pelconfig/vokcontrol/__shrStatus";

/** The sample appliance's administrator. */
export const ADMINISTRATOR = { name: "anna", password: "appliance" };

export class Appliance {
    #process;
    #end;
    #output = "";
    #mark = 0;

    /** @param scene  the state that it starts in, as appliance/start has it; the usual one without */
    static async start(build, scene) {
        const appliance = new Appliance();
        const options = scene === undefined ? [] : ["--scene", scene];
        appliance.#process = spawn(START, ["--page", "--build", build, ...options, "sh"], {
            stdio: ["pipe", "pipe", "inherit"],
        });
        appliance.#end = once(appliance.#process, "exit").then(() => "ended");
        appliance.#process.stdout.setEncoding("utf8");
        appliance.#process.stdout.on("data", (text) => {
            appliance.#output += text;
        });
        appliance.address = (await appliance.run('echo "$PAGE_ADDRESS"')).trim();
        return appliance;
    }

    /** Runs shell lines in the appliance, and gives back what they print; they must go well. */
    async run(lines) {
        const mark = `--- ${++this.#mark} `;
        this.#process.stdin.write(`{\n${lines}\n} </dev/null; echo "${mark}$?"\n`);
        while (!this.#output.match(new RegExp(`${mark}\\d+\n`))) {
            const more = once(this.#process.stdout, "data");
            if (await Promise.race([more, this.#end]) === "ended") {
                throw new Error("the appliance has ended");
            }
        }
        const [before, after] = this.#output.split(mark);
        this.#output = "";
        if (parseInt(after, 10) !== 0) {
            throw new Error(`this failed in the appliance: ${lines}\n${before}`);
        }
        return before;
    }

    /** Logs a browser in; ends when the page that follows is there. */
    async logIn(browser, { name, password } = ADMINISTRATOR) {
        await browser.visit(`${this.address}cgi-bin/vokpage/login`);
        await browser.type("#name", name);
        await browser.type("#password", password);
        await browser.follow("button.main");
    }

    /** Puts bytes into the status file. */
    async publish(status) {
        await this.run(`echo ${status.toString("base64")} | base64 -d >${STATUS_FILE}`);
    }

    async stop() {
        this.#process.stdin.end();
        await this.#end;
    }
}
