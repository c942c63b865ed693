// SPDX-License-Identifier: MIT
//
// usage: login_test.mjs BUILD
//
// Who may use the pages, as browsers see it.
import assert from "node:assert/strict";
import { once } from "node:events";
import { createServer } from "node:http";
import { after, before, beforeEach, test } from "node:test";

import { ADMINISTRATOR, Appliance } from "./appliance.mjs";
import { Browser } from "./browser.mjs";

const BOB = { name: "bob", password: "storage" };
const SESSIONS = "/run/vokpage/sessions";
const ADMINISTRATORS = "/var/lib/vokcontrol/administrators";

let appliance;
let browser;

function urlOf(place = "") {
    return `${appliance.address}cgi-bin/vokpage${place}`;
}

before(async () => {
    appliance = await Appliance.start(process.argv[2]);
    browser = await Browser.open();
});

after(async () => {
    await browser?.close();
    await appliance?.stop();
});

// Each test begins with nobody logged in, and with no wrong password in memory.
beforeEach(async () => {
    await appliance.run(`rm -rf /run/vokpage`);
    await browser.consoleMessages();
});

async function syncState() {
    return (await appliance.run("pidof tidewaved >/dev/null && echo on || echo off")).trim();
}

// ---- In and out ---------------------------------------------------------------------------------

test("every page leads to the login, and the login to the overview", async () => {
    for (const place of ["", "/shares", "/users", "/setup", "/sync"]) {
        await browser.visit(urlOf(place));
        assert.equal(await browser.url(), urlOf("/login"));
        assert.equal(await browser.text("h1"), "Log in");
        assert.deepEqual(await browser.texts("nav a"), []);
    }
    await browser.type("#name", ADMINISTRATOR.name);
    await browser.type("#password", ADMINISTRATOR.password);
    await browser.follow("button.main");
    assert.equal(await browser.url(), urlOf());
    assert.equal(await browser.text("h1"), "Overview");
    assert.equal(await browser.text(".who bdi"), "anna");
    assert.deepEqual(await browser.texts("nav a"), ["Overview", "Shares", "Users", "Setup", "Sync"]);
    assert.deepEqual(await browser.consoleMessages(), []);
});

test("a wrong password is refused, and the next attempt has to wait", async () => {
    await appliance.logIn(browser, { name: "anna", password: "wrong" });
    assert.equal(await browser.url(), urlOf("/login"));
    assert.equal(await browser.text(".notice.bad"), "The name or the password is wrong.");
    const wait = /^There were wrong passwords\. Wait \d+ s, then try again\.$/;
    // A slow browser may let the first pauses, which are short, go by.
    for (let tries = 0; tries < 7 && !wait.test(await browser.text(".notice.bad")); ++tries) {
        await appliance.logIn(browser, { name: "anna", password: "wrong again" });
    }
    assert.match(await browser.text(".notice.bad"), wait);
    await browser.visit(urlOf());
    assert.equal(await browser.url(), urlOf("/login"));
    const log = await appliance.run("cat /var/log/vokpage.log");
    assert.match(log, /^vokpage: wrong name or password: "anna" from ".*127\.0\.0\.1.*"$/m);
    assert.doesNotMatch(log, /wrong again/);
});

test("other accounts may look and change nothing", async () => {
    await appliance.logIn(browser, BOB);
    assert.deepEqual(await browser.texts("nav a"), ["Overview", "Shares", "Users", "Sync"]);
    await browser.visit(urlOf("/sync"));
    assert.deepEqual(await browser.texts("main button"), []);
    await browser.visit(urlOf("/setup"));
    assert.equal(await browser.text(".notice.bad"), "Only an administrator may do this.");
});

test("logging out ends the session, also for who has kept its cookie", async () => {
    await appliance.logIn(browser);
    const { cookies } = await browser.devtools("Network.getCookies", { urls: [urlOf()] });
    assert.deepEqual(cookies.map(({ name, path, httpOnly, sameSite, session }) => ({ name, path, httpOnly, sameSite, session })),
        [{ name: "vokpage_session", path: "/", httpOnly: true, sameSite: "Strict", session: true }]);
    const headers = { Cookie: `vokpage_session=${cookies[0].value}` };
    assert.equal((await fetch(urlOf("/sync"), { headers, redirect: "manual" })).status, 200);
    await browser.follow(".who button");
    assert.equal(await browser.url(), urlOf("/login"));
    assert.equal((await fetch(urlOf("/sync"), { headers, redirect: "manual" })).status, 303);
    assert.equal((await appliance.run(`ls ${SESSIONS}`)).trim(), "");
});

test("a session that nobody uses ends", async () => {
    await appliance.logIn(browser);
    await browser.visit(urlOf("/sync"));
    // As if its last request had come half an hour ago.
    await appliance.run(`seconds=$(cut -d. -f1 /proc/uptime)
        for session in ${SESSIONS}/*; do
            printf '%012d\n' "$((seconds - 1801))" | dd of="$session" bs=1 seek=13 conv=notrunc 2>/dev/null
        done`);
    await browser.follow("button.main");
    assert.match(await browser.text(".notice.bad"), /your login has ended\. Nothing was changed\./);
    assert.equal(await syncState(), "off");
    await browser.visit(urlOf("/sync"));
    assert.equal(await browser.url(), urlOf("/login"));
});

