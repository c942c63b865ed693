// SPDX-License-Identifier: MIT
//
// usage: languages_test.mjs BUILD
import assert from "node:assert/strict";
import { readFile } from "node:fs/promises";
import { after, before, test } from "node:test";

import { Appliance } from "./appliance.mjs";
import { Browser } from "./browser.mjs";

const LANGUAGES = [
    { tag: "fr", locale: "fr" },
    { tag: "de", locale: "de" },
    { tag: "es", locale: "es" },
    { tag: "it", locale: "it" },
    { tag: "zh-Hans", locale: "zh_CN" },
    { tag: "zh-Hant", locale: "zh_TW" },
];

let appliance;
let browser;

before(async () => {
    appliance = await Appliance.start(process.argv[2]);
    browser = await Browser.open();
    await browser.emulate({ width: 320, isDark: false });
});

after(async () => {
    await browser?.close();
    await appliance?.stop();
});

function visit(place) {
    return browser.visit(`${appliance.address}cgi-bin/vokpage${place}`);
}

// Sends a form with these fields, whatever the page's own forms have.
async function send(place, fields) {
    await browser.evaluate((action, values) => {
        const form = document.body.appendChild(document.createElement("form"));
        Object.assign(form, { id: "sent", method: "post", action });
        const token = document.querySelector("[name=token]").value;
        for (const [name, value] of Object.entries({ ...values, token })) {
            form.append(Object.assign(document.createElement("input"), { name, value }));
        }
        form.append(document.createElement("button"));
    }, `/cgi-bin/vokpage${place}`, fields);
    await browser.follow("#sent button");
}

// ---- What is looked for -------------------------------------------------------------------------

// In the page: the texts that somebody sees or hears, without names that the appliance was given.
function readTexts() {
    const NAMES = "bdi, time, script, noscript, span[lang], .languages, .about span, option[value]:not([value=''])";
    const texts = [];
    const nodes = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (nodes.nextNode()) {
        if (nodes.currentNode.parentElement.closest(NAMES) === null) {
            texts.push(nodes.currentNode.data);
        }
    }
    for (const name of ["aria-label", "title", "alt", "placeholder", "data-difference"]) {
        for (const element of document.querySelectorAll(`[${name}]`)) {
            texts.push(element.getAttribute(name));
        }
    }
    return texts.map((text) => text.trim()).filter((text) => /\p{L}{3}/u.test(text));
}

// In the page: what reaches beyond the window, or beyond its own box.
function findCutParts() {
    const PARTS = "button, .button, label, h1, h2, h3, th, td, dt, dd, legend, caption, p, li, .badge, nav a";
    const cut = [...document.querySelectorAll(PARTS)].filter((part) =>
        part.closest(".sr, .skip") === null && part.clientWidth > 0 && part.scrollWidth > part.clientWidth + 1);
    const faults = cut.map((part) => `cut: ${part.outerHTML}`);
    if (document.documentElement.scrollWidth > innerWidth) {
        faults.push(`${document.documentElement.scrollWidth} pixels wide`);
    }
    return faults;
}

// Names of shares that are headings.
const NAMES = ["Family Videos", "Old Laptop"];

// The words between the places of sentences that a catalogue writes as in English, such as "Name" in German,
// and those names; the longest first.
async function sameAsEnglish(locale) {
    const catalogue = await readFile(new URL(`../../po/${locale}.po`, import.meta.url), "utf8");
    const entries = [...catalogue.matchAll(/^msgid "(.+)"\n(?:msgid_plural .*\n)?msgstr(?:\[0\])? "(.+)"$/gm)];
    // Also those that mean something else in English, such as "Configuration" for "Setup" in French.
    const written = new Set(entries.map(([, , other]) => other));
    return entries.filter(([, english]) => written.has(english))
        .flatMap(([, english]) => english.split(/\{\d?\}/)).filter((words) => words.trim() !== "")
        .concat(NAMES)
        .sort((one, other) => other.length - one.length);
}

// Whether a text of an English page has words that this language writes in another way.
function isEnglish(text, same) {
    const rest = same.reduce((left, words) => left.replaceAll(words, " "), text);
    return /\p{L}{3}/u.test(rest);
}

