// SPDX-License-Identifier: MIT
//
// usage: browser_test.mjs BUILD
import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { Appliance, STATUS_FILE } from "./appliance.mjs";
import { Browser, until } from "./browser.mjs";
import { Collections } from "./collections.mjs";
import { makeStatus } from "./share_status.mjs";

const build = process.argv[2];
let appliance;
let browser;

function urlOf(place = "") {
    return `${appliance.address}cgi-bin/vokpage${place}`;
}

before(async () => {
    appliance = await Appliance.start(build);
    await appliance.run("startapp pelstatus && vokctl status --wait 120 >/dev/null");
    browser = await Browser.open();
    await appliance.logIn(browser);
    // Whatever language the setup chooses later, this visitor goes on in English.
    await browser.follow(".languages button[lang=en]");
});

after(async () => {
    await browser?.close();
    await appliance?.stop();
});

// Opens a page that must load without a word in the console.
async function visit(place) {
    await browser.visit(urlOf(place));
    assert.deepEqual(await browser.consoleMessages(), []);
}

// ---- What is put into the appliance -------------------------------------------------------------

// Runs statements on the appliance's database.
async function change(sql) {
    const code = `(new PDO("sqlite:/usr/private/appliance.db"))->exec(base64_decode("${
        Buffer.from(sql).toString("base64")}"));`;
    await appliance.run(`php -r '${code}'`);
}

// ---- Overview -----------------------------------------------------------------------------------

test("the overview shows the seeded shares, drives and printers", async () => {
    await visit("");
    assert.deepEqual(await browser.texts(".shares tbody th"), [
        "Media", "Family Videos", "Photos", "Accounts", "Économies", "Documents", "Projects", "Empty",
    ]);
    assert.deepEqual(await browser.texts(".devices h3"), [
        "Seagate ST500DM002", "Seagate ST500DM002", "Brother MFC card slot", "MFC-7360N series",
    ]);
    assert.deepEqual(await browser.texts(".devices .capacity"), ["500.10 GB", "500.10 GB", "31.01 GB"]);
    assert.equal(await browser.attribute(".shares time", "datetime"), "2026-11-15");
    assert.match(await browser.text("#published"), /^Published /);
    assert.equal(await browser.text("#collection"), "No collection is running.");
    assert.match(await browser.text("#main"), /vokcontrol sample appliance 1\.0/);
    assert.match(await browser.text("#main"), /Address\s+\d+\.\d+\.\d+\.\d+/);
});

test("the bars are as long as the texts beside them say", async () => {
    const bars = await browser.evaluate(() =>
        [...document.querySelectorAll(".shares tbody tr")].map((share) => ({
            percent: parseInt(share.querySelector(".part .quiet").textContent, 10) || 0,
            part: share.querySelector(".bar rect").getBoundingClientRect().width /
                share.querySelector(".bar").getBoundingClientRect().width,
        })));
    assert.equal(bars.length, 8);
    for (const { percent, part } of bars) {
        assert.ok(Math.abs(percent / 100 - part) < 0.011, `${percent} %: ${part}`);
    }
});

test("the module's script functions are there", async () => {
    assert.equal(await browser.evaluate(() => tov_hdds()), 2);
});

test("a drive that does not answer is told of", async () => {
    assert.equal(await browser.evaluate(() => document.querySelector(".drive-count").hidden), true);
    await appliance.run("cp /usr/bin/pelparam /tmp/ && printf '#!/bin/sh\\necho 3\\n' >/usr/bin/pelparam");
    await visit("");
    assert.equal(await browser.text(".drive-count"),
        "Internal drives that the appliance counts: 3; that it reports: 2.");
    await appliance.run("cp /tmp/pelparam /usr/bin/");
});

test("the navigation leads to each page, and no console has an error", async () => {
    for (const [place, title] of [["/shares", "Shares"], ["/users", "Users"], ["/setup", "Setup"], ["/sync", "Sync"], ["", "Overview"]]) {
        await browser.follow(`nav a[href$="vokpage${place}"]`);
        assert.equal(await browser.text("h1"), title);
        assert.deepEqual(await browser.texts("nav a[aria-current]"), [title]);
        assert.deepEqual(await browser.consoleMessages(), []);
    }
});