test("what is kept of a login is kept from others", async () => {
    await appliance.logIn(browser);
    const [folders, files] = (await appliance.run(`stat -c %a /run/vokpage ${SESSIONS} | tr '\n' ' '; echo
        stat -c %a ${SESSIONS}/* ${ADMINISTRATORS} | tr '\n' ' '`)).split("\n");
    assert.equal(folders.trim(), "700 700");
    assert.equal(files.trim(), "600 600");
});

// ---- Forged requests ----------------------------------------------------------------------------

// A page of somebody else that sends a form to the appliance.
async function serveForgery() {
    const server = createServer((request, response) => {
        response.writeHead(200, { "Content-Type": "text/html" });
        response.end(`<link rel="icon" href="data:,"><form method="post" action="${urlOf("/sync")}">
            <input name="switch" value="on"><input name="token" value="${"0".repeat(32)}"><button>Win</button>
            </form>`);
    });
    server.listen(0, "127.0.0.1");
    await once(server, "listening");
    return server;
}

// The same host with another port, and another host; the browser is logged in here.
for (const host of ["127.0.0.1", "localhost"]) {
    test(`a form of http://${host} with another port is refused`, async () => {
        await appliance.logIn(browser);
        const server = await serveForgery();
        try {
            await browser.visit(`http://${host}:${server.address().port}/`);
            await browser.follow("button");
            assert.equal(await browser.url(), urlOf("/sync"));
            assert.equal(await browser.text("h1"), "That did not work");
            assert.match(await browser.text(".notice.bad"), /does not come from a page of this appliance/);
            const messages = await browser.consoleMessages();
            assert.equal(messages.length, 1);
            assert.match(messages[0], /status of 403/);
            assert.equal(await syncState(), "off");
        } finally {
            server.closeAllConnections();
            server.close();
        }
    });
}

test("a form needs the token of its own session, and its own origin", async () => {
    await appliance.logIn(browser);
    await browser.visit(urlOf("/sync"));
    const token = await browser.attribute("main [name=token]", "value");
    const { cookies: [{ value: session }] } = await browser.devtools("Network.getCookies", { urls: [urlOf()] });
    const send = async (fields, headers = {}) => (await fetch(urlOf("/sync"), {
        method: "POST",
        redirect: "manual",
        headers: { Cookie: `vokpage_session=${session}`, ...headers },
        body: new URLSearchParams({ switch: "off", ...fields }),
    })).status;
    const { origin, port } = new URL(urlOf());
    assert.equal(await send({ token }), 200);
    assert.equal(await send({ token }, { Origin: origin }), 200);
    assert.equal(await send({ token }, { Origin: origin.replace(port, Number(port) + 1) }), 403);
    assert.equal(await send({ token }, { Origin: "null" }), 403);
    assert.equal(await send({ token: session }), 403);
    assert.equal(await send({ token: "0".repeat(32) }), 403);
    assert.equal(await send({}), 403);
    assert.equal(await send({ token }, { Cookie: `vokpage_token=${token}` }), 403);
    assert.equal(await send({ token }, { Cookie: `vokpage_session=${session}; vokpage_session=${session}` }), 400);
});

// ---- The first setup ----------------------------------------------------------------------------

test("the first setup begins with the administrator, and needs the login from then on", async () => {
    await appliance.run(`mv ${ADMINISTRATORS} /tmp/`);
    await browser.visit(urlOf());
    assert.equal(await browser.url(), urlOf("/setup/administrator"));
    assert.equal(await browser.text("[aria-current=step]"), "Administrator");
    assert.deepEqual(await browser.consoleMessages(), []);
    await browser.type("#name", "anna");
    await browser.type("#password", "carla's own");
    await browser.type("#repeated", "carla's own");
    await browser.follow("button.main");
    assert.match(await browser.text(".complaint"), /A password has 8 to 32 characters/);
    for (const [name, words] of [["anna", /exists already/], ["carla", null]]) {
        await browser.type("#name", name);
        await browser.type("#password", "carlas own");
        await browser.type("#repeated", "carlas own");
        await browser.follow("button.main");
        if (words) {
            assert.match(await browser.text(".notice.bad"), words);
        }
    }
    assert.equal(await browser.url(), urlOf("/setup"));
    assert.equal(await browser.text("h2"), "Step 1 of 3: name and language");
    assert.equal(await appliance.run(`cat ${ADMINISTRATORS}; stat -c %a ${ADMINISTRATORS}`), "carla\n600\n");
    await appliance.run("vokctl users verify carla <<END\ncarlas own\nEND");

    await browser.follow(".who button");
    await browser.visit(urlOf("/setup"));
    assert.equal(await browser.url(), urlOf("/login"), "the setup is pending still, but not free any more");
    await browser.visit(urlOf("/setup/administrator"));
    assert.equal(await browser.url(), urlOf("/login"));
    await appliance.run(`mv /tmp/administrators ${ADMINISTRATORS}`);
});

test("an appliance that has been set up makes no administrator", async () => {
    await appliance.run(`mv ${ADMINISTRATORS} /tmp/; sed -i s/firsttime=1/firsttime=0/ /etc/pelconfig/system_var`);
    for (const place of ["", "/setup", "/setup/administrator"]) {
        await browser.visit(urlOf(place));
        assert.equal(await browser.url(), urlOf("/login"));
    }
    await appliance.run(`mv /tmp/administrators ${ADMINISTRATORS}; sed -i s/firsttime=0/firsttime=1/ /etc/pelconfig/system_var`);
});
