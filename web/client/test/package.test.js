import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";
import * as exported from "../scribera-pad.js";

const folder = fileURLToPath(new URL("..", import.meta.url));
const read = (path) => readFileSync(new URL(`../${path}`, import.meta.url), "utf8");

test("what goes over the line is less than 12 kB", () => {
  assert.ok(gzipSync(read("scribera-pad.js"), { level: 9 }).length < 12_000);
});

test("the module needs nothing else", () => {
  assert.doesNotMatch(read("scribera-pad.js"), /\bimport\b|\brequire\(/);
  assert.equal(JSON.parse(read("package.json")).dependencies, undefined);
});

test("the package holds the module, its types and its description", () => {
  const [{ files }] = JSON.parse(
    execFileSync("npm", ["pack", "--dry-run", "--json"], { cwd: folder, stdio: ["ignore", "pipe", "ignore"] }),
  );
  assert.deepEqual(files.map(({ path }) => path).sort(), [
    "README.md",
    "package.json",
    "scribera-pad.d.ts",
    "scribera-pad.js",
  ]);
});

test("the lock file names no registry", () => {
  assert.doesNotMatch(read("package-lock.json"), /"resolved"/);
});

test("the types declare what is exported, and are right in themselves", () => {
  const types = read("scribera-pad.d.ts");
  const declared = [...types.matchAll(/^export (?:abstract )?(?:class|const) (\w+)/gm)].map(([, name]) => name);
  assert.deepEqual(declared.sort(), Object.keys(exported).sort());
  execFileSync(
    process.execPath,
    [
      "node_modules/typescript/bin/tsc",
      "--strict",
      "--noEmit",
      "--lib",
      "es2022,dom",
      "--module",
      "nodenext",
      "test/use.ts",
    ],
    { cwd: folder, stdio: ["ignore", 2, 2] },
  );
});

test("the types know each member of a pad", () => {
  const types = read("scribera-pad.d.ts");
  for (const [name, of] of [
    ["Pad", "Pad"],
    ["ScriberaPadElement", "ScriberaPadElement"],
  ]) {
    const body = types.match(new RegExp(`class ${of} .*?\\n}`, "s"))[0];
    const members = Object.getOwnPropertyNames(exported[name].prototype).filter(
      (member) => !/^(_|constructor|\w+Callback$)/.test(member),
    );
    assert.ok(members.length > 5);
    for (const member of members) assert.match(body, new RegExp(`\\b${member}\\b`));
  }
});
