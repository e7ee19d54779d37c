import assert from "node:assert/strict";
import { afterEach, beforeEach, test } from "node:test";
import { WebSocket } from "ws";
import { Pad } from "../scribera-pad.js";
import { Refusal, Service, TOKEN, next, session } from "./service.js";

const points = Array.from({ length: 6 }, (_, index) => [200 + index, 300, 306, 1700000000000 + index, 0]);

let service;
let pads;

class Store {
  #values = new Map();
  getItem(name) {
    return this.#values.get(name) ?? null;
  }
  setItem(name, value) {
    this.#values.set(name, value);
  }
  removeItem(name) {
    this.#values.delete(name);
  }
  get size() {
    return this.#values.size;
  }
}

let page; // what a page has and Node.js has not

beforeEach(async () => {
  pads = [];
  page = new EventTarget();
  globalThis.addEventListener = page.addEventListener.bind(page);
  globalThis.removeEventListener = page.removeEventListener.bind(page);
  goTo("http://127.0.0.1/contract", "navigate");
  service = await new Service().start();
  globalThis.sessionStorage = new Store();
});

afterEach(async () => {
  for (const pad of pads) await pad.close();
  await service.stop();
  for (const name of ["sessionStorage", "location", "addEventListener", "removeEventListener"]) delete globalThis[name];
  delete performance.getEntriesByType;
});

function goTo(href, type) {
  globalThis.location = { href, hostname: "127.0.0.1" };
  Object.defineProperty(performance, "getEntriesByType", { value: () => [{ type }], configurable: true });
}

// The page goes, and what it has stored stays.
async function leave({ crashes = false } = {}) {
  if (!crashes) page.dispatchEvent(new Event("pagehide"));
  const kept = globalThis.sessionStorage;
  globalThis.sessionStorage = new Store();
  service.notify("closed", { reason: "taken-over", message: "another connection has the pad" });
  await next(pads.at(-1), "error");
  globalThis.sessionStorage = kept;
  service.requests.length = 0;
}

async function open(options = {}) {
  const pad = await Pad.open({ model: "K210", url: service.url, webSocket: WebSocket, ...options });
  pads.push(pad);
  return pad;
}

// The service as it is after a resume: the points that the client does not know come behind the answer.
function resumeWith(all, values = {}) {
  service.answers.resume = ({ clears, points: known }, client) => {
    const answer = session({ points: all.length, ...values });
    const from = clears === answer.clears ? known : 0;
    setImmediate(() => service.notify("points", { from, points: all.slice(from) }, [client]));
    return answer;
  };
}

async function until(isSo) {
  while (!isSo()) await new Promise((resolve) => setTimeout(resolve, 5));
}

test("a connection that breaks is made again, and no point is lost", async () => {
  const pad = await open();
  const seen = [];
  pad.addEventListener("point", ({ index, x }) => seen.push([index, x]));
  service.notify("points", { from: 0, points: points.slice(0, 2) });
  await until(() => pad.count === 2);
  resumeWith(points);
  const states = [];
  pad.addEventListener("statechange", () => states.push(pad.state));
  service.drop();
  await until(() => pad.count === 6);
  assert.deepEqual(
    seen,
    points.map(([x], index) => [index, x]),
  );
  assert.deepEqual(states, ["reconnecting", "open"]);
  assert.deepEqual(service.requests.at(-1), ["resume", { token: TOKEN, clears: 0, points: 2, keys: 0 }]);
});

test("what was asked before the connection broke is answered after it", async () => {
  const pad = await open();
  const ink = pad.ink();
  await until(() => service.methods().includes("ink"));
  resumeWith([]);
  service.answers.ink = { ink: "AAAA" };
  service.drop();
  assert.equal(await ink, "AAAA");
});

const resumes = () => service.requests.filter(([method]) => method === "resume").map(([, { keys }]) => keys);

test("a key that was told while the connection broke is told again, and no key twice", async () => {
  const pad = await open();
  const keys = [];
  for (const key of ["confirm", "cancel"]) pad.addEventListener(key, () => keys.push(key));
  const key = pad.wait();
  service.answers.resume = ({ keys: known }, client) => {
    if (known === 0) setImmediate(() => service.notify("key", { key: "cancel", keys: 1 }, [client]));
    return session();
  };
  for (let times = 1; times <= 2; ++times) {
    service.drop();
    await until(() => resumes().length === times && pad.state === "open");
    assert.equal(await key, "cancel");
  }
  assert.deepEqual(keys, ["cancel"]);
  assert.deepEqual(resumes(), [0, 1]);
  assert.equal(await pad.wait({ timeout: 0 }), "timeout");
});