test("a narrow window needs no scrolling to the side", async () => {
    await browser.devtools("Emulation.setDeviceMetricsOverride",
        { width: 360, height: 640, deviceScaleFactor: 1, mobile: true });
    for (const place of ["", "/shares", "/users", "/setup", "/sync"]) {
        await visit(place);
        assert.deepEqual(await browser.evaluate(() =>
            [innerWidth, document.documentElement.scrollWidth]), [360, 360], place);
    }
    await browser.devtools("Emulation.clearDeviceMetricsOverride");
});

// ---- The past -----------------------------------------------------------------------------------

test("the overview shows the last 30 days of the shares, and when the disk will be full", async () => {
    await appliance.run("vokctl history --remember");
    await visit("");
    assert.equal((await browser.texts(".shares td.past svg")).length, 8);
    assert.match((await browser.texts(".shares td.past"))[1], /^ \+\d+ MB in 30 days$/);
    assert.match(await browser.text(".forecast"), /^If it goes on filling like this, the disk is full in about \d+ months\.$/);
});

test("each share's name leads to its page, which shows its past in three periods", async () => {
    await visit("");
    await browser.follow('.shares a[href$="share?name=Family%20Videos"]');
    assert.equal(await browser.text("h1"), "Family Videos");
    for (const [number, [label, days]] of [["30 days", 30], ["A year", 200], ["All", 200]].entries()) {
        await browser.follow(`.periods li:nth-child(${number + 1}) a`);
        assert.deepEqual(await browser.texts(".periods a[aria-current]"), [label]);
        assert.match(await browser.text(".change"), new RegExp(`^\\+\\d+ MB in ${days} days$`));
        const marks = await browser.texts(".plot circle");
        assert.ok(marks.length > 10 && marks.length <= 31, `${marks.length} marks`);
        assert.equal((await browser.texts("details tbody tr")).length, marks.length);
        assert.deepEqual(await browser.consoleMessages(), []);
    }
});

test("each mark of a plot is on its line, and the words have the size of other small ones", async () => {
    const { gaps, sizes } = await browser.evaluate(() => {
        const line = document.querySelector(".plot polyline");
        const toPage = line.getScreenCTM();
        const marks = [...document.querySelectorAll(".plot circle")];
        return {
            gaps: [...line.points].map((point, i) => {
                const { x, y } = point.matrixTransform(toPage);
                const box = marks[i].getBoundingClientRect();
                return Math.hypot(x - box.x - box.width / 2, y - box.y - box.height / 2);
            }),
            sizes: [...document.querySelectorAll(".plot text")].map((text) => getComputedStyle(text).fontSize),
        };
    });
    assert.ok(gaps.length > 10 && Math.max(...gaps) < 1.5, gaps.join(" "));
    assert.deepEqual([...new Set(sizes)], ["14.4px"]);
});

test("a share that is gone has a page, one that was renamed leads to its new name", async () => {
    await visit("");
    await browser.follow('a[href$="share?name=Old%20Laptop"]');
    assert.match(await browser.text("main"), /It is gone: it was last published on /);
    await browser.visit(urlOf("/share?name=Pictures"));
    await browser.follow("main .notice a");
    assert.equal(await browser.text("h1"), "Photos");
    await browser.consoleMessages(); // the former name is not found
});

// ---- Collections --------------------------------------------------------------------------------

async function focus(css) {
    await browser.evaluate((selector) => document.querySelector(selector).focus(), css);
}

test("the table is sorted by its heads", async () => {
    await visit("");
    await browser.follow("#sort-name");
    assert.deepEqual((await browser.texts(".shares tbody th")).slice(0, 3), ["Accounts", "Documents", "Empty"]);
    assert.equal(await browser.attribute("th[aria-sort]", "aria-sort"), "ascending");
    await browser.follow("#sort-name");
    assert.equal((await browser.texts(".shares tbody th"))[0], "Économies");
});

