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
        driveCount.textContent = `The appliance has ${tov_hdds()} internal drives, but tells of ${shown}.`;
        driveCount.hidden = false;
    }
}

// Overview: a collection that runs now has news soon.
if (document.querySelector("[data-collecting]") !== null) {
    setTimeout(() => location.reload(), 3000);
}
