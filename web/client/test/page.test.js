import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { WebSocket } from "ws";
import { Pad, PadError, models } from "../scribera-pad.js";
import { Service } from "./service.js";

// Enough of an element to sign on.
class Surface extends EventTarget {
  box = { left: 20, top: 30, width: 400, height: 200 };
  captured = [];

  getBoundingClientRect() {
    return this.box;
  }
  setPointerCapture(id) {
    this.captured.push(id);
  }
  send(type, values) {
    const event = new Event(type, { cancelable: true });
    const all = { pointerId: 1, pointerType: "pen", button: 0, pressure: 0.25, clientX: 20, clientY: 30, ...values };
    for (const [name, value] of Object.entries(all)) Object.defineProperty(event, name, { value });
    this.dispatchEvent(event);
    return event;
  }
}

async function open(model = "K210", options = {}) {
  const surface = new Surface();
  const pad = await Pad.open({ model, size: [800, 400], surface, source: "page", ...options });
  return { pad, surface };
}

const placed = (pad) => pad.points().map(({ x, y, pressure, end }) => [x, y, pressure, Number(end)]);

for (const [model, { left, top, width, height, levels }] of Object.entries(models)) {
  test(`the corners of the surface are those of the writing area of ${model}`, async () => {
    const { pad, surface } = await open(model);
    surface.send("pointerdown", { clientX: 20, clientY: 30, pressure: 1 });
    surface.send("pointermove", { clientX: 420, clientY: 230, pressure: 0.5 });
    surface.send("pointermove", { clientX: 220, clientY: 130, pressure: 0 });
    surface.send("pointermove", { clientX: -500, clientY: 9000, pressure: 2 });
    surface.send("pointerup");
    assert.deepEqual(placed(pad), [
      [left, top, levels, 0],
      [left + width - 1, top + height - 1, levels / 2, 0],
      [left + width / 2, top + height / 2, 1, 0],
      [left, top + height - 1, levels, 0],
      [left, top + height - 1, levels, 1],
    ]);
  });
}

test("each point lies nearest to the pixel that it came from", async () => {
  for (const [model, { left, top, width, height }] of Object.entries(models)) {
    const { pad, surface } = await open(model);
    surface.send("pointerdown", { clientX: 20, clientY: 30 });
    for (let at = 0; at < 400; ++at) surface.send("pointermove", { clientX: 20 + at + 0.3, clientY: 30 + at / 2 });
    pad.points(1).forEach(({ x, y }, at) => {
      assert.ok(Math.abs(((x - left) * 400) / width - (at + 0.3)) <= 200 / width + 1e-9);
      assert.ok(Math.abs(((y - top) * 200) / height - at / 2) <= 100 / height + 1e-9);
    });
  }
});

test("mouse and finger draw as wide as the pen is set", async () => {
  for (const model of Object.keys(models)) {
    const { pad, surface } = await open(model);
    await pad.pen({ width: 4 });
    for (const pointerType of ["mouse", "touch"]) {
      surface.send("pointerdown", { pointerType, pressure: 0.5 });
      surface.send("pointermove", { pointerType, pressure: 0.5, clientX: 100 });
      surface.send("pointerup", { pointerType });
    }
    const widths = [...pad._lines()].map((line) => line[4]);
    assert.equal(widths.length, 2);
    for (const width of widths) assert.ok(Math.abs(width - 4) < 0.002, `${model}: ${width}`);
  }
});

test("the samples that a browser joins are all points", async () => {
  const { pad, surface } = await open();
  surface.send("pointerdown");
  const joined = [40, 60, 80].map((clientX) => ({
    pointerId: 1,
    pointerType: "pen",
    pressure: 0.5,
    clientX,
    clientY: 30,
    timeStamp: 5,
  }));
  surface.send("pointermove", { clientX: 80, getCoalescedEvents: () => joined });
  surface.send("pointermove", { clientX: 100, getCoalescedEvents: () => [] });
  assert.deepEqual(
    pad.points().map(({ x }) => x - 160),
    [0, 118, 236, 354, 472],
  );
});

test("one pointer writes at a time, and with the first button", async () => {
  const { pad, surface } = await open();
  surface.send("pointerdown", { button: 2 });
  assert.equal(pad.count, 0);
  surface.send("pointermove");
  assert.equal(pad.count, 0);
  const down = surface.send("pointerdown", { pointerId: 7 });
  assert.ok(down.defaultPrevented);
  surface.send("pointerdown", { pointerId: 8 });
  surface.send("pointermove", { pointerId: 8 });
  surface.send("pointerup", { pointerId: 8 });
  assert.equal(pad.count, 1);
  surface.send("pointercancel", { pointerId: 7 });
  assert.deepEqual(
    pad.points().map(({ begin, end }) => [begin, end]),
    [
      [true, false],
      [false, true],
    ],
  );
  assert.deepEqual(surface.captured, [7]);
});

