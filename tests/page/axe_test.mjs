// SPDX-License-Identifier: MIT
//
// usage: axe_test.mjs BUILD
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { after, before, test } from "node:test";

import { Appliance, STATUS_FILE } from "./appliance.mjs";
import { Browser, until } from "./browser.mjs";
import { Collections } from "./collections.mjs";
import { makeStatus } from "./share_status.mjs";

const AXE = new URL("../../build/npm/node_modules/axe-core/axe.min.js", import.meta.url);
// Colours do not depend on the width, nor places on the colours.
const VIEWS = [{ width: 1280, isDark: false }, { width: 320, isDark: true }];

let appliance;
let browser;
let axe;

before(async () => {
    axe = await readFile(AXE, "utf8").catch(() => {
        throw new Error('"axe-core" is missing; run scripts/setup');
    });
    appliance = await Appliance.start(process.argv[2]);
    browser = await Browser.open();
});

after(async () => {
    await browser?.close();
    await appliance?.stop();
});

function urlOf(place = "") {
    return `${appliance.address}cgi-bin/vokpage${place}`;
}

// ---- What is looked for -------------------------------------------------------------------------

// In the page: each rule that is broken, with the elements that break it.
async function findViolations() {
    const { violations } = await axe.run(document, { resultTypes: ["violations"] });
    return violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(" ")}`);
}

// In the page: words that continue in another line, and what reaches beyond the window.
function findLayoutFaults() {
    const faults = [];
    const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (texts.nextNode()) {
        const { data } = texts.currentNode;
        for (const { index, 0: word } of data.matchAll(/[\p{L}\p{N}]+/gu)) {
            const range = document.createRange();
            range.setStart(texts.currentNode, index);
            range.setEnd(texts.currentNode, index + word.length);
            if (new Set([...range.getClientRects()].map((line) => line.top)).size > 1) {
                faults.push(`broken: ${word}`);
            }
        }
    }
    if (document.documentElement.scrollWidth > innerWidth) {
        faults.push(`${document.documentElement.scrollWidth} pixels wide`);
    }
    return faults;
}

// What is wrong with the page that is shown, in any of the views.
async function expectNoFault(what) {
    await browser.devtools("Runtime.evaluate", { expression: axe });
    for (const view of VIEWS) {
        await browser.emulate(view);
        const name = `${what}, ${view.width} px, ${view.isDark ? "dark" : "light"}`;
        assert.deepEqual(await browser.evaluate(findViolations), [], name);
        assert.deepEqual(await browser.evaluate(findLayoutFaults), [], name);
    }
}

async function expectNoFaultAt(place, what = place) {
    await browser.visit(urlOf(place));
    await expectNoFault(what);
}

// ---- The pages ----------------------------------------------------------------------------------

test("what is looked for is found", async () => {
    await browser.visit(urlOf("/login"));
    await browser.evaluate(() => {
        document.querySelector("#main").innerHTML = `<h1>Title</h1><img src="/icon.svg" width="2000">
            <p lang="de">${"Donaudampfschifffahrt".repeat(5)}</p>`;
    });
    await browser.devtools("Runtime.evaluate", { expression: axe });
    await browser.emulate(VIEWS[1]);
    assert.deepEqual(await browser.evaluate(findViolations), ['image-alt: <img src="/icon.svg" width="2000">']);
    assert.deepEqual(await browser.evaluate(findLayoutFaults),
        [`broken: ${"Donaudampfschifffahrt".repeat(5)}`, "2016 pixels wide"]);
});

test("login", async () => {
    await expectNoFaultAt("/login");
    await appliance.logIn(browser, { name: "anna", password: "wrong" });
    await expectNoFault("wrong password");
    await expectNoFaultAt("/nowhere");
    await expectNoFaultAt("/help");
    await appliance.run("rm -rf /run/vokpage");
    await appliance.logIn(browser);
});

test("overview without a status", async () => {
    await expectNoFaultAt("", "no status");
    await appliance.publish(Buffer.from("damaged"));
    await expectNoFaultAt("", "damaged");
});

test("overview with shares", async () => {
    await appliance.run("vokctl collect --wait 60");
    await expectNoFaultAt("", "shares");
    await appliance.publish(makeStatus(["A share with a long name of many short words", "n".repeat(20), "写真"]));
    await expectNoFaultAt("?sort=name", "long names");
});

test("shares with a past", async () => {
    await appliance.run("vokctl collect --wait 60 && vokctl history --remember");
    await expectNoFaultAt("", "past");
    await expectNoFaultAt("/share?name=Family%20Videos");
    await browser.click("summary");
    await expectNoFault("figures");
    await expectNoFaultAt("/share?name=Photos&period=year");
    await expectNoFaultAt("/share?name=Old%20Laptop&period=all", "gone");
    await expectNoFaultAt("/share?name=Pictures", "former name");
    await expectNoFaultAt("/share?name=None", "no such share");
});

test("overview with a collection", async () => {
    const collections = new Collections(appliance);
    await collections.hold("New", ["New"]);
    await browser.visit(urlOf());
    await browser.follow("#measure");
    await until(async () => (await browser.text("#collection")).includes("New"), "the progress");
    await expectNoFault("collecting");
    await collections.kill();
    await expectNoFaultAt("", "interrupted");
    await collections.remove();
});

test("all pages of the navigation", async () => {
    await appliance.run(`rm ${STATUS_FILE}`);
    await browser.visit(urlOf());
    const places = await browser.evaluate(() =>
        [...document.querySelectorAll("nav a:not([aria-current])")].map((link) => link.pathname));
    assert.ok(places.includes("/cgi-bin/vokpage/setup"));
    for (const place of places) {
        await browser.visit(new URL(place, appliance.address).href);
        await expectNoFault(place);
    }
});

test("each step of the setup", async () => {
    await browser.visit(urlOf("/setup"));
    for (const step of ["public share", "check", "done"]) {
        await browser.follow("button.main");
        await expectNoFault(step);
    }
});
