// scribera-bridge with the simulated pad behind it.

import { readFileSync } from "node:fs";
import { join } from "node:path";

import { built, recording, simulator } from "./ink.mjs";
import { Running, folder } from "./processes.mjs";

// The pad plays the recording `plays` at `rate`, then presses `key`.
export async function startService(
  t,
  { origins = [], flags = [], port = 0, plays = "paraph", rate = "max", key = "", env = {} } = {},
) {
  const where = folder(t);
  const allowed = origins.flatMap((origin) => ["--allow-origin", origin]);
  const program = new Running(
    t,
    join(built, "tools", "scribera-bridge"),
    ["--port", String(port), "--driver", simulator, ...allowed, ...flags],
    {
      cwd: where,
      env: {
        ...process.env,
        QT_QPA_PLATFORM: "offscreen",
        XDG_RUNTIME_DIR: where,
        SCRIBERA_SIM_RECORDING: plays && recording(plays),
        SCRIBERA_SIM_RATE: rate,
        SCRIBERA_SIM_KEY: key,
        ...env,
      },
    },
  );
  const [address, , number] = await program.writes(/(https?):\/\/127\.0\.0\.1:(\d+)/);
  return { program, address, port: Number(number), pad: `ws://127.0.0.1:${number}/pad` };
}

// The processes that hold the service's pads.
export function workersOf({ program }) {
  return readFileSync(`/proc/${program.pid}/task/${program.pid}/children`, "latin1").trim().split(/\s+/).map(Number);
}