test("strokes and times go forward", async () => {
  const { pad, surface } = await open();
  const strokes = [];
  pad.addEventListener("point", ({ stroke }) => strokes.push(stroke));
  for (const timeStamp of [500, 400, 600]) {
    surface.send("pointerdown", { timeStamp });
    surface.send("pointerup", { timeStamp });
  }
  assert.deepEqual(strokes, [0, 0, 1, 1, 2, 2]);
  const times = pad.points().map(({ time }) => time);
  assert.deepEqual(times, [...times].sort());
  assert.equal(times[0], Math.floor(performance.timeOrigin + 500));
});

test("clear wipes the points, also under the pen", async () => {
  const { pad, surface } = await open();
  surface.send("pointerdown");
  await pad.clear();
  surface.send("pointerup");
  assert.equal(pad.count, 0);
  await assert.rejects(pad.ink(), { type: "no-ink" });
});

test("keys, waiting and closing are as on a pad", async () => {
  const { pad, surface } = await open();
  const waiting = pad.wait();
  pad.press("confirm");
  assert.equal(await waiting, "confirm");
  assert.equal(await pad.wait({ timeout: 0 }), "timeout");
  const left = pad.wait();
  left.catch(() => {});
  await pad.close();
  await assert.rejects(left, { type: "closed" });
  surface.send("pointerdown");
  assert.equal(pad.count, 0);
  await assert.rejects(pad.wait(), { type: "closed" });
  await assert.rejects(pad.ink(), { type: "closed" });
  assert.throws(() => pad.press("enter"), { type: "invalid-argument" });
});

test("what a page does not have is refused with its type", async () => {
  const { pad, surface } = await open("K421B");
  await assert.rejects(pad.fingerprint(), { type: "no-fingerprint" });
  await assert.rejects(pad.image(), { type: "no-ink" });
  surface.send("pointerdown");
  await assert.rejects(pad.image("png", { dpi: 72 }), { type: "invalid-argument" });
  await assert.rejects(pad.pen({ width: 11 }), { type: "invalid-argument" });
  await assert.rejects(pad.pen({ color: "red" }), { type: "invalid-argument" });
  assert.deepEqual(await pad.device(), { pad: null, pen: null, version: null });
});

test("the page takes the place of a service that is not there, and of no other failure", async () => {
  const service = await new Service().start();
  const { url } = service;
  const surface = new Surface();
  service.refuses = true;
  await assert.rejects(Pad.open({ model: "K210", surface, url, webSocket: WebSocket }), { type: "refused" });
  await service.stop();
  const pad = await Pad.open({ model: "K210", surface, url, webSocket: WebSocket });
  assert.ok(pad.reason instanceof PadError);
  assert.equal(pad.reason.type, "no-service");
  surface.send("pointerdown");
  assert.equal(pad.count, 1);
  await assert.rejects(Pad.open({ model: "K210", surface, url, webSocket: WebSocket, source: "pad" }), {
    type: "no-service",
  });
  await assert.rejects(Pad.open({ model: "K210", source: "page" }), { type: "invalid-argument" });
});

function crc32(bytes) {
  let crc = -1;
  for (const byte of bytes) {
    crc ^= byte;
    for (let bit = 0; bit < 8; ++bit) crc = crc & 1 ? (crc >>> 1) ^ 0xedb88320 : crc >>> 1;
  }
  return ~crc >>> 0;
}

