// The browsers of this system, headless, each with a profile of its own.

import { mkdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import puppeteer from "puppeteer-core";

import { atEnd, folder } from "./processes.mjs";

export const kinds = ["chromium", "firefox"];

const quiet = [
  "--disable-background-networking",
  "--disable-component-update",
  "--disable-gpu",
  "--disable-sync",
  "--no-default-browser-check",
  "--no-first-run",
];

// `flags` are Chromium's, `prefs` Firefox's. With `settings`, a user of Chromium has chosen these for sites before: what
// DevTools sets holds for frames, too, whatever their page lets them. Ends with the test.
export async function launch(t, kind, { flags = [], prefs = {}, settings } = {}) {
  const where = folder(t);
  if (settings) {
    mkdirSync(join(where, "profile", "Default"), { recursive: true });
    const preferences = { profile: { content_settings: { exceptions: settings } } };
    writeFileSync(join(where, "profile", "Default", "Preferences"), JSON.stringify(preferences));
  }
  const options = {
    acceptInsecureCerts: true, // the tests' certificates
    userDataDir: join(where, "profile"),
    env: { ...process.env, TMPDIR: where },
    defaultViewport: { width: 1000, height: 700 },
  };
  const browser = await (kind === "chromium"
    ? puppeteer.launch({
        ...options,
        browser: "chrome",
        executablePath: process.env.SCRIBERA_CHROMIUM ?? "/usr/bin/chromium",
        args: [...quiet, ...(process.getuid() === 0 ? ["--no-sandbox"] : []), ...flags],
      })
    : puppeteer.launch({
        ...options,
        browser: "firefox",
        executablePath: process.env.SCRIBERA_FIREFOX ?? "/usr/bin/firefox-esr",
        extraPrefsFirefox: { "browser.shell.checkDefaultBrowser": false, ...prefs },
      }));
  atEnd(t, () => browser.close());
  return browser;
}

// A new page of a fresh context, which shares nothing with others.
export async function open(browser, address) {
  const context = await browser.createBrowserContext();
  const page = await context.newPage();
  page.faults = []; // of the page's scripts
  page.on("pageerror", ({ message }) => {
    // Firefox counts a connection that failed among them.
    if (!message.startsWith("Firefox can’t establish a connection")) page.faults.push(message);
  });
  await page.goto(address);
  return page;
}

// Waits until a function holds in the page; also in a tab that is not shown, which draws no frames.
export const holds = (page, condition, ...values) => page.waitForFunction(condition, { polling: 50 }, ...values);

// For addresses of another host name than the loopback's, which lead here all the same.
export const named = (host) => ({
  flags: [`--host-resolver-rules=MAP ${host} 127.0.0.1`],
  prefs: { "network.dns.localDomains": host },
});
