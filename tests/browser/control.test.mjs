// The element <scribera-pad> as a form control, signed on with the mouse.

import assert from "node:assert/strict";
import test from "node:test";

import { serveApplication } from "./support/application.mjs";
import { holds, kinds, launch, open } from "./support/browsers.mjs";

async function sign(page) {
  const { x, y } = await (await page.$("scribera-pad >>> canvas")).boundingBox();
  await page.mouse.move(x + 50, y + 50);
  await page.mouse.down();
  await page.mouse.move(x + 150, y + 90, { steps: 10 });
  await page.mouse.up();
}

// What the element told since the last time, and how it is.
const state = (page) =>
  page.$eval("scribera-pad", (element) => ({
    told: window.told.splice(0),
    hasValue: element.value !== null,
    sends: new FormData(document.forms[0]).has("signature"),
    isValid: element.validity.valid,
    points: element.pad ? element.pad.count > 0 : null,
  }));

for (const kind of kinds)
  test(`In ${kind}`, async (t) => {
    const browser = await launch(t, kind);
    const site = await serveApplication(t, {
      element: 'model="K210" source="page" width="400" height="200" value-type="ink" pen-width="5" pen-color="#0000ff"',
    });
    const fresh = async () => {
      const page = await open(browser, site.origin);
      await holds(page, () => document.querySelector("scribera-pad")?.pad);
      await page.$eval("scribera-pad", (element) => {
        window.told = [];
        for (const type of ["sign", "change", "confirm", "cancel", "error"])
          element.addEventListener(type, () => window.told.push(type));
      });
      return page;
    };
    const confirm = async (page) => {
      await sign(page);
      await page.$eval("scribera-pad", (element) => element.confirm());
      await holds(page, () => document.querySelector("scribera-pad").value);
    };

    await t.test("it has a value from the confirmation until somebody writes on", async () => {
      const page = await fresh();
      await confirm(page);
      const signed = { hasValue: true, sends: true, isValid: true, points: true };
      assert.deepEqual(await state(page), { told: ["sign", "change", "confirm"], ...signed });
      await sign(page);
      const open = { hasValue: false, sends: false, isValid: false, points: true };
      assert.deepEqual(await state(page), { told: ["change"], ...open });
      assert.deepEqual(page.faults, []);
    });

    await t.test("cancelling, clearing and a reset leave nothing", async () => {
      const page = await fresh();
      const empty = { hasValue: false, sends: false, isValid: false, points: false };
      await confirm(page);
      await page.$eval("scribera-pad", (element) => element.cancel());
      await holds(page, () => window.told.includes("cancel"));
      assert.deepEqual(await state(page), { told: ["sign", "change", "confirm", "change", "cancel"], ...empty });
      await sign(page);
      await page.$eval("scribera-pad", (element) => element.clear());
      assert.deepEqual(await state(page), { told: ["sign"], ...empty });
      await sign(page);
      await page.evaluate(() => document.forms[0].reset());
      assert.deepEqual(await state(page), { told: ["sign"], ...empty });
      assert.deepEqual(page.faults, []);
    });

    await t.test("disabled it closes the pad, but keeps what a form is sending", async () => {
      const page = await fresh();
      const disable = (is) => page.$eval("scribera-pad", (element, is) => element.toggleAttribute("disabled", is), is);
      await disable(true);
      await holds(page, () => !document.querySelector("scribera-pad").pad);
      await disable(false);
      await holds(page, () => document.querySelector("scribera-pad").pad);
      await confirm(page);
      await disable(true);
      await disable(false);
      const { hasValue, points } = await state(page);
      assert.deepEqual({ hasValue, points }, { hasValue: true, points: true });
      assert.deepEqual(page.faults, []);
    });

    await t.test("moved it goes on, removed it closes the pad", async () => {
      const page = await fresh();
      await sign(page);
      await page.$eval("scribera-pad", (element) => {
        window.pad = element.pad;
        document.body.append(element);
      });
      assert.equal((await state(page)).points, true);
      await page.$eval("scribera-pad", (element) => element.remove());
      await holds(page, () => window.pad.state === "closed");
      assert.deepEqual(page.faults, []);
    });

    await t.test("it speaks the page's language", async (t) => {
      const site = await serveApplication(t, {
        element: "",
        more: {
          "/": `<!doctype html><html lang="de"><title>Unterschrift</title>
            <scribera-pad model="K210" source="page"></scribera-pad>
            <script type="module">
            import { ScriberaPadElement } from "./scribera-pad.js";
            Object.assign(ScriberaPadElement.texts, { confirm: "Bestätigen", page: "Bitte hier unterschreiben." });
            </script></html>`,
        },
      });
      const page = await open(browser, site.origin);
      await holds(page, () => document.querySelector("scribera-pad").pad);
      const words = () =>
        page.$eval("scribera-pad", ({ shadowRoot }) => [
          shadowRoot.querySelector("p").textContent,
          ...[...shadowRoot.querySelectorAll("button")].map(({ textContent }) => textContent),
        ]);
      await holds(page, () => document.querySelector("scribera-pad").shadowRoot.textContent.includes("Bitte"));
      assert.deepEqual(await words(), ["Bitte hier unterschreiben.", "Bestätigen", "Clear", "Cancel"]);
      assert.deepEqual(page.faults, []);
    });

    await t.test("it draws with its pen", async () => {
      const page = await fresh();
      await sign(page);
      const [red, green, blue] = await page.$eval("scribera-pad", async ({ pad }) => {
        const picture = await createImageBitmap(await pad.image("png"));
        const canvas = document.createElement("canvas");
        const context = canvas.getContext("2d");
        context.drawImage(picture, -100, -70); // the middle of what was written comes to the corner
        return [...context.getImageData(0, 0, 1, 1).data];
      });
      assert.deepEqual([red, green, blue], [0, 0, 255]);
    });
  });