for (const [dpi, dotsPerMetre] of [
  [150, 5905],
  [300, 11811],
])
  test(`a PNG of ${dpi} dpi says so, as the library's`, async (t) => {
    const header = Buffer.from("89504e470d0a1a0a0000000d494844520000000100000001080000000000000000", "hex");
    const picture = Buffer.from("0000000049454e44ae426082", "hex");
    const context = new Proxy({}, { get: () => () => {}, set: () => true });
    globalThis.document = {
      createElement: () => ({
        getContext: () => context,
        toBlob: (resolve, type) => resolve(new Blob([header, picture], { type })),
      }),
    };
    t.after(() => delete globalThis.document);
    const { pad, surface } = await open();
    surface.send("pointerdown");
    const blob = await pad.image("png", { dpi });
    assert.equal(blob.type, "image/png");
    const bytes = Buffer.from(await blob.arrayBuffer());
    assert.deepEqual(bytes.subarray(0, 33), header);
    assert.deepEqual(bytes.subarray(54), picture);
    const chunk = bytes.subarray(33, 54);
    assert.equal(chunk.readUInt32BE(0), 9);
    assert.equal(chunk.toString("latin1", 4, 8), "pHYs");
    assert.deepEqual([chunk.readUInt32BE(8), chunk.readUInt32BE(12), chunk[16]], [dotsPerMetre, dotsPerMetre, 1]);
    assert.equal(chunk.readUInt32BE(17), crc32(chunk.subarray(4, 17)));
  });

function records(ink) {
  const bytes = Buffer.from(ink, "base64");
  assert.equal(bytes.length % 24, 1);
  assert.equal(bytes.at(-1), 0);
  return Array.from({ length: (bytes.length - 1) / 24 }, (_, index) => {
    const at = 24 * index;
    return {
      place: [bytes.readUInt16LE(at), bytes.readInt16LE(at + 2), bytes.readInt16LE(at + 4), bytes[at + 6]],
      padding: bytes[at + 7],
      tick: bytes.readBigInt64LE(at + 8),
      seconds: bytes.readBigInt64LE(at + 16),
    };
  });
}

function write(surface) {
  for (const shift of [0, 90]) {
    surface.send("pointerdown", { clientX: 60 + shift, clientY: 80, pressure: 0.1 });
    for (let at = 0; at < 60; ++at)
      surface.send("pointermove", {
        clientX: 60 + shift + 3 * at,
        clientY: 130 + 50 * Math.sin(at / 5),
        pressure: 0.1 + 0.3 * Math.abs(Math.sin(at / 9)),
      });
    surface.send("pointerup");
  }
}

test("the ink text is made of the library's records", async () => {
  const { pad, surface } = await open();
  write(surface);
  const ink = await pad.ink();
  const made = records(ink);
  assert.deepEqual(
    made.map(({ place }) => place),
    placed(pad),
  );
  for (const [index, { padding, tick, seconds }] of made.entries()) {
    assert.equal(padding, 0);
    assert.equal(Number(tick), pad.points(index, 1)[0].time);
    assert.equal(seconds, tick / 1000n);
  }
});

const { SCRIBERA_PAD_TOOL, SCRIBERA_DRIVER_LIBRARY } = process.env;

for (const model of Object.keys(models)) {
  test(
    `the library, signed with the ink text, has the same points and lines on ${model}`,
    { skip: !SCRIBERA_PAD_TOOL },
    async () => {
      const { pad, surface } = await open(model);
      write(surface);
      const folder = mkdtempSync(join(tmpdir(), "scribera-client-"));
      try {
        writeFileSync(join(folder, "page.ink"), await pad.ink());
        execFileSync(
          SCRIBERA_PAD_TOOL,
          [
            "sign",
            "--driver",
            SCRIBERA_DRIVER_LIBRARY,
            "--model",
            model,
            "--size",
            "800x400",
            "-o",
            "library.ink",
            "-o",
            "library.svg",
          ],
          {
            cwd: folder,
            env: {
              ...process.env,
              SCRIBERA_SIM_RECORDING: "page.ink",
              SCRIBERA_SIM_RATE: "max",
              SCRIBERA_SIM_KEY: "confirm",
              SCRIBERA_SIM_MODEL: model,
            },
            stdio: ["ignore", "ignore", "inherit"],
          },
        );
        const replayed = records(readFileSync(join(folder, "library.ink"), "latin1"));
        assert.deepEqual(
          replayed.map(({ place }) => place),
          placed(pad),
        );
        const svg = readFileSync(join(folder, "library.svg"), "utf8");
        const lines = [...svg.matchAll(/stroke-width="([\d.]+)"[^>]*>\s*<polyline[^>]*points="([^"]*)"/g)].map(
          ([, width, points]) => [...points.trim().split(/[ ,]/), width].map(Number),
        );
        const own = [...pad._lines()];
        assert.equal(lines.length, own.length);
        lines.forEach((line, index) =>
          line.forEach((value, at) => assert.ok(Math.abs(value - own[index][at]) < 0.001, `${line}: ${own[index]}`)),
        );
      } finally {
        rmSync(folder, { recursive: true });
      }
    },
  );
}