test("a collection that is started shows how far it is, without a reload, and keeps the focus", async () => {
    const collections = new Collections(appliance);
    await collections.hold("Media", ["New", "Newer"]);
    await visit("?sort=name");
    await browser.follow("#measure");
    assert.equal(await browser.url(), urlOf("?sort=name"));
    await browser.evaluate(() => { window.isSame = true; });
    await focus("#sort-name");
    await until(async () => (await browser.text("#collection")).includes("Media"), "the progress");
    assert.match(await browser.text("#collection"), /^Measuring Media, share 4 of 8, since \d\d:\d\d\.$/);
    assert.deepEqual(await browser.evaluate(() => {
        const { value, max } = document.querySelector("progress");
        return [value, max];
    }), [3, 8]);
    assert.deepEqual(await browser.texts("#measure"), []);
    await collections.release();
    await until(async () => (await browser.texts("#measure")).length > 0, "the end of the collection");
    assert.equal(await browser.text("#collection"), "No collection is running.");
    assert.deepEqual(await browser.texts(".shares tbody th"), ["New", "Newer"]);
    assert.deepEqual(await browser.evaluate(() => [window.isSame, document.activeElement.id]), [true, "sort-name"]);
    assert.deepEqual(await browser.consoleMessages(), []);
    await collections.remove();
    await appliance.run("vokctl collect --wait 60");
});

test("without script the page loads itself again while a collection runs, later each time", async () => {
    const collections = new Collections(appliance);
    await collections.hold("Documents", ["New"]);
    await visit("");
    await browser.devtools("Emulation.setScriptExecutionDisabled", { value: true });
    await browser.follow("#measure");
    await until(async () => /\?sort=size&wait=(6|12|24)$/.test(await browser.url()), "the reload");
    assert.match(await browser.text("#collection"), /^Measuring Documents/);
    await browser.devtools("Emulation.setScriptExecutionDisabled", { value: false });
    await collections.release();
    await appliance.run("vokctl status --wait 60 >/dev/null");
    await collections.remove();
    await appliance.run("vokctl collect --wait 60");
});

test("a collection that was ended is said to be interrupted", async () => {
    const collections = new Collections(appliance);
    await collections.hold("Documents", ["New"]);
    await visit("");
    await browser.follow("#measure");
    await collections.kill();
    await until(async () => (await browser.text("#findings")).includes("interrupted"), "the interruption");
    assert.equal(await browser.text("#collection"), "The last collection was interrupted.");
    assert.match(await browser.text("#findings"), /was interrupted\. Another one can start in \d+ minutes/);
    assert.deepEqual(await browser.texts("#measure"), []);
    await collections.remove();
    await appliance.run("vokctl collect --wait 60");
});

// ---- Hostile values -----------------------------------------------------------------------------

const HOSTILE_NAMES = [
    "<img src=x onerror=alert(1)>",
    "</script><script>alert(1)</script>",
    "\"'&lt;x onmouseover=alert(1)",
    "-->\u2028alert(1)//",
];

test("names of shares are text, whatever is in them", async () => {
    const seeded = await appliance.run(`base64 ${STATUS_FILE} | head -n 40 | tr -d '\\n'`);
    await appliance.publish(makeStatus(HOSTILE_NAMES));
    await visit("");
    assert.deepEqual((await browser.texts(".shares tbody th")).sort(),
        HOSTILE_NAMES.map((name) => name.replace("\u2028", "\uFFFD")).sort());
    assert.equal(await browser.evaluate(() => document.querySelectorAll("main img, main script").length), 0);
    assert.deepEqual(await browser.texts(".shares .badge"), HOSTILE_NAMES.map(() => "! Old"));
    for (const name of HOSTILE_NAMES) {
        await visit(`/share?name=${encodeURIComponent(name)}`);
        assert.equal((await browser.texts("h1"))[0], name.replace("\u2028", "\uFFFD"));
        assert.equal(await browser.evaluate(() => document.querySelectorAll("main img, main script").length), 0);
    }
    await appliance.publish(Buffer.from(seeded, "base64"));
});

