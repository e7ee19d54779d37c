import assert from "node:assert/strict";
import { afterEach, beforeEach, test } from "node:test";
import { WebSocket } from "ws";
import { Pad, PadError } from "../scribera-pad.js";
import { Refusal, Service, TOKEN, next, session } from "./service.js";

const fivePoints = [
  [100, 200, 300, 1700000000000, 2],
  [110, 210, 310, 1700000000005, 0],
  [110, 210, 310, 1700000000010, 1],
  [500, 600, 306, 1700000000015, 2],
  [505, 600, 306, 1700000000020, 0],
];

let service;
let pads;

beforeEach(async () => {
  pads = [];
  service = await new Service().start();
});

afterEach(async () => {
  for (const pad of pads) await pad.close();
  await service.stop();
});

async function open(options = {}) {
  const pad = await Pad.open({ model: "K210", url: service.url, webSocket: WebSocket, ...options });
  pads.push(pad);
  return pad;
}

const isError =
  (type, message = /./) =>
  (error) => {
    assert.ok(error instanceof PadError, String(error));
    assert.equal(error.type, type);
    assert.match(error.message, message);
    return true;
  };

test("open asks for the model and the size of the picture", async () => {
  const pad = await open({ size: [640, 320] });
  assert.deepEqual(service.requests, [["open", { model: "K210", width: 640, height: 320 }]]);
  assert.equal(pad.token, TOKEN);
  assert.deepEqual(pad.area, { left: 160, top: 220, width: 2360, height: 1430 });
  assert.equal(pad.state, "open");
});

test("arguments that can be none are refused before the service is asked", async () => {
  await assert.rejects(Pad.open({ model: "K9", url: service.url }), isError("invalid-argument", /K210, K420/));
  await assert.rejects(Pad.open({ model: "toString", url: service.url }), isError("invalid-argument"));
  await assert.rejects(open({ size: [0, 400] }), isError("invalid-argument", /1 to 4096/));
  await assert.rejects(open({ size: [800.5, 400] }), isError("invalid-argument"));
  await assert.rejects(open({ url: "http://127.0.0.1/" }), isError("invalid-argument", /not the address/));
  await assert.rejects(open({ webSocket: null }), isError("invalid-argument", /webSocket/));
  assert.deepEqual(service.requests, []);
});

test("each point is an event, with its stroke", async () => {
  const pad = await open();
  const seen = [];
  pad.addEventListener("point", ({ index, x, y, pressure, time, stroke, end }) =>
    seen.push([index, x, y, pressure, time, stroke, end]),
  );
  service.notify("points", { from: 0, points: fivePoints.slice(0, 2) });
  service.notify("points", { from: 2, points: fivePoints.slice(2) });
  while (pad.count < 5) await next(pad, "point");
  assert.deepEqual(seen, [
    [0, 100, 200, 300, 1700000000000, 0, false],
    [1, 110, 210, 310, 1700000000005, 0, false],
    [2, 110, 210, 310, 1700000000010, 0, true],
    [3, 500, 600, 306, 1700000000015, 1, false],
    [4, 505, 600, 306, 1700000000020, 1, false],
  ]);
  assert.deepEqual(pad.points(3, 1), [
    { x: 500, y: 600, pressure: 306, time: 1700000000015, begin: true, end: false },
  ]);
});

test("a stroke that a key of the pad has ended is not joined to the next one", async () => {
  const pad = await open();
  const strokes = [];
  pad.addEventListener("point", ({ stroke }) => strokes.push(stroke));
  service.notify("points", { from: 0, points: [...fivePoints.slice(0, 2), ...fivePoints.slice(3)] });
  while (pad.count < 4) await next(pad, "point");
  assert.deepEqual(strokes, [0, 0, 1, 1]);
  const whole = [...pad._lines()];
  assert.equal(whole.length, 2);
  assert.deepEqual([...pad._lines(1), ...pad._lines(2)], [...whole, whole[1]]);
});

test("what is left of a stroke after a clear is one", async () => {
  const pad = await open();
  const strokes = [];
  pad.addEventListener("point", ({ stroke }) => strokes.push(stroke));
  service.notify("points", { from: 0, points: fivePoints.slice(1) });
  while (pad.count < 4) await next(pad, "point");
  assert.deepEqual(strokes, [0, 0, 1, 1]);
});

test("points that come with the answer to open reach a listener that is added after it", async () => {
  service.answers.open = (_, client) => {
    setImmediate(() => service.notify("points", { from: 0, points: fivePoints }, [client]));
    return session();
  };
  const pad = await open();
  let seen = 0;
  pad.addEventListener("point", () => ++seen);
  while (pad.count < 5) await next(pad, "point");
  assert.equal(seen, 5);
});

