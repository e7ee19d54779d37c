// Takes a signature without a browser: node sign.js [MODEL [ADDRESS]]. Writes signature.png and signature.ink.
// A WebSocket of Node's own says no origin, so the service is started with --allow-no-origin for it.
import { writeFile } from "node:fs/promises";
import { Pad } from "@scribera/pad";
import { WebSocket } from "ws";

const [model = "K210", url] = process.argv.slice(2);

try {
  const pad = await Pad.open({ model, size: [800, 400], url, webSocket: WebSocket });
  pad.addEventListener("point", ({ stroke }) => process.stdout.write(`\rstroke ${stroke + 1}, ${pad.count} points`));
  console.log("Please sign, then tap a key of the pad.");
  const key = await pad.wait({ timeout: 120_000 });
  console.log(`\n${key}`);
  if (key === "confirm") {
    const picture = await pad.image("png", { dpi: 300, clip: [10, 10] });
    await writeFile("signature.png", Buffer.from(await picture.arrayBuffer()));
    await writeFile("signature.ink", await pad.ink());
  }
  await pad.close();
} catch (error) {
  console.error(`${error.type ?? error.name}: ${error.message}`);
  process.exitCode = 1;
}
