// Where no service answers, the page itself is signed on.

import assert from "node:assert/strict";
import test from "node:test";

import { sentFile, serveApplication } from "./support/application.mjs";
import { holds, kinds, launch, open } from "./support/browsers.mjs";
import { likeness, pointsOf, replay, withoutTime } from "./support/ink.mjs";
import { unusedPort } from "./support/processes.mjs";

const size = [660, 400];

// Strokes in pixels from the upper left of the surface.
const strokes = [
  [[60, 200], [100, 120], [160, 260], [220, 140], [300, 250], [420, 180], [600, 210]],
  [[150, 320], [350, 300], [550, 330]],
];

// The surface with its place, once the page may be signed on.
async function surfaceOf(page) {
  await holds(page, () => document.querySelector("scribera-pad").pad);
  const surface = await page.$("scribera-pad >>> canvas");
  return { surface, ...(await surface.boundingBox()) };
}

async function signWithTheMouse(page) {
  const { x: left, y: top } = await surfaceOf(page);
  for (const [[x, y], ...rest] of strokes) {
    await page.mouse.move(left + x, top + y);
    await page.mouse.down();
    for (const [nextX, nextY] of rest) await page.mouse.move(left + nextX, top + nextY, { steps: 8 });
    await page.mouse.up();
  }
}

async function signWithAFinger(page) {
  const { x: left, y: top } = await surfaceOf(page);
  for (const [[x, y], ...rest] of strokes) {
    const finger = await page.touchscreen.touchStart(left + x, top + y);
    for (const [nextX, nextY] of rest) await finger.move(left + nextX, top + nextY);
    await finger.end();
  }
}

// Only Chromium can be told to be written on with a pen.
async function signWithAPen(page) {
  const { x: left, y: top } = await surfaceOf(page);
  const session = await page.createCDPSession();
  const send = (type, [x, y], force) =>
    session.send("Input.dispatchMouseEvent", {
      ...{ type, x: left + x, y: top + y, force, pointerType: "pen", clickCount: 1 },
      ...{ button: "left", buttons: type === "mouseReleased" ? 0 : 1 },
    });
  for (const stroke of strokes) {
    await send("mousePressed", stroke[0], 0.125);
    for (const [index, point] of stroke.slice(1).entries()) await send("mouseMoved", point, (index + 2) / 8);
    await send("mouseReleased", stroke.at(-1), 0);
  }
}

const written = (page) =>
  page.$eval("scribera-pad", async ({ pad }) => ({
    points: pad.points(),
    ink: await pad.ink(),
    area: pad.area,
    reason: pad.reason?.type,
  }));

for (const kind of kinds)
  test(`Without a service in ${kind}`, async (t) => {
    const browser = await launch(t, kind);
    const nowhere = `ws://127.0.0.1:${await unusedPort()}/pad`;
    const site = await serveApplication(t, {
      element: `model="K210" width="${size[0]}" height="${size[1]}" url="${nowhere}"`,
    });
    const page = await open(browser, site.origin);

    const signatures = { mouse: signWithTheMouse, finger: signWithAFinger };
    if (kind === "chromium") signatures.pen = signWithAPen;
    for (const [tool, sign] of Object.entries(signatures))
      await t.test(`what a ${tool} writes is what the library makes of its ink`, async (t) => {
        await page.$eval("scribera-pad", (element) => element.clear());
        await sign(page);
        const { surface, x: left, y: top } = await surfaceOf(page);
        const { points, ink, area, reason } = await written(page);
        assert.equal(reason, "no-service");
        assert.equal(points.filter(({ end }) => end).length, strokes.length);
        // A pad unit is nearer than a pixel: the first point lies where the stroke began.
        const [[firstX, firstY]] = strokes[0];
        assert.ok(Math.abs(((points[0].x - area.left) * size[0]) / area.width - firstX) < 1, `${points[0].x} ${left}`);
        assert.ok(Math.abs(((points[0].y - area.top) * size[1]) / area.height - firstY) < 1, `${points[0].y} ${top}`);
        if (tool === "pen") assert.deepEqual(points.slice(0, 3).map(({ pressure }) => pressure), [256, 512, 768]);

        const library = replay(t, ink, "K210", size);
        assert.deepEqual(pointsOf(ink), points.map(withoutTime));
        assert.deepEqual(pointsOf(library.ink), pointsOf(ink));
        const alike = likeness(await surface.screenshot(), library.picture);
        assert.ok(alike.near >= 0.995 && alike.darkness <= 0.02, JSON.stringify(alike));
      });

    await t.test("the form wants a signature, and sends the confirmed one", async (t) => {
      const isValid = () => page.$eval("form", (form) => form.checkValidity());
      await page.click("button[type=reset]");
      assert.equal(await isValid(), false);
      await page.click("button.send");
      assert.equal(site.requests.some(({ path }) => path === "/signed"), false);

      await signWithTheMouse(page);
      const { ink } = await written(page);
      await page.click("scribera-pad >>> [part~=confirm]");
      await holds(page, () => document.querySelector("form").checkValidity());
      await Promise.all([page.waitForNavigation(), page.click("button.send")]);
      assert.equal(await page.title(), "Thank you");

      const { head, content } = sentFile(site.requests.find(({ path }) => path === "/signed"), "signature");
      assert.match(head, /filename="signature\.png"\r\ncontent-type: image\/png/i);
      const alike = likeness(content, replay(t, ink, "K210", size).picture);
      assert.ok(alike.near >= 0.995 && alike.darkness <= 0.02, JSON.stringify(alike));
    });

    assert.deepEqual(page.faults, []);
  });