test("a key that is told with the answer to open comes behind the points before it", async () => {
  service.answers.open = (_, client) => {
    setImmediate(() => {
      service.notify("points", { from: 0, points: fivePoints }, [client]);
      service.notify("key", { key: "confirm", keys: 1 }, [client]);
    });
    return session();
  };
  const realTimeout = globalThis.setTimeout;
  globalThis.setTimeout = (action, pause, ...values) => realTimeout(action, pause ?? 50, ...values); // a slow machine
  try {
    const pad = await open();
    assert.equal(await pad.wait(), "confirm");
    assert.equal(pad.count, 5);
  } finally {
    globalThis.setTimeout = realTimeout;
  }
});

test("points that are sent twice count once", async () => {
  const pad = await open();
  service.notify("points", { from: 0, points: fivePoints.slice(0, 3) });
  service.notify("points", { from: 1, points: fivePoints.slice(1) });
  while (pad.count < 5) await next(pad, "point");
  assert.deepEqual(
    pad.points().map(({ x, y, pressure, time, begin, end }) => [x, y, pressure, time, 2 * begin + end]),
    fivePoints,
  );
});

test("a long signature is kept whole", async () => {
  const pad = await open();
  const count = 20_000;
  for (let from = 0; from < count; from += 1000)
    service.notify("points", {
      from,
      points: Array.from({ length: 1000 }, (_, index) => [
        (from + index) % 2360,
        7,
        300,
        1700000000000 + from + index,
        0,
      ]),
    });
  while (pad.count < count) await next(pad, "point");
  assert.deepEqual(pad.points(12_345, 1), [{ x: 545, y: 7, pressure: 300, time: 1700000012345, begin: false, end: false }]);
  assert.equal(pad.points().length, count);
});

test("clear wipes the points when the service says so", async () => {
  const pad = await open();
  service.answers.clear = () => {
    service.notify("cleared", { clears: 1 });
    return {};
  };
  service.notify("points", { from: 0, points: fivePoints });
  while (pad.count < 5) await next(pad, "point");
  const cleared = next(pad, "clear");
  await pad.clear();
  await cleared;
  assert.equal(pad.count, 0);
  service.notify("points", { from: 0, points: fivePoints.slice(0, 1) });
  const { stroke, x } = await next(pad, "point");
  assert.deepEqual([stroke, x], [0, 100]);
});

test("wait gives the key", async () => {
  const pad = await open();
  const key = pad.wait({ timeout: 60_000 });
  service.notify("key", { key: "confirm", keys: 1 });
  assert.equal(await key, "confirm");
});

test("wait ends with its time, and the next one gets the key that comes later", async () => {
  const pad = await open();
  assert.equal(await pad.wait({ timeout: 0 }), "timeout");
  service.notify("key", { key: "cancel", keys: 1 });
  await next(pad, "cancel");
  assert.equal(await pad.wait(), "cancel");
  assert.equal(await pad.wait({ timeout: 0 }), "timeout");
});

test("a key that nobody waits for is kept until the signature is wiped", async () => {
  const pad = await open();
  pad.press("confirm");
  assert.equal(await pad.wait(), "confirm");
  pad.press("confirm");
  service.notify("cleared", { clears: 1 });
  await next(pad, "clear");
  assert.equal(await pad.wait({ timeout: 0 }), "timeout");
});

test("keys are events", async () => {
  const pad = await open();
  service.notify("key", { key: "cancel", keys: 1 });
  await next(pad, "cancel");
  service.notify("key", { key: "confirm", keys: 2 });
  await next(pad, "confirm");
});

test("wait ends with its signal, and the pad stays open", async () => {
  const pad = await open();
  const controller = new AbortController();
  const waiting = pad.wait({ signal: controller.signal });
  controller.abort();
  await assert.rejects(waiting, { name: "AbortError" });
  await assert.rejects(pad.wait({ signal: controller.signal }), { name: "AbortError" });
  service.answers.ink = { ink: "AAAA" };
  assert.equal(await pad.ink(), "AAAA");
});

test("a picture is a Blob of its type, whatever is asked meanwhile", async () => {
  const pad = await open();
  const bytes = Buffer.from([137, 80, 78, 71, 13, 10, 26, 10]);
  service.answers.image = { type: "image/png", data: bytes };
  service.answers.device = { pad: "A1", pen: null, version: "2.0" };
  const [image, device, empty] = await Promise.all([
    pad.image("png", { dpi: 300, clip: [10, 10] }),
    pad.device(),
    pad.image("png"),
  ]);
  assert.equal(image.type, "image/png");
  assert.deepEqual(Buffer.from(await image.arrayBuffer()), bytes);
  assert.deepEqual(device, { pad: "A1", pen: null, version: "2.0" });
  assert.equal(empty.size, 8);
  assert.deepEqual(service.requests[1], ["image", { format: "png", dpi: 300, clip: [10, 10] }]);
});

