// What browsers let a page from elsewhere do with a service on this machine, and what such a page is told.

import assert from "node:assert/strict";
import test from "node:test";

import { serveApplication, start } from "./support/application.mjs";
import { launch, named, open } from "./support/browsers.mjs";
import { unusedPort } from "./support/processes.mjs";
import { startService } from "./support/service.mjs";

const host = "contracts.example";
const pad = { model: "K210", size: [660, 400] };

// A site by http and one by https, and a service that allows both.
async function sitesAndService(t) {
  const sites = [await serveApplication(t), await serveApplication(t, { secure: host })];
  const addresses = { http: `http://${host}:${sites[0].port}`, https: `https://${host}:${sites[1].port}` };
  const service = await startService(t, { origins: Object.values(addresses) });
  return { addresses, service, places: sites.map(({ port }) => `127.0.0.1:${port}`) };
}

async function assertHasPad(page, service) {
  const { token, message } = await start(page, { ...pad, url: service.pad });
  assert.match(token ?? message, /^[\w-]{43}$/);
  await page.evaluate(() => window.pad.close());
}

async function assertMissesService(page) {
  const { type, message } = await start(page, { ...pad, url: `ws://127.0.0.1:${await unusedPort()}/pad` });
  assert.equal(type, "no-service", message);
}

async function assertMissesPermission(page, service, help) {
  const { type, message } = await start(page, { ...pad, url: service.pad });
  assert.equal(type, "permission-missing", message);
  assert.match(message, help);
}

test("In chromium, as a site of the internet", async (t) => {
  const { addresses, service, places } = await sitesAndService(t);
  const { flags } = named(host);
  const overrides = places.map((place) => `${place}=public`).join(",");
  const browser = await launch(t, "chromium", { flags: [...flags, `--ip-address-space-overrides=${overrides}`] });
  const permit = async (page, setting) => {
    const session = await browser.target().createCDPSession();
    for (const name of ["local-network-access", "loopback-network"])
      await session.send("Browser.setPermission", {
        ...{ permission: { name }, setting, origin: new URL(page.url()).origin },
        browserContextId: page.browserContext().id,
      });
  };

  await t.test("a page on https gets a pad once it is permitted", async () => {
    const page = await open(browser, addresses.https);
    await permit(page, "granted");
    await assertHasPad(page, service);
    await assertMissesService(page);
  });
  await t.test("a page on https that is denied is told how it is allowed", async () => {
    const page = await open(browser, addresses.https);
    await permit(page, "denied");
    await assertMissesPermission(page, service, /allow local access in its settings, .*LoopbackNetworkAllowedForUrls/);
  });
  await t.test("a page on https where nobody answers the question has no pad", async () => {
    const page = await open(browser, addresses.https);
    const { type, message } = await start(page, { ...pad, url: service.pad });
    assert.match(type, /^(no-service|permission-missing)$/);
    assert.match(message, /LoopbackNetworkAllowedForUrls/);
  });
  await t.test("a page on http never gets a pad, and is told to move to https", async () => {
    const page = await open(browser, addresses.http);
    await assertMissesPermission(page, service, /serve it on https/);
  });
});

test("In chromium, in a frame of another site, of a page on https that is permitted", async (t) => {
  const site = await serveApplication(t, { secure: host });
  const [page, framed] = [host, `frames.${host}`].map((name) => `https://${name}:${site.port}`);
  const service = await startService(t, { origins: [framed] });
  const browser = await launch(t, "chromium", {
    flags: [
      `--host-resolver-rules=MAP ${host} 127.0.0.1,MAP frames.${host} 127.0.0.1`,
      `--ip-address-space-overrides=127.0.0.1:${site.port}=public`,
    ],
    settings: { loopback_network: { [`${page},*`]: { setting: 1 } } },
  });
  const frameWith = async (allow) => {
    const outer = await browser.newPage();
    await outer.goto(page);
    await outer.evaluate(
      (values) => {
        const frame = Object.assign(document.createElement("iframe"), values);
        document.body.replaceChildren(frame);
        return new Promise((resolve) => frame.addEventListener("load", resolve));
      },
      { src: framed, allow },
    );
    return outer.frames().at(-1);
  };

  for (const allow of ["local-network-access; loopback-network", "loopback-network"])
    await t.test(`the script gets a pad with allow="${allow}"`, async () => {
      const frame = await frameWith(allow);
      await assertHasPad(frame, service);
      await assertMissesService(frame);
    });
  for (const allow of ["", "loopback-network 'none'"])
    await t.test(`the script gets none with allow="${allow}", and is told what helps`, async () => {
      await assertMissesPermission(await frameWith(allow), service, /<iframe> needs allow="[^"]*loopback-network"/);
    });
});

test("In firefox, as it comes, every page gets a pad", async (t) => {
  const { addresses, service, places } = await sitesAndService(t);
  const { prefs } = named(host);
  const browser = await launch(t, "firefox", {
    prefs: { ...prefs, "network.lna.address_space.public.override": places.join(",") },
  });
  for (const address of Object.values(addresses)) await assertHasPad(await open(browser, address), service);
});

test("In firefox that guards local networks, as a site of the internet", async (t) => {
  const { addresses, service, places } = await sitesAndService(t);
  const { prefs } = named(host);
  const guarded = {
    ...prefs,
    "network.lna.blocking": true,
    "network.lna.websocket.enabled": true,
    "network.lna.address_space.public.override": places.join(","),
  };
  const browser = await launch(t, "firefox", { prefs: guarded });
  const permit = (page, state) =>
    page.browserContext().setPermission(new URL(page.url()).origin, { permission: { name: "loopback-network" }, state });

  await t.test("a page on https gets a pad once it is permitted", async () => {
    const page = await open(browser, addresses.https);
    await permit(page, "granted");
    await assertHasPad(page, service);
  });
  await t.test("a page on https that is denied is told how it is allowed", async () => {
    const page = await open(browser, addresses.https);
    await permit(page, "denied");
    await assertMissesPermission(page, service, /LocalNetworkAccess \(Firefox\)/);
  });
  await t.test("a page on http has to ask as well", async () => {
    const page = await open(browser, addresses.http);
    await permit(page, "granted");
    await assertHasPad(page, service);
    await permit(page, "denied");
    await assertMissesPermission(page, service, /serve it on https/);
  });
  for (const [what, domain] of Object.entries({ page: host, service: "127.0.0.1" }))
    await t.test(`the administrator's list lets a page pass by the name of the ${what}`, async (t) => {
      const other = await launch(t, "firefox", { prefs: { ...guarded, "network.lna.skip-domains": domain } });
      await assertHasPad(await open(other, addresses.https), service);
    });
});
