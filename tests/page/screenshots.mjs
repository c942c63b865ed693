// SPDX-License-Identifier: MIT
//
// usage: screenshots.mjs BUILD FOLDER
//
// Writes pictures of the sample appliance's pages: each page and each state of the overview on a desktop and on
// a phone, and the overview in light and dark and in three languages. The name of a picture says what it shows.
import { writeFile } from "node:fs/promises";
import path from "node:path";

import { Appliance } from "./appliance.mjs";
import { Browser } from "./browser.mjs";

const [build, folder] = process.argv.slice(2);

const WIDTHS = { desktop: 1100, phone: 390 };
const LANGUAGES = { en: "", de: "-de", "zh-Hans": "-zh" };
const PAGES = {
    shares: "/shares",
    share: "/share?name=Photos",
    users: "/users",
    setup: "/setup",
    sync: "/sync",
    help: "/help",
};
const SCENES = ["full-disk", "interrupted", "many-shares"];
const COLLECT = "vokctl collect --wait 120 >/dev/null 2>&1";

class Photographer {
    constructor(appliance, browser) {
        this.appliance = appliance;
        this.browser = browser;
    }

    visit(place) {
        return this.browser.visit(`${this.appliance.address}cgi-bin/vokpage${place}`);
    }

    async take(name, isDark = false) {
        for (const [kind, width] of Object.entries(WIDTHS)) {
            await this.browser.emulate({ width, isDark });
            await writeFile(path.join(folder, `${name}-${kind}.png`), await this.browser.screenshot());
        }
    }

    async takeLogin() {
        await this.visit("/login");
        await this.take("login");
    }

    async takeLanguages() {
        for (const [tag, suffix] of Object.entries(LANGUAGES)) {
            await this.visit("");
            await this.browser.follow(`button[name=language][value=${tag}]`);
            await this.take(`overview${suffix}`);
            await this.take(`overview${suffix}-dark`, true);
        }
        await this.browser.follow("button[name=language][value=en]");
    }

    async takePages() {
        for (const [name, place] of Object.entries(PAGES)) {
            await this.visit(place);
            await this.take(name);
        }
    }
}

/** Does something with a browser and an appliance that starts in a state. */
async function withAppliance(scene, work) {
    const appliance = await Appliance.start(path.resolve(build), scene);
    const browser = await Browser.open();
    const photographer = new Photographer(appliance, browser);
    try {
        await work(photographer, appliance, browser);
    } finally {
        await browser.close();
        await appliance.stop();
    }
}

await withAppliance(undefined, async (photographer, appliance, browser) => {
    await photographer.takeLogin();
    await appliance.logIn(browser);
    await photographer.take("overview-empty");
    await appliance.run(`tidewaved -n 3 && ${COLLECT}`);
    await photographer.takeLanguages();
    await photographer.takePages();
});
for (const scene of SCENES) {
    await withAppliance(scene, async (photographer, appliance, browser) => {
        // The mark of an interrupted collection keeps another one from starting.
        await appliance.run(scene === "interrupted" ? ":" : COLLECT);
        await appliance.logIn(browser);
        await photographer.take(`overview-${scene}`);
    });
}
