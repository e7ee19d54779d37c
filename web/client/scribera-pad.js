// Signatures from a Scribera pad in a web page; scribera-pad.d.ts describes it.

const SERVICE = "ws://127.0.0.1:17283/pad";
const PROTOCOL = "scribera-pad.1";
const KEPT_FOR = 30_000; // milliseconds for which the service keeps a session without a connection
const LONGEST_WAIT = 3_600_000;

export const models = {
  K210: { left: 160, top: 220, width: 2360, height: 1430, levels: 2048 },
  K420: { left: 200, top: 200, width: 2300, height: 1300, levels: 2048 },
  K421B: { left: 2050, top: 1750, width: 21170, height: 11490, levels: 2048 },
  KM730: { left: 550, top: 180, width: 29870, height: 20120, levels: 8192, threeAtFull: true },
  T580: { left: 550, top: 180, width: 29870, height: 20120, levels: 8192, threeAtFull: true },
};

export class PadError extends Error {
  constructor(type, message, options) {
    super(message, options);
    this.name = "PadError";
    this.type = type;
  }
}

export class PadEvent extends Event {
  constructor(type, details) {
    super(type);
    Object.assign(this, details);
  }
}

const closed = () => new PadError("closed", "the pad is closed");
const noInk = () => new PadError("no-ink", "nobody has signed");
const invalid = (message) => new PadError("invalid-argument", message);

function abortable(promise, signal) {
  if (!signal) return promise;
  const done = new AbortController();
  return new Promise((resolve, reject) => {
    signal.addEventListener("abort", () => reject(signal.reason), { signal: done.signal });
    if (signal.aborted) reject(signal.reason);
    promise.then(resolve, reject);
  }).finally(() => done.abort());
}

const given = (values) => Object.fromEntries(Object.entries(values).filter(([, value]) => value !== undefined));

const create = (name, properties) => Object.assign(document.createElement(name), properties);

const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

async function connect(url, WebSocket, signal) {
  if (!/^wss?:\/\/[^/]/.test(url)) throw invalid(`${url} is not the address of a service, such as ${SERVICE}`);
  let socket;
  let isForbidden = false; // by the page's own Content-Security-Policy
  const onViolation = ({ blockedURI }) => (isForbidden ||= blockedURI.startsWith("ws"));
  globalThis.document?.addEventListener("securitypolicyviolation", onViolation);
  try {
    await abortable(
      new Promise((resolve, reject) => {
        socket = new WebSocket(url, [PROTOCOL]);
        socket.binaryType = "arraybuffer";
        socket.onopen = resolve;
        socket.onerror = socket.onclose = reject;
      }),
      signal,
    );
    return socket;
  } catch (cause) {
    socket?.close();
    signal?.throwIfAborted();
    if (cause instanceof Error) throw invalid(cause.message);
    isForbidden ||= cause.name === "NS_ERROR_CONTENT_BLOCKED"; // in Firefox, whose event comes later
    throw await whyNot(url, isForbidden, cause.error);
  } finally {
    globalThis.document?.removeEventListener("securitypolicyviolation", onViolation);
  }
}

// A browser tells a page only that a connection failed.
async function whyNot(url, isForbidden, cause) {
  const { protocol, host, hostname } = new URL(url);
  const because = (type, message) => new PadError(type, message, { cause });
  const page = globalThis.location;
  const isThere = await fetch(`${protocol.replace("ws", "http")}//${host}/health`, { mode: "no-cors" }).then(
    () => true,
    () => false,
  );
  if (isThere)
    return because(
      "refused",
      `the service on ${host} refused the connection: was it started with ` +
        `${page ? `--allow-origin ${page.origin}` : "--allow-no-origin"}, and does it speak ${PROTOCOL}?`,
    );
  if (isForbidden)
    return because(
      "blocked-by-csp",
      `the page's Content-Security-Policy forbids it: its connect-src lacks ${protocol}//${host}`,
    );
  const none = `no service on ${host}: is scribera-bridge installed and running?`;
  if (page && !isLoopback(page.hostname) && isLoopback(hostname)) {
    const missing = (message) => because("permission-missing", `the browser keeps the page from ${host}: ${message}`);
    const policy =
      `let an administrator allow ${page.origin} by policy: LoopbackNetworkAllowedForUrls (Chromium, Chrome, Edge; ` +
      "before 146 LocalNetworkAccessAllowedForUrls), LocalNetworkAccess (Firefox)";
    const { name, state } = await localNetworkPermission();
    if (document.featurePolicy?.allowsFeature(name) === false)
      return missing('its <iframe> needs allow="local-network-access; loopback-network"');
    if (state === "denied")
      return missing(isSecureContext ? `allow local access in its settings, or ${policy}` : "serve it on https");
    if (state === "prompt")
      return because("no-service", `${none} If so, answer the browser's question about local access, or ${policy}`);
  }
  return because("no-service", none);
}

