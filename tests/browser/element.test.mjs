// The element <scribera-pad> with a pad behind the service.

import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import test from "node:test";

import { sentFile, serveApplication } from "./support/application.mjs";
import { holds, kinds, launch, open } from "./support/browsers.mjs";
import { likeness } from "./support/ink.mjs";
import { folder } from "./support/processes.mjs";
import { startService } from "./support/service.mjs";

const size = [800, 400];
const models = ["K210", "K420", "K421B", "KM730", "T580"];

const isConfirmed = (page) => holds(page, () => document.querySelector("scribera-pad").value);
const isSigned = (page, points) =>
  holds(page, (points) => document.querySelector("scribera-pad").pad?.count >= points, points);

async function pictureOf(page) {
  const numbers = await page.$eval("scribera-pad", async ({ pad }) => [
    ...new Uint8Array(await (await pad.image("png")).arrayBuffer()),
  ]);
  return Buffer.from(numbers);
}

// Its drawing goes by animation frame.
const isDrawn = (page) =>
  page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));

for (const kind of kinds)
  test(`In ${kind}`, async (t) => {
    const browser = await launch(t, kind);

    await t.test("the element shows what the library draws, on every model", async (t) => {
      const service = await startService(t, { plays: "flowing", key: "confirm" });
      for (const model of models) {
        const site = await serveApplication(t, {
          element: `model="${model}" width="${size[0]}" height="${size[1]}" url="${service.pad}"`,
        });
        const page = await open(browser, site.origin);
        await isConfirmed(page);
        await isDrawn(page);
        const surface = await page.$("scribera-pad >>> canvas");
        const alike = likeness(await surface.screenshot(), await pictureOf(page));
        t.diagnostic(`${model}: ${JSON.stringify(alike)}`);
        assert.ok(alike.near >= 0.995 && alike.darkness <= 0.02, `${model}: ${JSON.stringify(alike)}`);
        await page.$eval("scribera-pad", (element) => element.close());
        assert.deepEqual(page.faults, []);
      }
    });

    await t.test("it joins a stroke that a key has ended to no other, as the library's picture", async (t) => {
      const samples = join(folder(t), "key.rec");
      const strokes = [[400, 400, 0], [900, 400, 1], [0, 0, 4], [2000, 1400, 0], [2400, 1400, 1], [2400, 1400, 2]];
      const lines = strokes.map(([x, y, status], index) => [5 * index, x, y, 900, status].join(" "));
      const head = ["# scribera recording 1", "model: SCK210", "area: 160 220 2360 1430", "max-pressure: 2048"];
      writeFileSync(samples, [...head, ...lines, ""].join("\n"));
      const service = await startService(t, { key: "confirm", env: { SCRIBERA_SIM_RECORDING: samples } });
      const site = await serveApplication(t, {
        element: `model="K210" width="${size[0]}" height="${size[1]}" pen-width="10" url="${service.pad}"`,
      });
      const page = await open(browser, site.origin);
      await isConfirmed(page);
      await isDrawn(page);
      assert.equal(await page.$eval("scribera-pad", ({ pad }) => pad.count), strokes.length - 1);
      const surface = await page.$("scribera-pad >>> canvas");
      const alike = likeness(await surface.screenshot(), await pictureOf(page));
      assert.ok(alike.near >= 0.995 && alike.darkness <= 0.02, JSON.stringify(alike));
      assert.deepEqual(page.faults, []);
    });

    await t.test("it has the pixels of a fine screen", async (t) => {
      const service = await startService(t, { key: "confirm" });
      const site = await serveApplication(t, {
        element: `model="K210" width="${size[0]}" height="${size[1]}" url="${service.pad}"`,
      });
      const page = await open(browser, "about:blank");
      await page.setViewport({ width: 1000, height: 700, deviceScaleFactor: 2 });
      await page.goto(site.origin);
      await isConfirmed(page);
      assert.deepEqual(
        await page.$eval("scribera-pad >>> canvas", ({ width, height }) => [width, height]),
        size.map((side) => 2 * side),
      );
    });

    await t.test("the form sends the signature that was confirmed on the pad", async (t) => {
      const service = await startService(t, { key: "confirm" });
      const site = await serveApplication(t, {
        element: `model="T580" width="${size[0]}" height="${size[1]}" url="${service.pad}"`,
      });
      const page = await open(browser, site.origin);
      await isConfirmed(page);
      const picture = await pictureOf(page);
      await Promise.all([page.waitForNavigation(), page.click("button.send")]);
      const sent = site.requests.find(({ path }) => path === "/signed");
      assert.deepEqual(sentFile(sent, "signature").content, picture);
      assert.equal(sentFile(sent, "holder").content.toString(), "A. Holder");
    });

    await t.test("a form that was reset wants another signature", async (t) => {
      const service = await startService(t, { key: "confirm", env: { SCRIBERA_SIM_LOOP: "0" } });
      const site = await serveApplication(t, { element: `model="K210" url="${service.pad}"` });
      const page = await open(browser, site.origin);
      await isConfirmed(page);
      await page.click("button[type=reset]");
      await holds(page, () => document.querySelector("scribera-pad").pad.count === 0);
      assert.deepEqual(
        await page.$eval("scribera-pad", ({ value, validity, validationMessage }) => [
          value,
          validity.valueMissing,
          validationMessage !== "",
        ]),
        [null, true, true],
      );
    });

    if (kind === "chromium")
      await t.test("a screen reader meets a named group, what to do, and its buttons", async (t) => {
        const service = await startService(t);
        const site = await serveApplication(t, { element: `model="K210" url="${service.pad}"` });
        const page = await open(browser, site.origin);
        await isSigned(page, 100);
        await holds(page, () => !document.querySelector("scribera-pad").shadowRoot.querySelector("button").disabled);
        const tree = [];
        const walk = ({ role, name, children = [] }) => (tree.push(`${role}: ${name}`), children.forEach(walk));
        walk(await page.accessibility.snapshot({ interestingOnly: false }));
        t.diagnostic(tree.join("\n"));
        assert.ok(tree.includes("group: Signature"), tree.join("\n"));
        for (const button of ["Confirm", "Clear", "Cancel"]) assert.ok(tree.includes(`button: ${button}`), tree.join("\n"));
        assert.ok(tree.some((one) => /^img: Signature: \w/i.test(one) || /^image: Signature: \w/i.test(one)), tree.join("\n"));
        assert.ok(tree.some((one) => /^status/.test(one)), tree.join("\n"));
      });

    await t.test("the keyboard reaches its buttons, and confirms", async (t) => {
      const service = await startService(t);
      const site = await serveApplication(t, { element: `model="K210" url="${service.pad}"` });
      const page = await open(browser, site.origin);
      await isSigned(page, 100);
      await page.focus("input");
      const focused = () =>
        page.evaluate(() => {
          let element = document.activeElement;
          while (element?.shadowRoot?.activeElement) element = element.shadowRoot.activeElement;
          return element?.textContent;
        });
      const met = [];
      for (let press = 0; press < 4; ++press) {
        await page.keyboard.press("Tab");
        met.push(await focused());
      }
      assert.deepEqual(met, ["Confirm", "Clear", "Cancel", "Send"]);
      for (let press = 0; press < 3; ++press) {
        await page.keyboard.down("Shift");
        await page.keyboard.press("Tab");
        await page.keyboard.up("Shift");
      }
      assert.equal(await focused(), "Confirm");
      await page.keyboard.press("Enter");
      await isConfirmed(page);
    });
  });