test("keys are counted from the last clear on", async () => {
  const pad = await open();
  service.notify("key", { key: "cancel", keys: 1 });
  await next(pad, "cancel");
  service.notify("cleared", { clears: 1 });
  await next(pad, "clear");
  resumeWith([], { clears: 1 });
  service.drop();
  await until(() => resumes().length === 1 && pad.state === "open");
  service.notify("key", { key: "cancel", keys: 1 });
  await next(pad, "cancel");
  resumeWith([], { clears: 2 });
  service.drop();
  await until(() => resumes().length === 2 && pad.state === "open");
  service.drop();
  await until(() => resumes().length === 3 && pad.state === "open");
  assert.deepEqual(resumes(), [0, 1, 0]);
});

test("a page that is loaded again is not told a key that it has seen", async () => {
  const pad = await open();
  service.notify("cleared", { clears: 1 });
  service.notify("key", { key: "confirm", keys: 1 });
  await next(pad, "confirm");
  for (let times = 1; times <= 2; ++times) {
    await leave({ crashes: true });
    goTo("http://127.0.0.1/contract", "reload");
    resumeWith(points, { clears: 1 });
    await open();
    assert.deepEqual(service.requests, [["resume", { token: TOKEN, clears: 1, points: 0, keys: 1 }]]);
  }
});

test("a signature that was wiped while the connection was away begins again", async () => {
  const pad = await open();
  service.notify("points", { from: 0, points });
  await until(() => pad.count === 6);
  const clearing = pad.clear();
  await until(() => service.methods().includes("clear"));
  const cleared = next(pad, "clear");
  resumeWith(points.slice(0, 1), { clears: 1 });
  service.drop();
  await clearing;
  await cleared;
  await until(() => pad.count === 1);
  assert.equal(service.methods().filter((method) => method === "clear").length, 1);
});

test("a service that was started again gives a new session, and tells what is lost", async () => {
  const pad = await open();
  await pad.pen({ width: 5 });
  service.notify("points", { from: 0, points });
  await until(() => pad.count === 6);
  pad.press("cancel");
  const picture = pad.image();
  picture.catch(() => {});
  await until(() => service.methods().includes("image"));
  service.requests.length = 0;
  service.answers.resume = () => {
    throw new Refusal("unknown-token");
  };
  service.answers.open = session({ token: "u".repeat(43) });
  const failed = next(pad, "error");
  service.notify("closed", { reason: "service-stops", message: "the service stops" });
  service.drop();
  const { error, points: lost } = await failed;
  assert.equal(error.type, "session-lost");
  assert.equal(lost.length, 6);
  await assert.rejects(picture, { type: "session-lost" });
  assert.deepEqual(service.requests, [
    ["resume", { token: TOKEN, clears: 0, points: 6, keys: 0 }],
    ["open", { model: "K210", width: 800, height: 400 }],
    ["pen", { width: 5, color: "#000000", pressure: true }],
  ]);
  assert.equal(pad.count, 0);
  assert.equal(pad.token, "u".repeat(43));
  assert.equal(pad.state, "open");
  assert.equal(await pad.wait({ timeout: 0 }), "timeout", "keys of the signature that is lost");
});

test("a service that is away for a while is found again", async () => {
  const pad = await open();
  const { port } = service;
  const lost = next(pad, "statechange");
  await service.stop();
  await lost;
  assert.equal(pad.state, "reconnecting");
  resumeWith(points);
  await service.start(port);
  await until(() => pad.count === 6);
  assert.equal(pad.state, "open");
});

for (const crashes of [false, true])
  test(`a page that is loaded again${crashes ? " after a crash" : ""} has all points`, async () => {
    await open();
    await pads[0].pen({ color: "#0000ff" });
    await leave({ crashes });
    goTo("http://127.0.0.1/contract", "reload");
    resumeWith(points);
    const pad = await open();
    await until(() => pad.count === 6);
    assert.deepEqual(service.requests, [["resume", { token: TOKEN, clears: 0, points: 0, keys: 0 }]]);
    assert.deepEqual(
      [...pad._lines()].map((line) => line.at(-1)),
      Array(5).fill("#0000ff"),
    );
  });

