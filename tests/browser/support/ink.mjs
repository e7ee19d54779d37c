// What a signature is: its points, and its pictures.

import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { folder, run } from "./processes.mjs";
import { tree } from "./pages.mjs";

export const built = process.env.SCRIBERA_BUILD ?? join(tree, "build", "release");
export const simulator = join(built, "drivers", "simulator", "libscriberadrv.so");
export const recording = (name) => join(tree, "drivers", "simulator", "recordings", `${name}.rec`);

// The points of an ink text: position, pressure, and 1 where the pen left the pad.
export function pointsOf(text) {
  const bytes = Buffer.from(text, "base64");
  const points = [];
  for (let at = 0; at + 24 <= bytes.length; at += 24)
    points.push([bytes.readUInt16LE(at), bytes.readInt16LE(at + 2), bytes.readInt16LE(at + 4), bytes[at + 6]]);
  return points;
}

export const withoutTime = ({ x, y, pressure, end }) => [x, y, pressure, end ? 1 : 0];

// Plays an ink text to the library; returns the ink text and the picture that come of it.
export function replay(t, ink, model, [width, height]) {
  const where = folder(t);
  const path = (name) => join(where, name);
  writeFileSync(path("page.ink"), ink);
  run(join(built, "tools", "scribera-pad"), [
    ...["sign", "--driver", simulator, "--model", model, "--size", `${width}x${height}`],
    ...["-o", path("library.ink"), "-o", path("library.png")],
  ], {
    env: {
      ...process.env,
      QT_QPA_PLATFORM: "offscreen",
      XDG_RUNTIME_DIR: where,
      SCRIBERA_SIM_RECORDING: path("page.ink"),
      SCRIBERA_SIM_RATE: "max",
      SCRIBERA_SIM_KEY: "confirm",
    },
    cwd: where,
  });
  return { ink: readFileSync(path("library.ink"), "latin1"), picture: readFileSync(path("library.png")) };
}

// How dark each pixel of a PNG is, from 0 for white to 1 for black.
function darkness(png) {
  const [width, height] = run("identify", ["-format", "%w %h", "png:-"], { input: png })
    .toString()
    .split(" ")
    .map(Number);
  const greys = run("convert", "png:- -background white -alpha remove -colorspace Gray -depth 8 gray:-".split(" "), {
    input: png,
  });
  return { width, height, pixels: Array.from(greys, (grey) => 1 - grey / 255) };
}

// How much two pictures of a signature are alike: the smaller part of the ink pixels, those that are covered by half or
// more, that lie within one pixel of the other's, and by which part the total darkness differs.
export function likeness(one, other) {
  const [first, second] = [darkness(one), darkness(other)];
  if (first.width !== second.width || first.height !== second.height)
    throw new Error(`${first.width}x${first.height} and ${second.width}x${second.height} pixels cannot be compared`);
  const total = ({ pixels }) => pixels.reduce((sum, dark) => sum + dark, 0);
  return {
    near: Math.min(partNear(first, second), partNear(second, first)),
    darkness: Math.abs(total(first) - total(second)) / total(second),
  };
}

function partNear({ width, height, pixels }, other) {
  let ink = 0;
  let near = 0;
  for (let y = 0; y < height; ++y)
    for (let x = 0; x < width; ++x) {
      if (pixels[y * width + x] < 0.5) continue;
      ++ink;
      near += hasInkAround(other, x, y);
    }
  return ink === 0 ? 0 : near / ink;
}

function hasInkAround({ width, height, pixels }, atX, atY) {
  for (let y = Math.max(0, atY - 1); y <= Math.min(height - 1, atY + 1); ++y)
    for (let x = Math.max(0, atX - 1); x <= Math.min(width - 1, atX + 1); ++x)
      if (pixels[y * width + x] >= 0.5) return true;
  return false;
}
