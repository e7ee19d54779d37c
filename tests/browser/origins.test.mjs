// Which pages get a pad.

import assert from "node:assert/strict";
import test from "node:test";

import { serveApplication, start } from "./support/application.mjs";
import { kinds, launch, named, open } from "./support/browsers.mjs";
import { certificate } from "./support/pages.mjs";
import { startService } from "./support/service.mjs";

const host = "counter.example";

for (const kind of kinds)
  test(`In ${kind}`, async (t) => {
    const browser = await launch(t, kind, named(host));
    const sites = {
      http: await serveApplication(t),
      https: await serveApplication(t, { secure: host }),
    };
    const addresses = Object.fromEntries(
      Object.entries(sites).map(([scheme, { port }]) => [scheme, `${scheme}://${host}:${port}`]),
    );
    const pad = { model: "K210", size: [660, 400] };

    await t.test("a page of a loopback address gets a pad", async (t) => {
      const service = await startService(t);
      for (const origin of [sites.http.origin, sites.https.origin, sites.http.origin.replace("127.0.0.1", "localhost")]) {
        const page = await open(browser, origin);
        assert.match((await start(page, { ...pad, url: service.pad })).token, /^[\w-]{43}$/, origin);
        await page.evaluate(() => window.pad.close());
      }
    });

    for (const [scheme, address] of Object.entries(addresses)) {
      await t.test(`a page on ${scheme} that is allowed gets a pad, on either loopback address`, async (t) => {
        const service = await startService(t, { origins: [address] });
        for (const local of ["127.0.0.1", "localhost", "[::1]"]) {
          const page = await open(browser, address);
          const { token, message } = await start(page, { ...pad, url: `ws://${local}:${service.port}/pad` });
          assert.match(token ?? message, /^[\w-]{43}$/, local);
          await page.evaluate(() => window.pad.close());
        }
      });

      await t.test(`a page on ${scheme} that is not allowed is refused, and told so`, async (t) => {
        const others = [
          `${scheme === "http" ? "https" : "http"}://${host}:${sites[scheme].port}`, // scheme
          `${scheme}://${host}:${sites[scheme].port + 1}`, // port
          `${scheme}://${host}`,
          `${scheme}://other.${host}:${sites[scheme].port}`,
        ];
        const service = await startService(t, { origins: others });
        const page = await open(browser, address);
        const { type, message } = await start(page, { ...pad, url: service.pad });
        assert.equal(type, "refused", message);
        assert.match(message, /--allow-origin/);
        assert.ok(message.includes(address), message);
      });
    }

    await t.test("a page on https gets a pad of a service that has a certificate", async (t) => {
      const { key, cert } = certificate(t, "localhost");
      const service = await startService(t, {
        origins: [addresses.https],
        flags: ["--certificate", cert, "--key", key],
      });
      const page = await open(browser, addresses.https);
      const { token, message } = await start(page, { ...pad, url: `wss://127.0.0.1:${service.port}/pad` });
      assert.match(token ?? message, /^[\w-]{43}$/);
      await page.evaluate(() => window.pad.close());
    });

    await t.test("a frame without an origin is refused", async (t) => {
      const service = await startService(t);
      // Its script is part of it, since its module could not be fetched either.
      const frame = `<script>new WebSocket('${service.pad}', 'scribera-pad.1').onopen = () => parent.postMessage('open', '*');
        new WebSocket('${service.pad}', 'scribera-pad.1').onerror = () => parent.postMessage('refused', '*');</script>`;
      const page = await open(browser, sites.http.origin);
      const told = await page.evaluate(
        (frame) =>
          new Promise((resolve) => {
            addEventListener("message", ({ data }) => resolve(data));
            const element = Object.assign(document.createElement("iframe"), { srcdoc: frame });
            element.setAttribute("sandbox", "allow-scripts");
            document.body.append(element);
          }),
        frame,
      );
      assert.equal(told, "refused");
    });

    await t.test("a page reads nothing from the service that it may not use", async (t) => {
      const service = await startService(t);
      const page = await open(browser, addresses.http);
      const read = await page.evaluate(
        (address) => fetch(`${address}/health`).then((response) => response.text(), () => "nothing"),
        service.address,
      );
      assert.equal(read, "nothing");
    });
  });