// ---- The pages ----------------------------------------------------------------------------------

const SETUP = { language: "english", host_name: "box", share_name: "Public" };

// Each page, with what it says about a form if it has one, as an administrator sees it.
const STATES = {
    overview: () => visit(""),
    "share with a past": () => visit("/share?name=Family%20Videos"),
    "share that is gone": () => visit("/share?name=Old%20Laptop&period=all"),
    "no such share": () => visit("/share?name=None"),
    "no name for a share": () => send("/shares", { access: "one" }),
    "no name for a user": () => send("/users", { repeated: "x" }),
    "no password to check": () => send("/users/check", {}),
    "setup, bad name": () => send("/setup", { ...SETUP, host_name: "!", next_page: 1 }),
    "setup, second step": () => send("/setup", { ...SETUP, share_name: "", next_page: 2 }),
    "setup, third step": () => send("/setup", { ...SETUP, next_page: 2 }),
    sync: () => visit("/sync"),
    help: () => visit("/help"),
    "no such page": () => visit("/nowhere"),
};

// Shows all of them in one language, and gives back what is wrong with each, and its texts.
async function look(tag) {
    const faults = [];
    const texts = [];
    for (const [name, show] of Object.entries(STATES)) {
        await show();
        const lang = await browser.attribute("html", "lang");
        const found = [...await browser.evaluate(findCutParts), ...lang === tag ? [] : [`lang is ${lang}`]];
        faults.push(...found.map((fault) => `${name}: ${fault}`));
        texts.push(...(await browser.evaluate(readTexts)).map((text) => `${name}: ${text}`));
    }
    return { faults, texts };
}

async function choose(tag) {
    await visit("/users");
    await browser.follow(`.languages button[lang="${tag}"]`);
}

let english;

test("what is looked for is found", async () => {
    await visit("/login");
    await browser.evaluate(() => {
        document.querySelector("#main").innerHTML = `<h1 title="Some words">Title</h1><p>12 <bdi>box</bdi></p>
            <button>${"n".repeat(200)}</button>`;
    });
    const texts = await browser.evaluate(readTexts);
    assert.deepEqual(texts.slice(texts.indexOf("Title"), -1), ["Title", "n".repeat(200), "Troubleshooting", "Language"]);
    assert.equal(texts.at(-1), "Some words");
    await browser.evaluate(() => {
        document.querySelector("#main").innerHTML = `<h1 class="wide-one"><i class="x"></i>Title</h1>`;
        document.querySelector(".x").append(document.createElement("img"));
        document.querySelector(".x img").width = 2000;
    });
    const faults = await browser.evaluate(findCutParts);
    assert.match(faults[0], /^cut: <h1 class="wide-one">/);
    assert.match(faults.at(-1), /^20\d\d pixels wide$/);
});

test("the pages are English at first", async () => {
    await appliance.logIn(browser);
    await appliance.run("vokctl collect --wait 60 && vokctl history --remember");
    english = await look("en");
    assert.equal(english.faults.join("\n"), "");
    assert.ok(english.texts.includes("sync: The sync daemon is not running."));
});

for (const { tag, locale } of LANGUAGES) {
    test(`each page speaks ${tag}`, async () => {
        await choose(tag);
        assert.ok((await browser.url()).endsWith("/users"), "it leads back");
        assert.equal(await browser.attribute(".languages [aria-current]", "lang"), tag);
        const { faults, texts } = await look(tag);
        const same = await sameAsEnglish(locale);
        const left = texts.filter((text) =>
            english.texts.includes(text) && isEnglish(text.replace(/^.*?: /, ""), same));
        assert.equal([...faults, ...left].join("\n"), "");
    });
}

test("login and logout keep the language", async () => {
    await choose("fr");
    await browser.follow(".who button");
    assert.equal(await browser.attribute("html", "lang"), "fr");
    assert.deepEqual(await browser.evaluate(findCutParts), []);
    await browser.follow(".languages button[lang='en']");
    assert.equal(await browser.text("h1"), "Log in");
});
