// Compiled by the tests, never run: the package as a program in TypeScript uses it.
import { Pad, PadError, models, type Model, type PadErrorType } from "../scribera-pad.js";

export async function sign(signal: AbortSignal): Promise<[Blob, string] | PadErrorType> {
  try {
    const pad = await Pad.open({ model: "K210", size: [800, 400], signal });
    pad.addEventListener("point", (event) => {
      const numbers: number[] = [event.x, event.y, event.pressure, event.time, event.stroke];
      console.log(numbers, event.end === true);
    });
    pad.addEventListener("error", ({ error }) => console.log(error.type));
    if ((await pad.wait({ timeout: 60_000 })) !== "confirm") return "closed";
    const signed: [Blob, string] = [await pad.image("png", { dpi: 300, clip: [10, 10] }), await pad.ink()];
    await pad.close();
    return signed;
  } catch (error) {
    if (error instanceof PadError) return error.type;
    throw error;
  }
}

// @ts-expect-error
void Pad.open({ model: "K9" });

export function value(): File | string | null | undefined {
  const element = document.querySelector("scribera-pad");
  element?.addEventListener("confirm", () => console.log(element.validity.valid));
  return element?.value;
}

export const widths = (Object.keys(models) as Model[]).map((model) => models[model].width);