test("what devices call themselves neither runs nor breaks the script", async () => {
    await change(`UPDATE device SET model = 'x\u2028window.broken=1//' WHERE node = 'sda';
                  UPDATE device SET vendor = '--></script><img src=x onerror=alert(1)>' WHERE node = 'sdb'`);
    await visit("");
    assert.equal(await browser.evaluate(() => window.broken), null);
    assert.equal(await browser.evaluate(() => tov_hdds()), 2);
    assert.deepEqual((await browser.texts(".devices h3")).slice(0, 2),
        ["Seagate x\uFFFDwindow.broken=1//", "--> ST500DM002"]);
    await change(`UPDATE device SET model = 'ST500DM002', vendor = 'Seagate' WHERE kind = 'internal'`);
});

test("what the appliance is called stays within the attribute and the heading", async () => {
    const name = "x\" onfocus=\"alert(1)\" autofocus x='";
    await change(`UPDATE setting SET value = '${name.replace("'", "''")}' WHERE name = 'nmbdSysname'`);
    await visit("/setup");
    assert.equal(await browser.evaluate(() => document.querySelector("#host_name").value), name);
    assert.equal(await browser.text(".brand"), name);
    await change(`UPDATE setting SET value = 'appliance' WHERE name = 'nmbdSysname'`);
});

// ---- Setup --------------------------------------------------------------------------------------

async function variable(name) {
    return (await appliance.run(`sed -n 's/^${name}=//p' /etc/pelconfig/system_var`)).trim();
}

async function setting(name) {
    await appliance.run(`php /etc/inc/api_system.php ${name} /tmp/answer`);
    return (await appliance.run("cat /tmp/answer")).trim();
}

async function expectStep(number, heading) {
    assert.equal(await browser.text("h2"), heading);
    assert.equal(await browser.evaluate(() => this_page()), number);
    assert.deepEqual(await browser.consoleMessages(), []);
}

async function choose(css, value) {
    await browser.evaluate((selector, wanted) => {
        document.querySelector(selector).value = wanted;
    }, css, value);
}

test("the steps of the setup go forward, go back and are applied in the end", async () => {
    await visit("/setup");
    await expectStep(0, "Step 1 of 3: name and language");
    assert.equal(await browser.text("[aria-current=step]"), "Name and language");
    await choose("#language", "german");
    await browser.type("#host_name", "storage-2");
    await browser.follow("button.main");

    await expectStep(1, "Step 2 of 3: public share");
    assert.equal(await browser.text("[aria-current=step]"), "Public share");
    await browser.type("#share_name", "Photos & \"more\"");
    await browser.follow("button.main"); // no name for a share: it stays at this step
    await expectStep(1, "Step 2 of 3: public share");
    assert.match(await browser.text(".complaint"), /The name of a share has none of the characters/);
    await browser.type("#share_name", "Holiday photos");
    await browser.follow("button[value='0']");

    await expectStep(0, "Step 1 of 3: name and language");
    assert.equal(await browser.evaluate(() => document.querySelector("#language").value), "german");
    assert.equal(await browser.evaluate(() => document.querySelector("#host_name").value), "storage-2");
    await browser.follow("button.main");
    await browser.follow("button.main");

    await expectStep(2, "Step 3 of 3: check");
    assert.match(await browser.text(".facts"), /Deutsch\s+.*\s+storage-2\s+.*\s+Holiday photos/);
    assert.equal(await variable("firsttime"), "1", "nothing has been changed yet");
    await browser.follow("button.main");

    assert.equal(await browser.text(".notice"), "The setup is done.");
    assert.equal(await browser.evaluate(() => this_page()), 3);
    assert.deepEqual(await browser.consoleMessages(), []);
    assert.equal(await browser.text(".brand"), "storage-2");
    assert.match(await setting("tovGetLanguage"), /<language>german<\/language>/);
    assert.equal(await setting("tovGetNmbdSysname"), "<nmbdSysname>storage-2</nmbdSysname>");
    assert.equal(await variable("language_current"), "ge");
    assert.equal(await variable("pel_pubshare_name"), "Holiday photos");
    assert.equal(await variable("firsttime"), "0");
    await visit("");
    assert.equal(await browser.evaluate(() => document.querySelector("main a[href$='/setup']")), null);
});

