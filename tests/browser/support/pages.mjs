// The web server of a test: somebody's web application.

import { createServer as createHttpServer } from "node:http";
import { createServer as createHttpsServer } from "node:https";
import { readFileSync } from "node:fs";
import { join } from "node:path";

import { atEnd, folder, run } from "./processes.mjs";

const types = { html: "text/html; charset=utf-8", js: "text/javascript", css: "text/css", png: "image/png" };

// Files with key and certificate for a host name, signed by itself.
export function certificate(t, host) {
  const where = folder(t);
  const key = join(where, "key.pem");
  const cert = join(where, "certificate.pem");
  run("openssl", [
    ..."req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2".split(" "),
    ...["-subj", `/CN=${host}`, "-addext", `subjectAltName=DNS:${host},IP:127.0.0.1`],
    ...["-keyout", key, "-out", cert],
  ]);
  return { key, cert };
}

// Serves pages, a path's content each, on a port of their own; those that are functions get the request and its body.
// With `secure`, by https under that host name.
export async function serve(t, pages, { secure } = {}) {
  const requests = [];
  async function answer(request, response) {
    const path = new URL(request.url, "http://localhost").pathname;
    const chunks = [];
    for await (const chunk of request) chunks.push(chunk);
    const body = Buffer.concat(chunks);
    requests.push({ method: request.method, path, headers: request.headers, body });
    const page = pages[path];
    if (page === undefined) {
      response.writeHead(404).end();
      return;
    }
    const ending = path.includes(".") ? path.split(".").pop() : "html";
    response.writeHead(200, { "content-type": types[ending], "cache-control": "no-store" });
    response.end(typeof page === "function" ? page(request, body) : page);
  }
  const { key, cert } = secure ? certificate(t, secure) : {};
  const server = secure
    ? createHttpsServer({ key: readFileSync(key), cert: readFileSync(cert) }, answer)
    : createHttpServer(answer);
  await new Promise((resolve, reject) => server.once("error", reject).listen(0, "127.0.0.1", resolve));
  atEnd(
    t,
    () =>
      new Promise((resolve) => {
        server.close(resolve);
        server.closeAllConnections();
      }),
  );
  const { port } = server.address();
  return { port, requests, origin: `${secure ? "https" : "http"}://127.0.0.1:${port}` };
}

// Files of the tree, as pages.
export function file(...parts) {
  return readFileSync(join(tree, ...parts));
}

export const tree = join(import.meta.dirname ?? new URL(".", import.meta.url).pathname, "..", "..", "..");