test("ink, svg, fingerprint and pen are asked of the service", async () => {
  const pad = await open();
  service.answers.ink = { ink: "AAAA" };
  service.answers.svg = { svg: "<svg/>" };
  service.answers.fingerprint = { type: "image/jpeg", data: Buffer.from("x") };
  assert.equal(await pad.ink(), "AAAA");
  assert.equal(await pad.svg({ clip: [1, 2] }), "<svg/>");
  assert.equal((await pad.fingerprint("jpeg")).type, "image/jpeg");
  await pad.pen({ width: 5, color: "#0000ff" });
  await pad.pen({ pressure: false });
  assert.deepEqual(service.requests.slice(1), [
    ["ink", undefined],
    ["svg", { clip: [1, 2] }],
    ["fingerprint", { format: "jpeg" }],
    ["pen", { width: 5, color: "#0000ff" }],
    ["pen", { pressure: false }],
  ]);
});

test("refusals of the service keep their type", async () => {
  service.answers.open = () => {
    throw new Refusal("pad-busy");
  };
  await assert.rejects(open(), isError("pad-busy"));
  service.answers.open = session();
  const pad = await open();
  service.answers.image = () => {
    throw new Refusal("no-ink");
  };
  service.answers.svg = () => {
    throw new Refusal("", -32602);
  };
  await assert.rejects(pad.image(), isError("no-ink"));
  await assert.rejects(pad.svg(), isError("invalid-argument"));
});

test("close closes the pad once, and nothing can be asked of it after that", async () => {
  const pad = await open();
  const waiting = pad.wait();
  waiting.catch(() => {});
  await pad.close();
  await pad.close();
  assert.equal(pad.state, "closed");
  assert.equal(service.methods().filter((method) => method === "close").length, 1);
  await assert.rejects(waiting, isError("closed"));
  await assert.rejects(pad.ink(), isError("closed"));
  await assert.rejects(pad.wait(), isError("closed"));
});

test("a pad that ends tells why, and keeps its points", async () => {
  const pad = await open();
  service.notify("points", { from: 0, points: fivePoints });
  const waiting = pad.wait();
  waiting.catch(() => {});
  service.notify("closed", { reason: "worker-failed", message: "the process ended" });
  const { error } = await next(pad, "error");
  assert.ok(isError("worker-failed", /the process ended/)(error));
  await assert.rejects(waiting, isError("worker-failed"));
  await assert.rejects(pad.image(), isError("worker-failed"));
  assert.equal(pad.state, "closed");
  assert.equal(pad.count, 5);
});

test("without a service the error says what to do", async () => {
  const { url, port } = service;
  await service.stop();
  await assert.rejects(
    open({ url }),
    isError("no-service", new RegExp(`^no service on 127.0.0.1:${port}: is scribera-bridge installed and running\\?`)),
  );
  await service.start(port);
});

test("a service that refuses the page is told from none", async () => {
  service.refuses = true;
  await assert.rejects(open(), isError("refused", /--allow-no-origin/));
});

test("open ends with its signal and leaves no pad open", async () => {
  let answer;
  service.answers.open = () => new Promise((resolve) => (answer = () => resolve(session())));
  const controller = new AbortController();
  const opening = open({ signal: controller.signal });
  while (!answer) await new Promise(setImmediate);
  controller.abort();
  await assert.rejects(opening, { name: "AbortError" });
  answer();
  while (service.clients.size > 0) await new Promise(setImmediate);
  assert.deepEqual(service.methods(), ["open", "close"]);
  await assert.rejects(open({ signal: controller.signal }), { name: "AbortError" });
});

test("a pad that is given up makes way for the next one of the page", async () => {
  let isOpen = false;
  let answer;
  service.answers.open = async () => {
    if (isOpen) throw new Refusal("pad-busy");
    isOpen = true;
    if (!answer) await new Promise((resolve) => (answer = resolve));
    return session();
  };
  service.answers.close = async () => {
    await new Promise(setImmediate);
    isOpen = false;
    return {};
  };
  const controller = new AbortController();
  const givenUp = open({ signal: controller.signal });
  while (!answer) await new Promise(setImmediate);
  controller.abort();
  const next = open();
  await assert.rejects(givenUp, { name: "AbortError" });
  answer();
  const pad = await next;
  pad.close();
  await open();
  assert.deepEqual(service.methods(), ["open", "close", "open", "close", "open"]);
});