test("what failed is told in words", async () => {
    await appliance.run("echo firsttime=1 >/etc/pelconfig/system_var");
    await visit("/setup");
    await browser.type("#host_name", "-x");
    for (let step = 0; step < 3; ++step) {
        if (step === 1) {
            await browser.type("#share_name", "Photos");
        }
        await browser.follow("button.main");
    }
    assert.deepEqual(await browser.texts(".notice li"), [
        "The appliance did not take the name.", "The appliance did not take the name for its shares.",
    ]);
    assert.equal(await variable("firsttime"), "1");
    assert.equal(await variable("pel_pubshare_name"), "Photos");
});

test("the setup works without script", async () => {
    await browser.devtools("Emulation.setScriptExecutionDisabled", { value: true });
    await browser.visit(urlOf("/setup"));
    for (const heading of ["Step 2 of 3: public share", "Step 3 of 3: check"]) {
        await browser.follow("button.main");
        assert.equal(await browser.text("h2"), heading);
        assert.deepEqual(await browser.texts("[aria-current=step]"), [], "no script ran");
    }
    await browser.follow("button.main");
    assert.equal(await browser.text(".notice"), "The setup is done.");
    await browser.devtools("Emulation.setScriptExecutionDisabled", { value: false });
});

// ---- Sync ---------------------------------------------------------------------------------------

async function syncState() {
    return (await appliance.run("pidof tidewaved >/dev/null && echo on || echo off")).trim();
}

test("the sync switch works", async () => {
    await visit("/sync");
    assert.match(await browser.text(".state"), /Off/);
    for (const state of ["on", "off", "on"]) {
        await browser.follow("button.main");
        assert.equal(await browser.text(".notice"), `Sync was switched ${state}.`);
        assert.match(await browser.text(".state"), state === "on" ? /On/ : /Off/);
        assert.equal(await syncState(), state);
        assert.deepEqual(await browser.consoleMessages(), []);
    }
    await visit("");
    assert.match(await browser.text("#main"), /Remote sync\s+on/);
    await visit("/sync");
    assert.match(await browser.text(".state"), /On/);
    await browser.follow("button.main");
    assert.equal(await syncState(), "off");
});

test("a daemon that does not start is told of", async () => {
    await appliance.run("mv /usr/bin/tidewaved /tmp/");
    await visit("/sync");
    await browser.follow("button.main");
    assert.equal(await browser.text(".notice.bad"), "The sync daemon could not be started.");
    assert.match(await browser.text(".state"), /Off/);
    await appliance.run("mv /tmp/tidewaved /usr/bin/");
});

// ---- Around the pages ---------------------------------------------------------------------------

test("pages stay out of frames and of caches", async () => {
    const { headers } = await fetch(urlOf("/login"));
    assert.match(headers.get("content-security-policy"), /default-src 'none'.*frame-ancestors 'none'/);
    assert.equal(headers.get("x-content-type-options"), "nosniff");
    assert.equal(headers.get("cache-control"), "no-store");
    assert.match(headers.get("set-cookie"), /^vokpage_token=[0-9a-f]{32}; Path=\/; HttpOnly; SameSite=Strict$/);
});

test("the web server listens to this machine alone", async () => {
    const { port } = new URL(appliance.address);
    const lines = (await appliance.run("netstat -ltn")).split("\n").filter((line) => line.includes(`:${port} `));
    assert.equal(lines.length, 1);
    assert.match(lines[0], new RegExp(` 127\\.0\\.0\\.1:${port} `));
});

test("web server and pages have nothing to complain of", async () => {
    // Another test may have the port that is tried first.
    const known = /^(httpd: bind: Address already in use|vokpage: (logged in: "anna" from|"anna" sends a form to) ".*"|vokpage: a shell line was refused: asking for a setting, function|getSystemVar -- ptr:.*---|api_system\.php: "-x" cannot be .*|.*tidewaved.*)$/;
    const log = (await appliance.run("cat /var/log/httpd.log /var/log/vokpage.log")).split("\n");
    assert.deepEqual(log.filter((line) => line !== "" && !known.test(line)), []);
});
