// The examples, used as somebody uses them who has just found them.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";

import { holds, kinds, launch, open } from "./support/browsers.mjs";
import { pointsOf } from "./support/ink.mjs";
import { file, serve, tree } from "./support/pages.mjs";
import { folder, run } from "./support/processes.mjs";
import { startService } from "./support/service.mjs";

// An example as it is, but with the test's service instead of the usual port.
function example(name, place, attribute) {
  const page = file("web", "examples", name).toString();
  assert.ok(page.includes(place));
  return page.replace(place, `${place}${attribute}`);
}

for (const kind of kinds)
  test(`In ${kind}`, async (t) => {
    const browser = await launch(t, kind);

    await t.test("the contract is signed", async (t) => {
      const service = await startService(t, { key: "confirm" });
      const site = await serve(t, {
        "/examples/contract.html": example("contract.html", "<scribera-pad ", `url="${service.pad}" `),
        "/client/scribera-pad.js": file("web", "client", "scribera-pad.js"),
      });
      const page = await open(browser, `${site.origin}/examples/contract.html`);
      await page.type("[name=holder]", "A. Holder");
      await holds(page, () => document.querySelector("scribera-pad").value);
      await page.click("form > p > button");
      await holds(page, () => document.querySelector("output").value);
      const told = await page.$eval("output", ({ value }) => value);
      assert.match(told, /^holder: 9 bytes\nsignature: \d{4,} bytes\nink: \d{4,} bytes$/);
      assert.deepEqual(page.faults, []);
    });

    await t.test("the framework shows the signature and lets it be sent", async (t) => {
      const service = await startService(t, { key: "confirm" });
      const site = await serve(t, {
        "/examples/vue.html": example("vue.html", 'h("scribera-pad", {', `url: "${service.pad}",`),
        "/examples/node_modules/vue/dist/vue.esm-browser.prod.js": file(
          ..."tests/browser/node_modules/vue/dist/vue.esm-browser.prod.js".split("/"),
        ),
        "/client/scribera-pad.js": file("web", "client", "scribera-pad.js"),
      });
      const page = await open(browser, `${site.origin}/examples/vue.html`);
      await holds(page, () => document.querySelector("img")?.naturalWidth > 0);
      assert.equal(await page.$eval("main > button", ({ disabled }) => disabled), false);
      assert.deepEqual(page.faults, []);
    });

    await t.test("the service's own page signs, within its policy", async (t) => {
      const service = await startService(t, { key: "confirm" });
      const page = await open(browser, `${service.address}/example#model=T580`);
      await holds(page, () => document.querySelector("scribera-pad")?.value);
      assert.equal(await page.$eval("scribera-pad", ({ pad }) => pad.model), "T580");
      await page.click("form button");
      await holds(
        page,
        () => !document.querySelector("section").hidden && document.querySelector("img").naturalWidth > 0,
      );
      const ink = await page.$eval("pre", ({ textContent }) => textContent);
      assert.equal(pointsOf(ink).length, await page.$eval("scribera-pad", ({ pad }) => pad.count));
      assert.deepEqual(page.faults, []);
    });
  });

test("the host without a browser takes a signature", async (t) => {
  const service = await startService(t, { key: "confirm", flags: ["--allow-no-origin"] });
  const where = folder(t);
  run(process.execPath, [join(tree, "web", "examples", "node-host", "sign.js"), "K420", service.pad], { cwd: where });
  assert.ok(pointsOf(readFileSync(join(where, "signature.ink"), "latin1")).length > 400);
  assert.equal(readFileSync(join(where, "signature.png")).toString("latin1", 1, 4), "PNG");
});
