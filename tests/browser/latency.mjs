// Measures how long a point takes from the driver's callback to the page's event, on five pads at once at the speed of
// a hand, 200 points a second each.
//
//   node tests/browser/latency.mjs [chromium|firefox|node]...
//
// The service tells when a point came in whole milliseconds, rounded down: what is printed is up to 1 ms too long.
// "node" is a program without a browser, which shows what service and line take.

import { createRequire } from "node:module";
import { join } from "node:path";

import { serveApplication } from "./support/application.mjs";
import { launch, open } from "./support/browsers.mjs";
import { tree } from "./support/pages.mjs";
import { startService } from "./support/service.mjs";

const models = ["K210", "K420", "K421B", "KM730", "T580"];
const endless = { plays: "flowing", rate: "1", env: { SCRIBERA_SIM_LOOP: "1" } };
const settling = 2_000; // milliseconds
const measured = 10_000;

const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

// Five elements, each in a page of its own, draw meanwhile.
async function inPages(t, kind) {
  const browser = await launch(t, kind, { prefs: { "privacy.reduceTimerPrecision": false } });
  const service = await startService(t, endless);
  const pages = [];
  for (const model of models) {
    const site = await serveApplication(t, {
      element: `model="${model}" width="800" height="400" url="${service.pad}"`,
    });
    const page = await open(browser, site.origin);
    await page.waitForFunction(() => document.querySelector("scribera-pad").pad, { polling: 50 });
    await page.evaluate(() => {
      // The finer of the page's clocks, set by the one that tells the time of day.
      const begin = Date.now();
      while (Date.now() === begin);
      const ahead = performance.now() - Date.now();
      window.delays = [];
      document
        .querySelector("scribera-pad")
        .pad.addEventListener("point", ({ time }) => window.delays.push(performance.now() - ahead - time));
    });
    pages.push(page);
  }
  await sleep(settling);
  for (const page of pages) await page.evaluate(() => window.delays.splice(0));
  await sleep(measured);
  const delays = [];
  for (const page of pages) delays.push(...(await page.evaluate(() => window.delays)));
  return delays;
}

async function inNode(t) {
  const { WebSocket } = createRequire(join(tree, "web", "client", "package.json"))("ws");
  const { Pad } = await import(join(tree, "web", "client", "scribera-pad.js"));
  const service = await startService(t, endless);
  class FromLoopback extends WebSocket {
    constructor(url, protocols) {
      super(url, protocols, { origin: "http://127.0.0.1" });
    }
  }
  const begin = Date.now();
  while (Date.now() === begin);
  const ahead = performance.now() - Date.now();
  const delays = [];
  for (const model of models) {
    const pad = await Pad.open({ model, url: service.pad, webSocket: FromLoopback });
    pad.addEventListener("point", ({ time }) => delays.push(performance.now() - ahead - time));
  }
  await sleep(settling);
  delays.length = 0;
  await sleep(measured);
  return delays;
}

const chosen = process.argv.slice(2);
for (const kind of chosen.length ? chosen : ["node", "chromium", "firefox"]) {
  const endings = [];
  const t = { after: (action) => endings.push(action) };
  try {
    const delays = (await (kind === "node" ? inNode(t) : inPages(t, kind))).sort((one, other) => one - other);
    const at = (part) => delays[Math.min(delays.length - 1, Math.floor(part * delays.length))].toFixed(1);
    console.log(
      `${kind}: ${delays.length} points; half within ${at(0.5)} ms, 99 % ${at(0.99)} ms, all ${at(1)} ms`,
    );
  } finally {
    for (const action of endings.reverse()) await action();
  }
}
process.exit();
