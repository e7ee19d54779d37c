// What happens to a signature when a page, a tab, the service or the process behind a pad goes away under it.

import assert from "node:assert/strict";
import test from "node:test";

import { heard, serveApplication, start } from "./support/application.mjs";
import { holds, kinds, launch, open } from "./support/browsers.mjs";
import { pointsOf, withoutTime } from "./support/ink.mjs";
import { until } from "./support/processes.mjs";
import { startService, workersOf } from "./support/service.mjs";

const model = "K210";
const size = [660, 400];
const slowly = { plays: "paraph", rate: "1", key: "confirm" }; // a few seconds

const count = (page) => page.evaluate(() => window.pad.count);
const hasBegun = (page) => holds(page, () => window.pad?.count > 20);

// That the signature is confirmed, and that page and library have the same points of it.
async function assertWhole(page) {
  assert.equal(await page.evaluate(() => window.pad.wait()), "confirm");
  const { points, ink } = await page.evaluate(async () => ({ points: window.pad.points(), ink: await window.pad.ink() }));
  assert.ok(points.length > 400, `${points.length} points`);
  assert.deepEqual(points.map(withoutTime), pointsOf(ink));
}

for (const kind of kinds)
  test(`In ${kind}`, async (t) => {
    const browser = await launch(t, kind);
    const site = await serveApplication(t);

    await t.test("a page that is loaded again goes on with the signature", async (t) => {
      const service = await startService(t, slowly);
      const page = await open(browser, site.origin);
      const { token } = await start(page, { model, size, url: service.pad });
      await hasBegun(page);
      await page.reload();
      const before = await start(page, { model, size, url: service.pad });
      assert.equal(before.token, token);
      await assertWhole(page);
    });

    await t.test("the next page of the tab gets the pad, and nothing of the signature", async (t) => {
      const service = await startService(t, slowly);
      const page = await open(browser, site.origin);
      const { token } = await start(page, { model, size, url: service.pad });
      await hasBegun(page);
      await page.goto(`${site.origin}/?next`);
      const next = await start(page, { model, size, url: service.pad });
      assert.notEqual(next.token, token);
      assert.equal(await page.evaluate(() => window.heard.find(({ type }) => type === "point")?.index ?? 0), 0);
      await assertWhole(page);
    });

    if (kind === "chromium") // Firefox cannot be told to crash one
      await t.test("a tab that crashed and is loaded again goes on with the signature", async (t) => {
        const service = await startService(t, slowly);
        const page = await open(browser, site.origin);
        const { token } = await start(page, { model, size, url: service.pad });
        await hasBegun(page);
        const crashed = new Promise((resolve) => page.once("error", resolve));
        (await page.createCDPSession()).send("Page.crash").catch(() => {});
        await crashed;
        await page.reload();
        assert.equal((await start(page, { model, size, url: service.pad })).token, token);
        await assertWhole(page);
      });

    await t.test("a tab that crashed is followed by another one with the token", async (t) => {
      const service = await startService(t, slowly);
      const page = await open(browser, site.origin);
      const { token } = await start(page, { model, size, url: service.pad });
      await hasBegun(page);
      if (kind === "chromium") {
        const crashed = new Promise((resolve) => page.once("error", resolve));
        page.goto("chrome://crash").catch(() => {});
        await crashed;
      } else {
        await page.close(); // Firefox cannot be told to crash one
      }
      const next = await open(browser, site.origin);
      assert.equal((await start(next, { token, url: service.pad })).token, token);
      await assertWhole(next);
    });

    await t.test("a token serves the page that has it, and the one before is told", async (t) => {
      const service = await startService(t, { plays: "" });
      const page = await open(browser, site.origin);
      const { token } = await start(page, { model, size, url: service.pad });
      const next = await open(browser, site.origin);
      assert.equal((await start(next, { token, url: service.pad })).token, token);
      await holds(page, () => window.heard.some(({ error }) => error === "taken-over"));
    });

    await t.test("a service that was killed and started again takes the next signature", async (t) => {
      const first = await startService(t, slowly);
      const page = await open(browser, site.origin);
      const { token } = await start(page, { model, size, url: first.pad });
      await hasBegun(page);
      const workers = workersOf(first);
      await first.program.end("SIGKILL");
      await holds(page, () => window.pad.state === "reconnecting");
      await until(() => workers.every((process) => !isAlive(process)));

      await startService(t, { ...slowly, port: first.port });
      await holds(page, () => window.pad.state === "open");
      assert.deepEqual(
        (await heard(page)).filter(({ error }) => error).map(({ error }) => error),
        ["session-lost"],
      );
      assert.notEqual(await page.evaluate(() => window.pad.token), token);
      await assertWhole(page);
    });

    await t.test("a worker that is killed leaves the page its points, and an error at once", async (t) => {
      const service = await startService(t, slowly);
      const page = await open(browser, site.origin);
      await start(page, { model, size, url: service.pad });
      await hasBegun(page);
      const [worker] = workersOf(service);
      const killed = await page.evaluate(() => performance.now());
      process.kill(worker, "SIGKILL");
      await holds(page, () => window.heard.some(({ error }) => error));
      const events = await heard(page);
      const { error, at } = events.find(({ error }) => error);
      assert.equal(error, "worker-failed");
      t.diagnostic(`${Math.round(at - killed)} ms later`);
      const points = events.filter(({ type }) => type === "point");
      assert.equal(await count(page), points.length);
      assert.deepEqual(points.map(({ index }) => index), [...points.keys()]);

      await start(page, { model, size, url: service.pad });
      await assertWhole(page);
    });

    await t.test("five pads sign at once, one of which dies", async (t) => {
      const service = await startService(t, slowly);
      const models = ["K210", "K420", "K421B", "KM730", "T580"];
      const pages = [];
      for (const model of models) {
        const page = await open(browser, site.origin);
        await start(page, { model, size, url: service.pad });
        pages.push(page);
      }
      const workers = workersOf(service);
      assert.equal(workers.length, models.length);
      await hasBegun(pages[2]);
      process.kill(workers[2], "SIGKILL");
      await holds(pages[2], () => window.heard.some(({ error }) => error === "worker-failed"));
      for (const page of pages.filter((_, index) => index !== 2)) await assertWhole(page);
    });
  });

function isAlive(process_) {
  try {
    process.kill(process_, 0);
    return true;
  } catch {
    return false;
  }
}
