// Draws the benchmark's strokes, and writes the picture, with a canvas for Node.js; prints the medians beside the
// library's own figures of the same run.
//
//   node canvas.js STROKES.json BENCH.json
import { readFileSync, writeFileSync } from "node:fs";
import { createCanvas } from "@napi-rs/canvas";

const [strokes, figures] = process.argv.slice(2).map((path) => JSON.parse(readFileSync(path, "utf8")));
const DRAWINGS = 15;
const PICTURES = 9;

function median(values) {
  return values.sort((a, b) => a - b)[Math.floor(values.length / 2)];
}

// Median of the seconds that one piece of work took; the first time is left out.
function secondsOf(rounds, pieces, work) {
  work();
  const times = [];
  for (let round = 0; round < rounds; ++round) {
    const start = process.hrtime.bigint();
    work();
    times.push(Number(process.hrtime.bigint() - start) / 1e9 / pieces);
  }
  return median(times);
}

function drawEverySegment(context, segments) {
  for (const [x1, y1, x2, y2, width] of segments) {
    context.lineWidth = width;
    context.beginPath();
    context.moveTo(x1, y1);
    context.lineTo(x2, y2);
    context.stroke();
  }
  context.getImageData(0, 0, 1, 1); // nothing is left to be drawn later
}

function libraryFigure(name) {
  const values = figures.benchmarks
    .filter((run) => run.run_type === "iteration" && run.run_name.startsWith(`${name}/`))
    .map((run) => run.library);
  return values.length > 0 ? median(values) : NaN;
}

function print(name, size, library, peer) {
  const microseconds = (seconds) => `${(seconds * 1e6).toFixed(2)} us`.padStart(13);
  const ratio = (library / peer).toFixed(2).padStart(10);
  console.log(`${`${name}, against canvas/${size}`.padEnd(44)}${microseconds(library)}${microseconds(peer)}${ratio}`);
}

for (const [size, segments] of Object.entries(strokes)) {
  const [width, height] = size.split("x").map(Number);
  const canvas = createCanvas(width, height);
  const context = canvas.getContext("2d");
  context.lineCap = "round";
  const drawing = secondsOf(DRAWINGS, segments.length, () => drawEverySegment(context, segments));
  print("pen move", size, libraryFigure(`pen move, against Cairo/${size}`), drawing);
  const picture = secondsOf(PICTURES, 1, () => writeFileSync("canvas.png", canvas.toBuffer("image/png")));
  print("transparent PNG file", size, libraryFigure(`transparent PNG file, against Cairo/${size}`), picture);
}
