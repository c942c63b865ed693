// SPDX-License-Identifier: MIT
//
// usage: screenshots.mjs BUILD FOLDER
//
// Writes a picture of each page of the sample appliance, at desktop and phone width.
import { writeFile } from "node:fs/promises";
import path from "node:path";

import { Appliance } from "./appliance.mjs";
import { Browser } from "./browser.mjs";

const [build, folder] = process.argv.slice(2);

const PLACES = { overview: "", setup: "/setup", sync: "/sync" };
const WIDTHS = {
    desktop: { width: 1100, height: 560 },
    phone: { phone: { width: 390, height: 640, pixelRatio: 1 } },
};

async function picture(appliance, kind, extra = {}, suffix = "") {
    const browser = await Browser.open({ ...WIDTHS[kind], ...extra });
    try {
        await appliance.logIn(browser);
        for (const [name, place] of Object.entries(PLACES)) {
            await browser.visit(`${appliance.address}cgi-bin/vokpage${place}`);
            const file = path.join(folder, `${name}-${kind}${suffix}.png`);
            await writeFile(file, await browser.screenshot());
        }
    } finally {
        await browser.close();
    }
}

const appliance = await Appliance.start(path.resolve(build));
try {
    await appliance.run("tidewaved -n 3 && startapp pelstatus && vokctl status --wait 120 >/dev/null");
    for (const kind of Object.keys(WIDTHS)) {
        await picture(appliance, kind);
    }
    if (process.env.DARK) {
        await picture(appliance, "desktop", { isDark: true }, "-dark");
    }
} finally {
    await appliance.stop();
}