const isLoopback = (name) => /^(localhost|.*\.localhost|127(\.\d+){3}|\[::1\])$/.test(name);

async function localNetworkPermission() {
  for (const name of ["loopback-network", "local-network-access"]) {
    try {
      return { name, state: (await navigator.permissions.query({ name })).state };
    } catch {
      // a name that this browser does not know
    }
  }
  return {};
}

export class Pad extends EventTarget {
  #numbers = []; // five for each point
  #stroke = 0;
  #pens = [{ from: 0, width: 3, color: "#000000", pressure: true }];
  #waiting = new Set();
  #key; // used, and waited for by nobody yet
  #state = "open";
  model;
  size;
  area;
  pressureLevels;
  hasFingerprint = false;

  static async open(options = {}) {
    const { model, size = [800, 400], surface, source = surface ? "auto" : "pad", signal } = options;
    if (!Object.hasOwn(models, model) && !(options.token && model === undefined))
      throw invalid(`no pad model ${model}: it is one of ${Object.keys(models).join(", ")}`);
    if (size.length !== 2 || !size.every((side) => Number.isInteger(side) && side >= 1 && side <= 4096))
      throw invalid("size is [width, height], each from 1 to 4096 pixels");
    signal?.throwIfAborted();
    let reason;
    try {
      if (source !== "page") return await ServicePad.open({ ...options, size });
    } catch (error) {
      if (source === "pad" || !["no-service", "permission-missing"].includes(error.type)) throw error;
      reason = error;
    }
    return new PagePad(model, size, surface, reason);
  }

  get state() {
    return this.#state;
  }

  get count() {
    return this.#numbers.length / 5;
  }

  points(from = 0, count = Infinity) {
    const found = [];
    for (let index = Math.max(from, 0); index < Math.min(from + count, this.count); ++index)
      found.push(this.#at(index));
    return found;
  }

  #at(index) {
    const [x, y, pressure, time, mark] = this.#numbers.slice(5 * index, 5 * index + 5);
    return { x, y, pressure, time, begin: mark === 2, end: mark === 1 };
  }

  async wait({ timeout = LONGEST_WAIT, signal } = {}) {
    if (!(timeout >= 0)) throw invalid("timeout is in milliseconds, from 0");
    signal?.throwIfAborted();
    const key = this.#key;
    this.#key = undefined;
    if (key) return key;
    let timer, waiter;
    const told = new Promise((resolve, reject) => {
      waiter = { resolve, reject };
      this.#waiting.add(waiter);
      timer = setTimeout(resolve, Math.min(timeout, LONGEST_WAIT), "timeout");
    });
    try {
      this._check();
      return await abortable(told, signal);
    } finally {
      clearTimeout(timer);
      this.#waiting.delete(waiter);
    }
  }

