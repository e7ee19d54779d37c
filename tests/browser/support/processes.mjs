// Programs that a test starts, and the folder in which it does.

import { spawn, spawnSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";

const endings = new WeakMap(); // what ends with a test, each test's own

// Does this when the test ends, what came last first: a browser is closed before its profile is removed.
export function atEnd(t, action) {
  if (!endings.has(t)) {
    endings.set(t, []);
    t.after(async () => {
      for (const one of endings.get(t).reverse()) await one();
    });
  }
  endings.get(t).push(action);
}

// A folder of the test's own, which goes with it.
export function folder(t) {
  const path = mkdtempSync(join(tmpdir(), "scribera-browser-"));
  atEnd(t, () => rmSync(path, { recursive: true, force: true, maxRetries: 5 }));
  return path;
}

// Runs a program to its end and returns what it wrote; throws when it fails.
export function run(program, args, options = {}) {
  const { status, error, stdout, stderr } = spawnSync(program, args, { maxBuffer: 1 << 28, ...options });
  if (error || status !== 0) throw new Error(`${program} ${args.join(" ")}: ${error?.message ?? stderr}`);
  return stdout;
}

// A program that is running. It ends with the test, if not earlier.
export class Running {
  output = "";
  #child;
  #ended;

  constructor(t, program, args, options = {}) {
    this.#child = spawn(program, args, { stdio: ["ignore", "pipe", "pipe"], ...options });
    this.#ended = new Promise((resolve) => {
      this.#child.once("error", (error) => {
        this.output += error.message;
        resolve({ code: -1 });
      });
      this.#child.once("close", (code, signal) => resolve({ code, signal }));
    });
    for (const stream of [this.#child.stdout, this.#child.stderr])
      stream.setEncoding("utf8").on("data", (text) => (this.output += text));
    atEnd(t, () => this.end());
  }

  get pid() {
    return this.#child.pid;
  }

  // The first match in what the program writes; throws when it ends without one.
  async writes(pattern) {
    for (;;) {
      const found = this.output.match(pattern);
      if (found) return found;
      const end = await Promise.race([
        this.#ended,
        new Promise((resolve) => {
          this.#child.stdout.once("data", () => resolve());
          this.#child.stderr.once("data", () => resolve());
        }),
      ]);
      if (end && !this.output.match(pattern))
        throw new Error(`it ended with ${end.signal ?? end.code} and wrote: ${this.output}`);
    }
  }

  // Sends the signal and waits for the end; tells how the program ended.
  end(signal = "SIGTERM") {
    if (this.#child.exitCode === null && this.#child.signalCode === null) this.#child.kill(signal);
    return this.#ended;
  }
}

// Waits until what it asks is true, and returns that; a test that waits for too long is ended by the runner.
export async function until(ask, pause = 20) {
  for (;;) {
    const answer = await ask();
    if (answer) return answer;
    await new Promise((resolve) => setTimeout(resolve, pause));
  }
}

// A port of the loopback address on which nobody listens.
export async function unusedPort() {
  const server = createServer();
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  const { port } = server.address();
  await new Promise((resolve) => server.close(resolve));
  return port;
}
