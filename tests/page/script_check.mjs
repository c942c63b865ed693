// SPDX-License-Identifier: MIT
//
// usage: script_check.mjs THIS_PAGE TOV_HDDS
//
// Reads script from standard input and runs it: it must parse, define the two functions with these
// results, and do nothing else. Each of its other lines must be a comment in script and in HTML.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import vm from "node:vm";

const [thisPage, tovHdds] = process.argv.slice(2).map(Number);
const text = readFileSync(0, "utf8");

const touched = [];
const world = new Proxy({}, {
    has: () => true, // whatever the script names, it finds here
    get: (target, name) => target[name] ?? (typeof name === "symbol" ? undefined : () => touched.push(name)),
});
vm.runInContext(text, vm.createContext(world));

assert.equal(world.this_page(), thisPage);
assert.equal(world.tov_hdds(), tovHdds);
assert.deepEqual(touched, [], "the script does something");

const FUNCTION = /^function (this_page|tov_hdds)\(\)\n\{\n\treturn -?\d+;\n\}\n/gm;
const functions = text.match(FUNCTION) ?? [];
assert.equal(functions.length, 2, "each function is there once");

const diagnostics = text.replace(FUNCTION, "").split("\n").slice(0, -1);
assert.ok(diagnostics.length >= 8, `only ${diagnostics.length} diagnostics`);
for (const line of diagnostics) {
    assert.match(line, /^\/\/<!-- .*-->$/su, "a diagnostic is a comment");
    const message = line.slice("//<!-- ".length, -"-->".length);
    assert.doesNotMatch(message, /-->|<|[\r\u2028\u2029]/, "nothing ends it early");
}
console.log(`${diagnostics.length} diagnostics`);