  press(key) {
    if (key !== "confirm" && key !== "cancel") throw invalid('a key is "confirm" or "cancel"');
    this.dispatchEvent(new PadEvent(key));
    if (this.#waiting.size === 0) this.#key = key;
    for (const { resolve } of this.#waiting) resolve(key);
  }

  _failWaiting(error) {
    for (const { reject } of this.#waiting) reject(error);
  }

  _addPoint(...numbers) {
    const index = this.count;
    this.#numbers.push(...numbers);
    const point = this.#at(index);
    if (point.begin && index) ++this.#stroke;
    this.dispatchEvent(new PadEvent("point", { index, stroke: this.#stroke, ...point }));
  }

  _forgetPoints() {
    this.#numbers = [];
    this.#stroke = 0;
    this.#key = undefined;
    this.#pens = [{ ...this.#pens.at(-1), from: 0 }];
    this.dispatchEvent(new PadEvent("clear"));
  }

  get _pen() {
    const { width, color, pressure } = this.#pens.at(-1);
    return { width, color, pressure };
  }

  _setPen(pen) {
    this.#pens.push({ ...this.#pens.at(-1), ...pen, from: this.count });
  }

  _setState(state) {
    if (this.#state === state) return;
    this.#state = state;
    this.dispatchEvent(new PadEvent("statechange"));
  }

  // What the library draws, in pixels of the picture.
  *_lines(from = 0) {
    const { left, top, width, height } = this.area;
    const onCanvas = ({ x, y }) => [
      (within(x - left, width) * this.size[0]) / width,
      (within(y - top, height) * this.size[1]) / height,
    ];
    let pen = this.#pens.findLastIndex(({ from: first }) => first <= from);
    for (let index = from || 1; index < this.count; ++index) {
      while (this.#pens[pen + 1]?.from <= index) ++pen;
      const point = this.#at(index);
      if (!point.begin && !point.end) {
        const { width: wide, color, pressure } = this.#pens[pen];
        yield [
          ...onCanvas(this.#at(index - 1)),
          ...onCanvas(point),
          // the library's pens without a width draw one pixel
          pressure ? point.pressure * pressureScale(this.model, wide, this.pressureLevels) || 1 : wide,
          color,
        ];
      }
    }
  }

  draw(context, from = 0) {
    context.lineCap = "round";
    for (const [x1, y1, x2, y2, width, color] of this._lines(from)) {
      context.strokeStyle = color;
      context.lineWidth = width;
      context.beginPath();
      context.moveTo(x1, y1);
      context.lineTo(x2 + 0.001, y2); // one without length has no caps in some browsers
      context.stroke();
    }
  }
}

const within = (offset, units) => Math.max(0, Math.min(offset, units - 1));

function pressureScale(model, penWidth, levels) {
  return models[model]?.threeAtFull ? (penWidth * 3) / levels : penWidth / 306;
}

class ServicePad extends Pad {
  #url;
  #WebSocket;
  #socket; // with the session
  #latest; // socket, which may have no session yet
  #asked = new Map(); // requests without an answer, by their id
  #nextId = 0;
  #clears = 0;
  #keys = 0; // that were used since the last clear
  #isClosing = false;
  #held; // messages
  #error; // why the pad is closed
  token;

  static async open(options) {
    const pad = new ServicePad(options);
    const starting = pad.#start(options);
    try {
      await abortable(starting, options.signal);
    } catch (error) {
      leave(
        starting.then(
          () => pad.close(),
          () => pad.#latest?.close(),
        ),
      );
      throw error;
    }
    return pad;
  }

  constructor({ url = SERVICE, webSocket = globalThis.WebSocket }) {
    super();
    if (!webSocket) throw invalid("there is no WebSocket: give open() one, { webSocket }");
    this.#url = url;
    this.#WebSocket = webSocket;
  }

  async #start({ model, size, token, signal }) {
    await sleep(); // for those who are about to leave
    await Promise.race([leaving, sleep(2000)]);
    const socket = await this.#connect(signal);
    const [width, height] = size;
    const kept = token ? { token, isOurs: true } : this.#recall(model, size);
    let session;
    try {
      if (kept) {
        ({ token: this.token, clears: this.#clears = 0, keys: this.#keys = 0 } = kept);
        session = await this.#askToResume(socket);
      }
      if (kept?.pen) this._setPen(kept.pen);
      if (kept && !kept.isOurs) {
        await this.#askOn(socket, "close");
        session = undefined;
        this.#held = [];
      }
    } catch (error) {
      if (token || error.type !== "unknown-token") throw error;
    }
    this.#adopt(socket, session ?? (await this.#askOn(socket, "open", { model, width, height })));
    setTimeout(() => this.#release());
  }

  #release() {
    const held = this.#held ?? [];
    this.#held = undefined;
    for (const take of held) take();
  }

  // What belongs to the session waits until that is known, and somebody there to hear it.
  async #connect(signal) {
    const socket = (this.#latest = await connect(this.#url, this.#WebSocket, signal));
    let picture; // the answer that its bytes belong to
    this.#held = [];
    socket.onclose = ({ code }) => this.#lost(socket, code);
    socket.onmessage = ({ data }) => {
      const isText = typeof data === "string";
      const { id, method, params, result, error } = isText ? JSON.parse(data) : picture;
      const take = () => {
        if (method) this.#hear(method, params);
        else if (error) this.#settle(id, undefined, errorOf(error));
        else this.#settle(id, isText ? result : { blob: new Blob([data], { type: result.type }) });
      };
      if (isText && result && "bytes" in result) picture = { id, result };
      else if (this.#held && (method || socket === this.#socket)) this.#held.push(take);
      else take();
    };
    return socket;
  }

  #settle(id, result, error) {
    const { resolve, reject } = this.#asked.get(id) ?? {};
    this.#asked.delete(id);
    if (error) reject?.(error);
    else resolve?.(result);
  }

  #ask(method, params, signal) {
    return abortable(this.#askOn(this.#socket, method, params), signal);
  }

  // Without a connection the request waits for the next one.
  #askOn(socket, method, params) {
    if (this.#error) return Promise.reject(this.#error);
    const request = { id: this.#nextId++, method, params, socket };
    if (socket) send(socket, request);
    return new Promise((resolve, reject) => this.#asked.set(request.id, Object.assign(request, { resolve, reject })));
  }

  #askToResume(socket) {
    const { token, count: points } = this;
    return this.#askOn(socket, "resume", { token, clears: this.#clears, points, keys: this.#keys });
  }

  #adopt(socket, { token, model, canvas, area, pressureLevels, hasFingerprint, clears }) {
    this.#socket = socket;
    if (token !== this.token || clears !== this.#clears) this.#keys = 0;
    this.#clears = clears;
    Object.assign(this, { token, model, area, pressureLevels, hasFingerprint });
    this.size = [canvas.width, canvas.height];
    tokens.add(token);
    this.#remember();
    globalThis.addEventListener?.("pagehide", this.#remember);
  }

  #hear(method, params) {
    if (method === "points") {
      params.points.slice(Math.max(0, this.count - params.from)).forEach((point) => this._addPoint(...point));
    } else if (method === "key") {
      this.#keys = params.keys;
      this.#remember();
      this.press(params.key);
    } else if (method === "cleared") {
      this.#clears = params.clears;
      this.#keys = 0;
      this._forgetPoints();
    } else if (method === "closed" && params.reason !== "service-stops") {
      // a service that stops may be started again
      this.#end(new PadError(params.reason, params.message));
    }
  }

  _check() {
    if (this.#error) throw this.#error;
  }

  async clear() {
    await this.#ask("clear");
  }

  async pen({ width, color, pressure }) {
    await this.#ask("pen", { width, color, pressure });
    this._setPen(given({ width, color, pressure }));
    this.#remember();
  }

  async image(format = "png", { dpi, clip, transparent, signal } = {}) {
    return (await this.#ask("image", { format, dpi, clip, transparent }, signal)).blob;
  }

  async svg({ clip, signal } = {}) {
    return (await this.#ask("svg", { clip }, signal)).svg;
  }

  async ink({ signal } = {}) {
    return (await this.#ask("ink", undefined, signal)).ink;
  }

  async device({ signal } = {}) {
    return await this.#ask("device", undefined, signal);
  }

  async fingerprint(format = "png", { signal } = {}) {
    return (await this.#ask("fingerprint", { format }, signal)).blob;
  }

  async close() {
    this.#isClosing = true;
    if (this.#socket) await leave(this.#ask("close").catch(() => {}));
    this.#end(closed(), false);
  }

  #place(model = this.model) {
    return `scribera-pad ${this.#url} ${model}`;
  }

  // For the page that is loaded again in the middle of a signature; an event says that this one goes.
  #remember = (event) => {
    const { token, size, _pen: pen } = this;
    const known = { token, pen, clears: this.#clears, keys: this.#keys };
    storage()?.setItem(this.#place(), JSON.stringify({ ...known, page: pageWith(size), isLeft: Boolean(event) }));
  };

  // Another page of the tab closes what was left open: its signature is another one.
  #recall(model, size) {
    const kept = JSON.parse(storage()?.getItem(this.#place(model)) ?? "null");
    if (!kept || tokens.has(kept.token)) return undefined;
    const [navigation] = performance.getEntriesByType("navigation");
    const isOurs = kept.page === pageWith(size) && navigation?.type !== "navigate";
    return isOurs ? { ...kept, isOurs } : kept.isLeft && { token: kept.token };
  }

  #end(error, isFailure = true) {
    if (this.#error) return;
    this.#error = error;
    globalThis.removeEventListener?.("pagehide", this.#remember);
    if (tokens.delete(this.token)) storage()?.removeItem(this.#place());
    this.#socket = undefined;
    this.#latest.close();
    for (const { id } of this.#asked.values()) this.#settle(id, undefined, error);
    this._failWaiting(error);
    if (isFailure) this.dispatchEvent(new PadEvent("error", { error }));
    this._setState("closed");
  }

  #lost(socket, code) {
    if (socket === this.#socket) {
      this.#socket = undefined;
      if (this.#isClosing) this.#end(closed(), false);
      else if (code === 1003 || code === 1008 || code === 1009)
        this.#end(new PadError("protocol-error", `the service ended the connection with code ${code}`));
      else this.#reconnect();
    } else {
      const error = new PadError("no-service", "the service ended the connection");
      for (const request of this.#asked.values())
        if (request.socket === socket) this.#settle(request.id, undefined, error);
    }
  }

  async #reconnect() {
    this._setState("reconnecting");
    const end = Date.now() + KEPT_FOR;
    for (let pause = 50; !this.#error; pause = Math.min(2 * pause, 1000)) {
      try {
        await this.#resume(await this.#connect());
        return;
      } catch (error) {
        this.#latest.close();
        if (Date.now() + pause > end) this.#end(error);
      }
      await sleep(pause);
    }
  }

  // Goes on with the session, or where the service has lost it with a new one: the signature is begun again.
  async #resume(socket) {
    let session;
    let lost;
    try {
      session = await this.#askToResume(socket);
    } catch (error) {
      if (error.type !== "unknown-token") throw error;
      const [width, height] = this.size;
      session = await this.#askOn(socket, "open", { model: this.model, width, height });
      await this.#askOn(socket, "pen", this._pen);
      lost = new PadError("session-lost", "the service was started again: please sign again");
    }
    const isAnew = lost || session.clears !== this.#clears;
    this.#adopt(socket, session);
    const points = this.points();
    if (isAnew) this._forgetPoints();
    for (const request of this.#asked.values()) {
      if (request.method === "clear" && isAnew) this.#settle(request.id, {});
      else if (lost && request.socket && request.method !== "pen")
        this.#settle(request.id, undefined, lost);
      else send(socket, Object.assign(request, { socket }));
    }
    this.#release();
    this._setState("open");
    if (lost) this.dispatchEvent(new PadEvent("error", { error: lost, points }));
  }
}

const tokens = new Set(); // of the sessions of this page
let leaving; // until it has closed the pads that it gave up

function leave(ending) {
  leaving = Promise.all([leaving, ending]);
  return ending;
}

const pageWith = (size) => `${globalThis.location?.href} ${size}`;

const errorOf = ({ code, message, data }) =>
  new PadError(data?.type ?? (code === -32602 ? "invalid-argument" : "protocol-error"), message);

function send(socket, { id, method, params }) {
  socket.send(JSON.stringify({ jsonrpc: "2.0", id, method, params }));
}

function storage() {
  try {
    return globalThis.sessionStorage;
  } catch {
    return undefined; // the user keeps pages from storing
  }
}

const POINTER = ["pointerdown", "pointermove", "pointerup", "pointercancel"];

// Mouse, finger or stylus on an element of the page.
class PagePad extends Pad {
  #surface;
  #pointer; // that writes
  #isClosed = false;
  reason;

  constructor(model, size, surface, reason) {
    super();
    if (!surface?.getBoundingClientRect) throw invalid("the page needs a surface, an element");
    const { left, top, width, height, levels } = models[model];
    Object.assign(this, { model, size, reason, area: { left, top, width, height }, pressureLevels: levels });
    this.#surface = surface;
    for (const type of POINTER) surface.addEventListener(type, this.#take);
  }

  #take = (event) => {
    const { type } = event;
    if (type === "pointerdown" && this.#pointer === undefined && event.button === 0) {
      event.preventDefault();
      this.#pointer = event.pointerId;
      this.#surface.setPointerCapture(event.pointerId);
      this.#write(event, 2);
    } else if (event.pointerId !== this.#pointer) {
      return;
    } else if (type === "pointermove") {
      const joined = event.getCoalescedEvents?.() ?? [];
      for (const each of joined.length ? joined : [event]) this.#write(each);
    } else if (type !== "pointerdown") {
      this.#pointer = undefined;
      const { x, y, pressure, end = true } = this.#last;
      if (!end) this._addPoint(x, y, pressure, this.#timeOf(event), 1);
    }
  };

  get #last() {
    return this.points(this.count - 1)[0] ?? {}; // none after a clear
  }

  #timeOf({ timeStamp }) {
    return Math.max(this.#last.time ?? 0, Math.floor(performance.timeOrigin + timeStamp));
  }

  #write(event, mark = 0) {
    const { left, top, width, height } = this.#surface.getBoundingClientRect();
    const { area } = this;
    // the pad unit that lies nearest to the pixel
    const nearest = (offset, side, units) => within(Math.round((offset / side) * units), units);
    this._addPoint(
      area.left + nearest(event.clientX - left, width, area.width),
      area.top + nearest(event.clientY - top, height, area.height),
      this.#pressureOf(event),
      this.#timeOf(event),
      mark,
    );
  }

  // Only a stylus tells how hard it is pressed; others draw as wide as the pen is set.
  #pressureOf({ pointerType, pressure }) {
    const { pressureLevels: levels } = this;
    const part = pointerType === "pen" ? pressure * levels : 1 / pressureScale(this.model, 1, levels);
    return Math.max(1, Math.min(Math.round(part), levels));
  }

  _check() {
    if (this.#isClosed) throw closed();
  }

  #checkInk() {
    this._check();
    if (this.count === 0) throw noInk();
  }

  async clear() {
    this._check();
    this._forgetPoints();
  }

  async pen(pen) {
    this._check();
    const { width, color, pressure } = { ...this._pen, ...given(pen) };
    if (!Number.isInteger(width) || width < 1 || width > 10) throw invalid("width is a number from 1 to 10");
    if (!/^#[0-9a-f]{6}$/i.test(color)) throw invalid('color is "#rrggbb"');
    this._setPen({ width, color, pressure });
  }

  async image(format = "png", { dpi = 300, clip, transparent = false } = {}) {
    this.#checkInk();
    if (dpi !== 150 && dpi !== 300) throw invalid("dpi is 150 or 300");
    const canvas = this.#picture(clip);
    if (format === "png" && transparent) withoutWhite(canvas);
    const type = `image/${format}`;
    const blob = await new Promise((resolve) => canvas.toBlob(resolve, type, 0.75));
    if (blob?.type !== type) throw new PadError("no-format", `the page makes no ${format}: ask for png or jpeg`);
    return format === "png" ? pngWith(dpi, blob) : blob;
  }

  async svg({ clip } = {}) {
    this.#checkInk();
    const [left, top, width, height] = clip ? inkedPart(this.#picture(), clip) : [0, 0, ...this.size];
    const lines = Array.from(
      this._lines(),
      ([x1, y1, x2, y2, wide, color]) =>
        `<path d="M${x1 - left} ${y1 - top}L${x2 - left} ${y2 - top}" stroke="${color}" stroke-width="${wide}"/>`,
    );
    return (
      `<svg xmlns="http://www.w3.org/2000/svg" width="${width}" height="${height}" viewBox="0 0 ${width} ${height}" ` +
      `stroke-linecap="round">${lines.join("\n")}</svg>`
    );
  }

  async ink() {
    this.#checkInk();
    const records = new DataView(new ArrayBuffer(24 * this.count + 1));
    this.points().forEach(({ x, y, pressure, time, end }, index) => {
      const at = 24 * index;
      records.setUint16(at, x, true);
      records.setInt16(at + 2, y, true);
      records.setInt16(at + 4, pressure, true);
      records.setUint8(at + 6, end ? 1 : 0);
      records.setBigInt64(at + 8, BigInt(time), true);
      records.setBigInt64(at + 16, BigInt(Math.floor(time / 1000)), true);
    });
    let text = "";
    for (const byte of new Uint8Array(records.buffer)) text += String.fromCharCode(byte);
    return btoa(text);
  }

  async device() {
    this._check();
    return { pad: null, pen: null, version: null };
  }

  async fingerprint() {
    this._check();
    throw new PadError("no-fingerprint", "there is no fingerprint reader on the page");
  }

  async close() {
    if (this.#isClosed) return;
    this.#isClosed = true;
    for (const type of POINTER) this.#surface.removeEventListener(type, this.#take);
    this._failWaiting(closed());
    this._setState("closed");
  }

  #picture(clip) {
    const picture = (width, height, draw) => {
      const canvas = create("canvas", { width, height });
      draw(canvas.getContext("2d", { willReadFrequently: true }));
      return canvas;
    };
    const whole = picture(...this.size, (context) => {
      context.fillStyle = "#ffffff";
      context.fillRect(0, 0, ...this.size);
      this.draw(context);
    });
    if (!clip) return whole;
    const [left, top, width, height] = inkedPart(whole, clip);
    return picture(width, height, (context) => context.drawImage(whole, -left, -top));
  }
}

const pixelsOf = (canvas) => canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);

function inkedPart(canvas, [marginX, marginY]) {
  const { width, height } = canvas;
  const isMargin = (margin) => Number.isInteger(margin) && margin >= 0 && margin <= 4096;
  if (!isMargin(marginX) || !isMargin(marginY) || marginX + marginY === 0)
    throw invalid("clip is [x, y], each from 0 to 4096 pixels, not both 0");
  const pixels = new Uint32Array(pixelsOf(canvas).data.buffer);
  let left = width;
  let top = height;
  let right = -1;
  let bottom = -1;
  pixels.forEach((pixel, at) => {
    if (pixel === 0xffffffff) return;
    const x = at % width;
    const y = (at - x) / width;
    left = Math.min(left, x);
    right = Math.max(right, x);
    top = Math.min(top, y);
    bottom = y;
  });
  if (right < 0) throw noInk();
  left = Math.max(0, left - marginX);
  top = Math.max(0, top - marginY);
  right = Math.min(width - 1, right + marginX);
  bottom = Math.min(height - 1, bottom + marginY);
  return [left, top, right - left + 1, bottom - top + 1];
}

function withoutWhite(canvas) {
  const image = pixelsOf(canvas);
  const pixels = new Uint32Array(image.data.buffer);
  pixels.forEach((pixel, at) => pixel === 0xffffffff && (pixels[at] = 0));
  canvas.getContext("2d").putImageData(image, 0, 0);
}

// PNG keeps the resolution in a chunk of its own, between the header, which ends at 33, and the picture: length, name,
// dots a metre both ways, and a check sum of these.
function pngWith(dpi, bytes) {
  const [dots, sum] = dpi === 150 ? [5905, 0xca26f33f] : [11811, 0x78a53f76];
  const chunk = new DataView(new ArrayBuffer(21));
  [9, 0x70485973, dots, dots, 1 << 24].forEach((value, index) => chunk.setUint32(4 * index, value));
  chunk.setUint32(17, sum);
  return new Blob([bytes.slice(0, 33), chunk, bytes.slice(33)], { type: "image/png" });
}

const TEXTS = {
  signature: "Signature",
  connecting: "Looking for the pad.",
  pad: "Please sign on the pad.",
  page: "Please sign here.",
  signed: "Please confirm.",
  confirmed: "Confirmed.",
  reconnecting: "The connection is lost. Trying again.",
  missing: "Please sign and confirm.",
  confirm: "Confirm",
  clear: "Clear",
  cancel: "Cancel",
};

const STYLE = `
:host { display: inline-block; max-width: 100% }
:host([hidden]) { display: none }
:host(:disabled) { opacity: 0.5 }
canvas { display: block; width: 100%; touch-action: none; user-select: none;
  background: var(--scribera-pad-background, #fff); outline: var(--scribera-pad-border, 1px solid #8794a3);
  border-radius: var(--scribera-pad-radius, 4px) }
div { display: flex; flex-wrap: wrap; align-items: center; gap: 0.5em; margin-top: 0.5em }
p { flex: 1 1 12em; margin: 0 }
button { font: inherit }`;

export class ScriberaPadElement extends (globalThis.HTMLElement ?? Object) {
  static formAssociated = true;
  static observedAttributes = ["required", "pen-width", "pen-color", "width", "height"];
  static texts = TEXTS;

  #internals = this.attachInternals();
  #style = new CSSStyleSheet();
  #canvas = create("canvas", { part: "surface", role: "img" });
  #status = create("p", { part: "status", role: "status" });
  #buttons = {};
  #pad;
  #opening; // ends what open() began
  #drawn = 0; // points
  #frame; // in which the next ones are drawn
  #value = null;
  #isDisabled = false;

  constructor() {
    super();
    const root = this.attachShadow({ mode: "open", delegatesFocus: true });
    root.adoptedStyleSheets = [this.#style];
    const controls = create("div", { part: "controls" });
    controls.append(this.#status);
    for (const name of ["confirm", "clear", "cancel"]) {
      const button = create("button", { type: "button", part: `button ${name}` });
      button.addEventListener("click", () => this[name]());
      controls.append((this.#buttons[name] = button));
    }
    root.append(this.#canvas, controls);
    this.#internals.role = "group";
    const observer = new ResizeObserver(() => this.#redraw());
    try {
      observer.observe(this.#canvas, { box: "device-pixel-content-box" });
    } catch {
      observer.observe(this.#canvas); // Safari has no other
    }
    this.#fit();
    this.#show("connecting");
  }

  connectedCallback() {
    this.#judge();
    this.#openByItself();
  }

  disconnectedCallback() {
    // a move within the page ends in it
    queueMicrotask(() => this.isConnected || this.close());
  }

  attributeChangedCallback(name) {
    if (name === "required") this.#judge();
    else if (name.startsWith("pen-")) this.#setPen().catch((error) => this.#fail(error));
    else this.#fit();
  }

  formDisabledCallback(isDisabled) {
    this.#isDisabled = isDisabled;
    this.#show();
    if (!isDisabled) this.#openByItself();
    else if (this.#value === null) this.close(); // a form that is being sent keeps what it sends
  }

  formResetCallback() {
    this.#wipe();
  }

  static {
    for (const name of ["form", "validity", "validationMessage", "willValidate"])
      Object.defineProperty(this.prototype, name, {
        get() {
          return this.#internals[name];
        },
      });
  }
  checkValidity() {
    return this.#internals.checkValidity();
  }
  reportValidity() {
    return this.#internals.reportValidity();
  }
  get name() {
    return this.getAttribute("name") ?? "";
  }
  get pad() {
    return this.#pad;
  }
  get value() {
    return this.#value;
  }

  #openByItself() {
    if (this.isConnected && !this.hasAttribute("manual")) this.open().catch(() => {}); // an event has told
  }

  async open() {
    if (this.#isDisabled || (this.#opening && this.#pad?.state !== "closed")) return;
    const { signal } = (this.#opening = new AbortController());
    this.#show("connecting");
    try {
      const pad = await Pad.open({
        model: this.getAttribute("model"),
        size: this.#size(),
        url: this.getAttribute("url") ?? undefined,
        source: this.getAttribute("source") ?? "auto",
        surface: this.#canvas,
        signal,
      });
      if (signal.aborted) return await pad.close();
      this.#pad = pad;
      pad.addEventListener("point", ({ index }) => this.#written(index));
      pad.addEventListener("clear", () => this.#forget());
      pad.addEventListener("error", ({ error }) => this.#fail(error));
      pad.addEventListener("statechange", () => this.#show(pad.state === "open" ? this.#prompt() : pad.state));
      await this.#setPen();
      this.#forget();
      this.#obey(pad);
    } catch (error) {
      if (signal.aborted) return;
      this.#opening = undefined;
      this.#fail(error);
      throw error;
    }
  }

  async close() {
    this.#opening?.abort();
    this.#opening = undefined;
    const pad = this.#pad;
    this.#pad = undefined;
    await pad?.close();
  }

  confirm() {
    this.#pad?.press("confirm");
  }

  cancel() {
    this.#pad?.press("cancel");
  }

  /** Begins again, also after a failure. */
  async clear() {
    await this.#wipe();
    await this.open();
  }

  async #wipe() {
    this.#forget();
    if (this.#pad?.state === "closed") await this.close();
    await this.#pad?.clear().catch((error) => this.#fail(error));
  }

  async #obey(pad) {
    try {
      while (pad === this.#pad) {
        const key = await pad.wait();
        if (key === "confirm") await this.#confirmed(pad);
        if (key === "cancel") {
          await pad.clear();
          this.#tell("cancel");
        }
      }
    } catch (error) {
      if (pad === this.#pad && pad.state !== "closed") this.#fail(error); // a closed one has told
    }
  }

  async #confirmed(pad) {
    const { count } = pad;
    if (count === 0) return this.#show("missing");
    const isInk = this.getAttribute("value-type") === "ink";
    const [x, y = x] = this.getAttribute("clip")?.match(/\d+/g)?.map(Number) ?? [];
    const value = isInk
      ? await pad.ink()
      : await pad.image("png", {
          dpi: Number(this.getAttribute("dpi") ?? 300),
          clip: x || y ? [x, y] : undefined,
          transparent: this.hasAttribute("transparent"),
        });
    if (pad.count !== count) return; // written on meanwhile: to be confirmed again
    this.#take(isInk ? value : new File([value], `${this.name || "signature"}.png`, { type: value.type }));
    this.#show("confirmed");
    this.#tell("confirm");
  }

  #take(value) {
    const isOther = value !== this.#value;
    this.#value = value;
    this.#judge();
    if (isOther) this.#tell("change");
  }

  #tell(type) {
    this.dispatchEvent(new Event(type, { bubbles: true }));
  }

  #written(index) {
    this.#frame ??= requestAnimationFrame(() => this.#draw());
    if (index > 0 && this.#value === null) return;
    this.#take(null);
    this.#show("signed");
    if (index === 0) this.#tell("sign");
  }

  #forget() {
    this.#take(null);
    this.#redraw();
    if (this.#pad) this.#show(this.#prompt());
  }

  #fail(error) {
    this.#show(undefined, error.message);
    this.dispatchEvent(new PadEvent("error", { error }));
  }

  async #setPen() {
    const width = this.getAttribute("pen-width");
    const color = this.getAttribute("pen-color");
    if (width || color) await this.#pad?.pen(given({ width: width ? +width : undefined, color: color ?? undefined }));
  }

  #size() {
    return [Number(this.getAttribute("width") ?? 800), Number(this.getAttribute("height") ?? 400)];
  }

  #fit() {
    const [width, height] = this.#size();
    this.#style.replaceSync(`${STYLE} :host { width: ${width}px } canvas { aspect-ratio: ${width} / ${height} }`);
  }

  #draw() {
    this.#frame = undefined;
    if (!this.#pad) return;
    const { width, height } = this.#canvas;
    const context = this.#canvas.getContext("2d");
    context.setTransform(width / this.#pad.size[0], 0, 0, height / this.#pad.size[1], 0, 0);
    this.#pad.draw(context, this.#drawn);
    this.#drawn = this.#pad.count;
  }

  #redraw() {
    const { width, height } = this.#canvas.getBoundingClientRect();
    this.#canvas.width = Math.round(width * devicePixelRatio);
    this.#canvas.height = Math.round(height * devicePixelRatio);
    this.#drawn = 0;
    this.#draw();
  }

  #judge() {
    if (this.#internals.labels.length === 0) this.#internals.ariaLabel = this.#text("signature");
    this.#internals.setFormValue(this.#value);
    const valueMissing = this.hasAttribute("required") && this.#value === null;
    this.#internals.setValidity({ valueMissing }, valueMissing ? this.#text("missing") : "", this.#buttons.confirm);
  }

  #prompt() {
    if (this.#value !== null) return "confirmed";
    return this.#pad.count ? "signed" : this.#pad instanceof PagePad ? "page" : "pad";
  }

  #show(name, message = this.#text(name)) {
    for (const button in this.#buttons) this.#buttons[button].textContent = this.#text(button);
    if (message) this.#status.textContent = message;
    this.#canvas.ariaLabel = `${this.#text("signature")}: ${this.#status.textContent}`;
    this.#buttons.confirm.disabled = this.#buttons.cancel.disabled = !this.#pad?.count;
    this.#buttons.clear.disabled = this.#isDisabled;
  }

  #text(name) {
    return this.constructor.texts[name] ?? TEXTS[name];
  }
}

globalThis.customElements?.define("scribera-pad", ScriberaPadElement);
