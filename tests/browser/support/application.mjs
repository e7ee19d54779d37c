// A web application that takes signatures: the pages that most tests use.

import { holds } from "./browsers.mjs";
import { file, serve } from "./pages.mjs";

const client = () => file("web", "client", "scribera-pad.js");

// A page that opens a pad when it is told to, and keeps what the pad tells it.
const withPad = `<!doctype html><title>Pad</title>
<script type="module">
import { Pad } from "./scribera-pad.js";
window.heard = [];
window.start = async (options) => {
  try {
    window.pad = await Pad.open(options);
  } catch (error) {
    return { type: error.type, message: error.message };
  }
  for (const type of ["point", "clear", "confirm", "cancel", "error", "statechange"])
    pad.addEventListener(type, (event) =>
      heard.push({ type, at: performance.now(), index: event.index, error: event.error?.type, state: pad.state }));
  return { token: pad.token };
};
</script>`;

const withElement = (attributes) => `<!doctype html><html lang="en"><title>Sign</title>
<style>body { background: #fff }</style>
<script type="module" src="scribera-pad.js"></script>
<form method="post" action="/signed" enctype="multipart/form-data">
<input name="holder" value="A. Holder" aria-label="Name">
<scribera-pad name="signature" ${attributes} required></scribera-pad>
<button class="send">Send</button><button type="reset">Begin anew</button>
</form></html>`;

// With `element`, that element's attributes, the page / has a form; without, it is for the class.
export function serveApplication(t, { element, more = {}, ...options } = {}) {
  return serve(
    t,
    {
      "/": element ? withElement(element) : withPad,
      "/scribera-pad.js": client(),
      "/signed": "<!doctype html><title>Thank you</title>",
      ...more,
    },
    options,
  );
}

// Opens a pad in the page; gives its token, or the type of the error with its message.
export async function start(page, options) {
  await holds(page, () => window.start);
  return page.evaluate((options) => window.start(options), options);
}

export const heard = (page) => page.evaluate(() => window.heard);

// The file that a form sent with that name.
export function sentFile({ headers, body }, name) {
  const [, boundary] = headers["content-type"].match(/boundary=(.+)$/);
  const begin = body.indexOf(`name="${name}"`);
  if (begin < 0) return undefined;
  const head = body.indexOf("\r\n\r\n", begin);
  return {
    head: body.subarray(begin, head).toString(),
    content: body.subarray(head + 4, body.indexOf(`\r\n--${boundary}`, head)),
  };
}
