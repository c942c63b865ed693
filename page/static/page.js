// SPDX-License-Identifier: MIT
//
// What the pages do beyond plain HTML. They work without it. The functions this_page() and tov_hdds()
// come with the pages that have something to tell by them.
"use strict";

// Setup: marks the step that the form is at, and those that are done.
if (typeof this_page === "function") {
    for (const step of document.querySelectorAll("[data-step]")) {
        const number = Number(step.dataset.step);
        step.classList.toggle("done", number < this_page());
        if (number === this_page()) {
            step.setAttribute("aria-current", "step");
        }
    }
}

// Overview: the appliance counts its internal drives apart from the report on them. Where the two
// differ, one of the drives does not answer.
const driveCount = document.querySelector("[data-drives]");
if (driveCount !== null && typeof tov_hdds === "function") {
    const shown = Number(driveCount.dataset.drives);
    if (tov_hdds() !== shown) {
        driveCount.textContent = driveCount.dataset.difference
            .replace("{1}", tov_hdds()).replace("{2}", shown);
        driveCount.hidden = false;
    }
}

// Overview: while a collection runs, its progress is asked for again and again and put into the page;
// at the end all that it has changed. Nothing else is touched, so that the focus stays where it is.
const collection = document.querySelector("#collection");
const OVERVIEW = "/cgi-bin/vokpage";
const PAUSE = 2000;
const LONGEST_PAUSE = 60000;

// The text of a page; null if the appliance does not give it now. A login that has ended leads elsewhere.
async function fetchText(address) {
    const response = await fetch(address).catch(() => null);
    if (response?.redirected) {
        location.reload();
    }
    return response?.ok && !response.redirected ? response.text() : null;
}

function replaceKeepingFocus(part, other) {
    const focused = part.contains(document.activeElement) ? document.activeElement.id : "";
    part.replaceChildren(...other.childNodes);
    if (focused !== "") {
        document.getElementById(focused)?.focus({ preventScroll: true });
    }
}

async function showNewStatus() {
    const text = await fetchText(location.href);
    if (text === null) {
        return false;
    }
    const fresh = new DOMParser().parseFromString(text, "text/html");
    for (const part of document.querySelectorAll("[data-live], #collection")) {
        const other = fresh.getElementById(part.id);
        if (other !== null && other.innerHTML !== part.innerHTML) {
            replaceKeepingFocus(part, other);
        }
    }
    return true;
}

function isCollecting() {
    return collection.querySelector("[data-collecting]") !== null;
}

// Returns whether the appliance has answered.
async function showProgress() {
    const text = await fetchText(`${OVERVIEW}/collection`);
    if (text === null) {
        return false;
    }
    // What is put in anew is read out anew.
    if (text.trim() !== collection.innerHTML.trim()) {
        collection.innerHTML = text;
    }
    return isCollecting() || showNewStatus();
}

// An appliance that does not answer is asked less and less often, and one that nobody looks at not at all.
async function follow(pause) {
    await new Promise((resolve) => setTimeout(resolve, pause));
    const isAnswered = document.hidden || await showProgress();
    if (isCollecting() || !isAnswered) {
        follow(isAnswered ? PAUSE : Math.min(2 * pause, LONGEST_PAUSE));
    }
}

if (collection !== null && isCollecting()) {
    follow(PAUSE);
}
