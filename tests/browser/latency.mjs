// How long a point takes from the driver's callback to the page's event, with five pads at once, each signed on at 200
// samples a second, and shown by the element meanwhile: node tests/browser/latency.mjs [SECONDS]. The time of a point
// is in whole milliseconds, rounded down, which counts as up to one more.

import test from "node:test";

import { serveApplication } from "./support/application.mjs";
import { holds, kinds, launch, open } from "./support/browsers.mjs";
import { startService } from "./support/service.mjs";

const seconds = Number(process.argv[2] ?? 30);

for (const kind of kinds)
  test(`From callback to event in ${kind}`, async (t) => {
    const service = await startService(t, { plays: "flowing", rate: "1", env: { SCRIBERA_SIM_LOOP: "1" } });
    const browser = await launch(t, kind);
    const site = await serveApplication(t);
    const page = await open(browser, site.origin);
    await holds(page, () => window.start);
    const took = await page.evaluate(
      async (url, seconds) => {
        const { models } = await import("./scribera-pad.js");
        const took = [];
        const elements = Object.keys(models).map((model) => {
          const element = document.createElement("scribera-pad");
          for (const [name, value] of Object.entries({ model, url, manual: "" })) element.setAttribute(name, value);
          return element;
        });
        document.body.append(...elements);
        for (const element of elements) await element.open();
        for (const { pad } of elements)
          pad.addEventListener("point", ({ time }) => took.push(performance.timeOrigin + performance.now() - time));
        await new Promise((resolve) => setTimeout(resolve, 1000 * seconds));
        for (const element of elements) await element.close();
        return took.sort((one, other) => one - other);
      },
      service.pad,
      seconds,
    );
    const part = (share) => took[Math.ceil(share * took.length) - 1].toFixed(1);
    t.diagnostic(
      `${took.length} points, ms: median ${part(0.5)}, 99 % ${part(0.99)}, 99.9 % ${part(0.999)}, all ${part(1)}`,
    );
  });