for (const [what, href, type] of [
  ["another page", "http://127.0.0.1/other", "navigate"],
  ["another page that was loaded again", "http://127.0.0.1/other", "reload"],
  ["the same page for the next signature", "http://127.0.0.1/contract", "navigate"],
])
  test(`${what} does not get the signature, and gets the pad`, async () => {
    await open();
    await pads[0].pen({ color: "#0000ff" });
    await leave();
    goTo(href, type);
    resumeWith(points);
    const pad = await open();
    assert.deepEqual(service.methods(), ["resume", "close", "open"]);
    service.notify("points", { from: 0, points: points.slice(0, 2) });
    await until(() => pad.count > 0);
    assert.equal(pad.count, 2);
    assert.deepEqual(
      [...pad._lines()].map((line) => line.at(-1)),
      ["#000000"],
    );
  });

test("a page leaves the session alone that another one may still have", async () => {
  await open();
  await leave({ crashes: true });
  goTo("http://127.0.0.1/contract", "navigate");
  await open();
  assert.deepEqual(service.methods(), ["open"]);
});

test("two pads of a page do not take each other's session", async () => {
  await open();
  goTo("http://127.0.0.1/contract", "reload");
  service.answers.open = () => {
    throw new Refusal("pad-busy");
  };
  await assert.rejects(open(), { type: "pad-busy" });
  assert.deepEqual(service.methods(), ["open", "open"]);
});

test("a kept token that is worth nothing any more opens the pad anew", async () => {
  await open();
  await leave();
  goTo("http://127.0.0.1/contract", "reload");
  service.answers.resume = () => {
    throw new Refusal("unknown-token");
  };
  await open();
  assert.deepEqual(service.methods(), ["resume", "open"]);
});

test("no token is kept of a pad that was closed", async () => {
  const pad = await open();
  assert.equal(globalThis.sessionStorage.size, 1);
  await pad.close();
  assert.equal(globalThis.sessionStorage.size, 0);
  page.dispatchEvent(new Event("pagehide"));
  assert.equal(globalThis.sessionStorage.size, 0);
});

test("another size is another signature", async () => {
  await open();
  await leave();
  goTo("http://127.0.0.1/contract", "reload");
  resumeWith(points);
  await open({ size: [400, 200] });
  assert.deepEqual(service.methods(), ["resume", "close", "open"]);
});

test("a token takes a session over, and is refused when it is worth nothing", async () => {
  resumeWith(points);
  const pad = await open({ token: TOKEN, model: undefined });
  await until(() => pad.count === 6);
  assert.equal(pad.model, "K210");
  service.answers.resume = () => {
    throw new Refusal("unknown-token");
  };
  await assert.rejects(open({ token: TOKEN }), { type: "unknown-token" });
});

test("a session that another page took over is not taken back", async () => {
  const pad = await open();
  service.notify("closed", { reason: "taken-over", message: "another connection has the pad" });
  const { error } = await next(pad, "error");
  assert.equal(error.type, "taken-over");
  await until(() => service.clients.size === 0);
  assert.equal(pad.state, "closed");
  assert.deepEqual(service.methods(), ["open"]);
});

test("a connection that the service ends for its limits is not made again", async () => {
  const pad = await open();
  for (const client of service.clients) client.close(1008);
  const { error } = await next(pad, "error");
  assert.equal(error.type, "protocol-error");
  assert.equal(pad.state, "closed");
});

test("a pad that is closed while the connection is away stays closed", async () => {
  const pad = await open();
  const waiting = pad.wait();
  waiting.catch(() => {});
  const { port } = service;
  const lost = next(pad, "statechange");
  await service.stop();
  await lost;
  await pad.close();
  await assert.rejects(waiting, { type: "closed" });
  assert.equal(pad.state, "closed");
  await service.start(port);
});

test("a pad whose service goes while it is closed is closed", async () => {
  const pad = await open();
  service.answers.close = () => service.drop();
  await pad.close();
  assert.equal(pad.state, "closed");
});
