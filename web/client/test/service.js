// A service for the tests: says what a test tells it to, and holds each message either way against the schema.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createServer } from "node:http";
import Ajv from "ajv/dist/2020.js";
import { WebSocketServer } from "ws";

const schema = JSON.parse(readFileSync(new URL("../../protocol.schema.json", import.meta.url), "utf8"));
const isMessage = new Ajv({ strict: true, strictTypes: false, strictRequired: false }).compile(schema);

function check(message) {
  assert.ok(isMessage(message), `${JSON.stringify(message)}: ${JSON.stringify(isMessage.errors)}`);
}

export const TOKEN = "t".repeat(43);

export function session(values = {}) {
  return {
    token: TOKEN,
    model: "K210",
    canvas: { width: 800, height: 400 },
    area: { left: 160, top: 220, width: 2360, height: 1430 },
    pressureLevels: 2048,
    hasFingerprint: false,
    clears: 0,
    points: 0,
    ...values,
  };
}

export class Refusal extends Error {
  constructor(type, code = -32000) {
    super(`refused: ${type}`);
    this.type = type;
    this.code = code;
  }
}

// answers: by method, what is answered, or a function (params, client) that tells it or throws a Refusal. One
// that gives { type, data } is sent as a picture. Undefined is no answer.
export class Service {
  requests = []; // [method, params]
  failures = []; // messages that the schema does not know
  clients = new Set();
  refuses = false;

  constructor(answers = {}) {
    this.answers = { open: session(), close: {}, clear: {}, pen: {}, wait: undefined, ...answers };
  }

  async start(port = 0) {
    this.http = createServer((request, response) => {
      response.writeHead(this.refuses ? 403 : 200, { "Content-Type": "application/json" });
      response.end('{"service":"scribera-bridge","version":"9.9.9","protocol":"scribera-pad.1"}');
    });
    this.sockets = new WebSocketServer({ noServer: true, handleProtocols: () => "scribera-pad.1" });
    this.http.on("upgrade", (request, socket, head) => {
      if (this.refuses) return socket.end("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
      assert.equal(request.headers["sec-websocket-protocol"], "scribera-pad.1");
      this.sockets.handleUpgrade(request, socket, head, (client) => this.#serve(client));
    });
    await new Promise((resolve) => this.http.listen(port, "127.0.0.1", resolve));
    this.port = this.http.address().port;
    this.url = `ws://127.0.0.1:${this.port}/pad`;
    return this;
  }

  #serve(client) {
    this.clients.add(client);
    client.on("close", () => this.clients.delete(client));
    client.on("message", (data, isBinary) => {
      assert.equal(isBinary, false);
      const request = JSON.parse(data);
      if (!isMessage(request)) this.failures.push(String(data));
      this.#answer(client, request);
    });
  }

  async #answer(client, { id, method, params }) {
    this.requests.push([method, params]);
    const say = (message) => {
      const whole = { jsonrpc: "2.0", id, ...message };
      check(whole);
      client.send(JSON.stringify(whole));
    };
    try {
      const answer = this.answers[method];
      const result = await (typeof answer === "function" ? answer(params, client) : answer);
      if (result === undefined) return;
      if (result.data) {
        say({ result: { type: result.type, bytes: result.data.length } });
        client.send(result.data);
      } else {
        say({ result });
      }
    } catch (error) {
      if (!(error instanceof Refusal)) throw error;
      const { code, type, message } = error;
      say({ error: { code, message, ...(code === -32000 && { data: { type } }) } });
    }
  }

  notify(method, params, clients = this.clients) {
    const message = { jsonrpc: "2.0", method, params };
    check(message);
    for (const client of clients) client.send(JSON.stringify(message));
  }

  methods() {
    return this.requests.map(([method]) => method);
  }

  drop() {
    for (const client of this.clients) client.terminate();
  }

  async stop() {
    this.drop();
    this.http.closeAllConnections?.();
    await new Promise((resolve) => this.http.close(resolve));
    assert.deepEqual(this.failures, []);
  }
}

/** Resolves with the next event of a type. */
export function next(target, type) {
  return new Promise((resolve) => target.addEventListener(type, resolve, { once: true }));
}
