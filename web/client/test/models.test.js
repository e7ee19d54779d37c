// The client's table of models against the library's own.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { models } from "../scribera-pad.js";

const read = (path) => readFileSync(new URL(`../../../${path}`, import.meta.url), "utf8");

test("the models are those of the library", () => {
  const header = read("include/scriberasdk.h");
  const size = (side, model) => Number(header.match(new RegExp(`SCRIBERA_AREA_${side}_${model} = (\\d+)`))[1]);
  const rows = read("src/model/padmodel.cpp").matchAll(/CPadModel g_Pad(\w+) = \{(.*?)\n\};/gs);
  const library = {};
  for (const [, model, row] of rows) {
    const value = (member) => row.match(new RegExp(`\\.${member} = ([\\w:]+)`))[1];
    library[model] = {
      left: Number(value("m_nPadOriginX")),
      top: Number(value("m_nPadOriginY")),
      width: size("WIDTH", model),
      height: size("HEIGHT", model),
      levels: Number(value("m_nInitialMaxPressure")),
      ...(value("m_eWidthRule") === "EWidthRule::ThreeTimesAtLimit" && { threeAtFull: true }),
    };
  }
  assert.deepEqual(models, library);
  const family = header.match(/SCRIBERA_FAMILIES\(X\) (.*)/)[1].match(/\w+(?=\))/g);
  assert.deepEqual(Object.keys(models), family);
});

test("the version follows the protocol's", () => {
  const [protocol] = read("web/client/scribera-pad.js").match(/(?<="scribera-pad\.)\d+(?=")/);
  assert.equal(JSON.parse(read("web/client/package.json")).version.split(".")[0], protocol);
  assert.ok(read("web/PROTOCOL.md").includes(`\`scribera-pad.${protocol}\``));
});
