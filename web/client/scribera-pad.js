// Signatures from a Scribera pad in a web page: the class Pad and the element <scribera-pad>.
// README.md beside this file tells how they are used, ../PROTOCOL.md what goes over the line.

const SERVICE = "ws://127.0.0.1:17283/pad";
const PROTOCOL = "scribera-pad.1";
const KEPT_FOR = 30_000; // milliseconds for which the service keeps a session without a connection
const LONGEST_WAIT = 3_600_000;
const FORMATS = { png: "image/png", jpeg: "image/jpeg", bmp: "image/bmp", pdf: "application/pdf" };

/**
 * The models: writing area in pad units, highest pressure, and whether that draws three pen widths; else a
 * pressure of 306 draws one.
 */
export const models = {
  K210: { left: 160, top: 220, width: 2360, height: 1430, levels: 2048 },
  K420: { left: 200, top: 200, width: 2300, height: 1300, levels: 2048 },
  K421B: { left: 2050, top: 1750, width: 21170, height: 11490, levels: 2048 },
  KM730: { left: 550, top: 180, width: 29870, height: 20120, levels: 8192, threeAtFull: true },
  T580: { left: 550, top: 180, width: 29870, height: 20120, levels: 8192, threeAtFull: true },
};

/** Why something was not done: `type` for programs, `message` for people. */
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
const invalid = (message) => new PadError("invalid-argument", message);

function abortable(promise, signal) {
  if (!signal) return promise;
  let onAbort;
  const aborted = new Promise((_, reject) => {
    onAbort = () => reject(signal.reason);
    if (signal.aborted) onAbort();
    else signal.addEventListener("abort", onAbort);
  });
  return Promise.race([promise, aborted]).finally(() => signal.removeEventListener("abort", onAbort));
}

const given = (values) => Object.fromEntries(Object.entries(values).filter(([, value]) => value !== undefined));

const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

// One WebSocket: requests and answers, and a binary frame joined to the answer before it.
class Connection {
  onNotification = () => {};
  onEnd = () => {};
  #socket;
  #answer; // that waits for its binary frame
  #onAnswer;

  constructor(socket, onAnswer) {
    this.#socket = socket;
    this.#onAnswer = onAnswer;
    socket.addEventListener("message", ({ data }) => this.#take(data));
    socket.addEventListener("close", (event) => this.onEnd(event));
  }

  send(id, method, params) {
    this.#socket.send(JSON.stringify({ jsonrpc: "2.0", id, method, params }));
  }

  close() {
    this.#socket.close();
  }

  #take(data) {
    if (typeof data !== "string") {
      const { id, result } = this.#answer ?? {};
      this.#answer = undefined;
      if (result) this.#onAnswer(id, { ...result, blob: new Blob([data], { type: result.type }) });
      return;
    }
    const message = JSON.parse(data);
    if (message.method) this.onNotification(message.method, message.params);
    else if (message.error) this.#onAnswer(message.id, undefined, errorOf(message.error));
    else if (message.result.type && "bytes" in message.result) this.#answer = message;
    else this.#onAnswer(message.id, message.result);
  }
}

function errorOf({ code, message, data }) {
  return new PadError(data?.type ?? (code === -32602 ? "invalid-argument" : "protocol-error"), message);
}

async function connect(url, WebSocket, signal) {
  if (!/^wss?:\/\/[^/]/.test(url)) throw invalid(`${url} is not the address of a service, such as ${SERVICE}`);
  let socket;
  let violated; // the page's own Content-Security-Policy
  const onViolation = (event) => (violated ||= /^connect-src/.test(event.effectiveDirective));
  globalThis.document?.addEventListener("securitypolicyviolation", onViolation);
  try {
    await abortable(
      new Promise((resolve, reject) => {
        socket = new WebSocket(url, [PROTOCOL]);
        socket.binaryType = "arraybuffer";
        socket.addEventListener("open", resolve);
        socket.addEventListener("error", reject);
        socket.addEventListener("close", reject);
      }),
      signal,
    );
    return socket;
  } catch (cause) {
    socket?.close();
    signal?.throwIfAborted();
    if (cause instanceof Error) throw invalid(cause.message);
    throw await whyNot(url, () => violated, cause.error);
  } finally {
    globalThis.document?.removeEventListener("securitypolicyviolation", onViolation);
  }
}

// A browser tells a page only that a connection failed. What else can be asked tells why.
async function whyNot(url, isViolated, cause) {
  const { protocol, host, hostname } = new URL(url);
  const because = (type, message) => new PadError(type, message, { cause });
  const page = globalThis.location;
  const health = `${protocol === "wss:" ? "https" : "http"}://${host}/health`;
  const isThere = await fetch(health, { mode: "no-cors", cache: "no-store" }).then(
    () => true,
    () => false,
  );
  if (isThere)
    return because(
      "refused",
      `the service on ${host} refused the connection: is ${page?.origin ?? "the program's origin"} allowed ` +
        "(scribera-bridge --allow-origin), does it speak " +
        `${PROTOCOL}, and has it fewer than its most connections?`,
    );
  if (isViolated())
    return because(
      "blocked-by-csp",
      `the page's Content-Security-Policy forbids the connection: add ${protocol}//${host} to its connect-src`,
    );
  if (page && !isLoopback(page.hostname) && isLoopback(hostname)) {
    const policy =
      `an administrator allows ${page.origin} by policy: LoopbackNetworkAllowedForUrls (Chromium, Chrome and ` +
      "Edge from 146), LocalNetworkAccessAllowedForUrls (before), LocalNetworkAccess with SkipDomains (Firefox)";
    const state = await localNetworkPermission();
    if (!globalThis.isSecureContext && (state || /Chrome\//.test(navigator.userAgent)))
      return because(
        "permission-missing",
        `the browser keeps pages on plain http from ${host}: serve the page on https, or ${policy}`,
      );
    if (globalThis.document?.featurePolicy?.allowsFeature("local-network-access") === false)
      return because(
        "permission-missing",
        'the frame may not reach local services: its <iframe> needs allow="local-network-access; loopback-network"',
      );
    if (state === "denied")
      return because(
        "permission-missing",
        `the browser may not reach ${host} for this page: allow "local network access" in the page's settings, ` +
          `or ${policy}`,
      );
    if (state === "prompt")
      return because(
        "no-service",
        `no service on ${host}: is scribera-bridge installed and running? If it is, the browser's question ` +
          `about local network access was not answered: ask again, or ${policy}`,
      );
  }
  return because("no-service", `no service on ${host}: is scribera-bridge installed and running?`);
}

const isLoopback = (name) => /^(localhost|.*\.localhost|127(\.\d+){3}|\[::1\])$/.test(name);

async function localNetworkPermission() {
  for (const name of ["loopback-network", "local-network-access"]) {
    try {
      return (await navigator.permissions.query({ name })).state;
    } catch {
      // a name that this browser does not know
    }
  }
}

// The points of a signature, five numbers each, so that a long one takes no more than them.
class Points {
  count = 0;
  #numbers = new Float64Array(5 * 256);

  add(x, y, pressure, time, end) {
    if (5 * this.count === this.#numbers.length) {
      const more = new Float64Array(2 * this.#numbers.length);
      more.set(this.#numbers);
      this.#numbers = more;
    }
    this.#numbers.set([x, y, pressure, time, end], 5 * this.count++);
  }

  at(index) {
    const [x, y, pressure, time, end] = this.#numbers.subarray(5 * index, 5 * index + 5);
    return { x, y, pressure, time, end: end === 1 };
  }
}

/** A pad that is open; see README.md. */
export class Pad extends EventTarget {
  #points = new Points();
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
      throw invalid("size is [width, height] in pixels, each from 1 to 4096");
    signal?.throwIfAborted();
    if (source !== "page") {
      try {
        return await ServicePad.open({ ...options, size });
      } catch (error) {
        const canSignHere = source === "auto" && ["no-service", "permission-missing"].includes(error.type);
        if (!canSignHere) throw error;
        return new PagePad(model, size, surface, error);
      }
    }
    return new PagePad(model, size, surface);
  }

  /** "open", "reconnecting" or "closed". */
  get state() {
    return this.#state;
  }

  /** How many points there are. */
  get count() {
    return this.#points.count;
  }

  points(from = 0, count = Infinity) {
    const found = [];
    for (let index = from; index < Math.min(from + count, this.count); ++index) found.push(this.#points.at(index));
    return found;
  }

  /** Until the confirm or the cancel key is used, or the time is over. */
  async wait({ timeout = LONGEST_WAIT, signal } = {}) {
    if (!(timeout >= 0)) throw invalid("timeout is in milliseconds, from 0");
    signal?.throwIfAborted();
    if (this.#key) {
      const key = this.#key;
      this.#key = undefined;
      return key;
    }
    let timer, waiter;
    const told = new Promise((resolve, reject) => {
      waiter = { resolve, reject };
      this.#waiting.add(waiter);
      timer = setTimeout(resolve, Math.min(timeout, LONGEST_WAIT), "timeout");
    });
    try {
      this._listenForKeys(waiter);
      return await abortable(told, signal);
    } finally {
      clearTimeout(timer);
      this.#waiting.delete(waiter);
    }
  }

  /** Does what the pad's own key does for those who wait. */
  press(key) {
    if (key !== "confirm" && key !== "cancel") throw invalid('a key is "confirm" or "cancel"');
    this.dispatchEvent(new PadEvent(key));
    this._useKey(key);
  }

  // What follows is for the classes below.

  _listenForKeys() {}

  _useKey(key) {
    if (this.#waiting.size === 0) this.#key = key;
    for (const { resolve } of this.#waiting) resolve(key);
  }

  _failWaiting(error) {
    for (const { reject } of this.#waiting) reject(error);
  }

  _addPoint(x, y, pressure, time, end) {
    this.#points.add(x, y, pressure, time, end);
    const stroke = this.#stroke;
    this.#stroke += end;
    this.dispatchEvent(
      new PadEvent("point", { index: this.count - 1, x, y, pressure, time, stroke, end: end === 1 }),
    );
  }

  _forgetPoints() {
    this.#points = new Points();
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

  // The lines from one point of a stroke to the next, as the library draws them: [x1, y1, x2, y2, width, color]
  // in pixels of the picture.
  *_lines(from = 0) {
    const { left, top, width, height } = this.area;
    const onCanvas = ({ x, y }) => [
      (within(x - left, width) * this.size[0]) / width,
      (within(y - top, height) * this.size[1]) / height,
    ];
    let pen = this.#pens.findLastIndex(({ from: first }) => first <= from);
    let last = from > 0 ? this.#points.at(from - 1) : { end: true };
    for (let index = from; index < this.count; ++index) {
      while (this.#pens[pen + 1]?.from <= index) ++pen;
      const point = this.#points.at(index);
      if (!last.end && !point.end) {
        const { width: wide, color, pressure } = this.#pens[pen];
        yield [
          ...onCanvas(last),
          ...onCanvas(point),
          // the library's pens without a width draw one pixel
          pressure ? point.pressure * pressureScale(this.model, wide, this.pressureLevels) || 1 : wide,
          color,
        ];
      }
      last = point;
    }
  }

  /** Draws what was written from a point on. */
  draw(context, from = 0) {
    context.lineCap = "round";
    for (const [x1, y1, x2, y2, width, color] of this._lines(from)) {
      context.beginPath();
      if (x1 === x2 && y1 === y2) {
        // browsers do not agree on caps of a line without length
        context.fillStyle = color;
        context.arc(x1, y1, width / 2, 0, 2 * Math.PI);
        context.fill();
      } else {
        context.strokeStyle = color;
        context.lineWidth = width;
        context.moveTo(x1, y1);
        context.lineTo(x2, y2);
        context.stroke();
      }
    }
  }
}

// Pad units from an edge of the writing area, which the pen may have left.
const within = (offset, units) => Math.max(0, Math.min(offset, units - 1));

function pressureScale(model, penWidth, levels) {
  return models[model]?.threeAtFull ? (penWidth * 3) / levels : penWidth / 306;
}

// A pad behind the service.
class ServicePad extends Pad {
  #url;
  #WebSocket;
  #connection;
  #asked = new Map(); // requests without an answer, by their id
  #nextId = 0;
  #clears = 0;
  #isAskingForKeys = false;
  #isClosing = false;
  #held; // notifications that wait until there is somebody to hear them
  #error; // why the pad is closed
  token;

  static async open(options) {
    const pad = new ServicePad(options);
    const starting = pad.#start(options);
    try {
      await abortable(starting, options.signal);
    } catch (error) {
      // who gives up leaves no pad open
      starting.then(
        () => pad.close(),
        () => pad.#leave(),
      );
      throw error;
    }
    return pad;
  }

  constructor({ url = SERVICE, webSocket = globalThis.WebSocket }) {
    super();
    if (!webSocket) throw invalid("there is no WebSocket here: give open() a constructor, { webSocket }");
    this.#url = url;
    this.#WebSocket = webSocket;
  }

  async #start({ model, size, token, signal }) {
    this.#held = [];
    await this.#connect(signal);
    const [width, height] = size;
    const kept = token ? { token } : this.#recall(model, size);
    let session;
    if (kept) {
      try {
        session = await this.#ask("resume", { token: kept.token, clears: 0, points: 0 });
        if (kept.pen) this._setPen(kept.pen);
      } catch (error) {
        if (token || error.type !== "unknown-token") throw error;
      }
    }
    this.#adopt(session ?? (await this.#ask("open", { model, width, height })));
    setTimeout(() => this.#release());
  }

  #release() {
    const held = this.#held ?? [];
    this.#held = undefined;
    for (const [method, params] of held) this.#hear(method, params);
  }

  async #connect(signal) {
    const socket = await connect(this.#url, this.#WebSocket, signal);
    const connection = new Connection(socket, (id, result, error) => {
      const { resolve, reject } = this.#asked.get(id) ?? {};
      this.#asked.delete(id);
      if (error) reject?.(error);
      else resolve?.(result);
    });
    connection.onNotification = (method, params) => this.#hear(method, params);
    connection.onEnd = ({ code }) => this.#lost(connection, code);
    this.#connection = connection;
  }

  #ask(method, params, signal) {
    if (this.#error) return Promise.reject(this.#error);
    const id = this.#nextId++;
    const answer = new Promise((resolve, reject) => this.#asked.set(id, { method, params, resolve, reject }));
    this.#connection?.send(id, method, params);
    return abortable(answer, signal);
  }

  #adopt({ token, model, canvas, area, pressureLevels, hasFingerprint, clears }) {
    this.#clears = clears;
    Object.assign(this, { token, model, area, pressureLevels, hasFingerprint });
    this.size = [canvas.width, canvas.height];
    this.#remember();
  }

  #hear(method, params) {
    if (this.#held) {
      this.#held.push([method, params]);
    } else if (method === "points") {
      params.points.slice(Math.max(0, this.count - params.from)).forEach((point) => this._addPoint(...point));
    } else if (method === "key") {
      this.dispatchEvent(new PadEvent(params.key));
    } else if (method === "cleared") {
      this.#clears = params.clears;
      this._forgetPoints();
    } else if (method === "closed" && params.reason !== "service-stops") {
      this.#end(new PadError(params.reason, params.message));
    }
  }

  // The service tells a key to one who asks, and keeps it until then. So it is asked once, and those who wait
  // here are served from the answer; one who gives up leaves the question where it is.
  _listenForKeys() {
    if (this.#error) throw this.#error;
    if (this.#isAskingForKeys) return;
    this.#isAskingForKeys = true;
    this.#ask("wait", { timeout: LONGEST_WAIT })
      .finally(() => (this.#isAskingForKeys = false))
      .then(
        ({ key }) => key !== "timeout" && this._useKey(key),
        (error) => this._failWaiting(error),
      );
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
    if (this.#connection) await this.#ask("close").catch(() => {});
    this.#end(closed(), false);
  }

  // For pages that are loaded again in the middle of a signature.
  #place(model, [width, height]) {
    return `scribera-pad ${this.#url} ${model} ${width}x${height}`;
  }

  #remember() {
    storage()?.setItem(this.#place(this.model, this.size), JSON.stringify({ token: this.token, pen: this._pen }));
  }

  #recall(model, size) {
    return JSON.parse(storage()?.getItem(this.#place(model, size)) ?? "null");
  }

  #leave() {
    const connection = this.#connection;
    this.#connection = undefined;
    connection?.close();
  }

  #end(error, isFailure = true) {
    if (this.#error) return;
    this.#error = error;
    if (this.token) storage()?.removeItem(this.#place(this.model, this.size));
    this.#leave();
    for (const { reject } of this.#asked.values()) reject(error);
    this.#asked.clear();
    this._failWaiting(error);
    if (isFailure) this.dispatchEvent(new PadEvent("error", { error }));
    this._setState("closed");
  }

  #lost(connection, code) {
    if (connection !== this.#connection) return;
    this.#connection = undefined;
    if (code === 1003 || code === 1008 || code === 1009)
      this.#end(new PadError("protocol-error", `the service ended the connection with code ${code}`));
    else if (this.#isClosing) this.#end(closed(), false);
    else if (!this.token)
      this.#end(new PadError("no-service", "the service ended the connection before the pad was open"), false);
    else this.#reconnect();
  }

  async #reconnect() {
    this._setState("reconnecting");
    const waiting = [...this.#asked];
    this.#asked.clear();
    const end = Date.now() + KEPT_FOR;
    for (let pause = 50; !this.#error; pause = Math.min(2 * pause, 1000)) {
      try {
        await this.#connect();
        this.#held = [];
        await this.#resume(waiting);
        this._setState("open");
        return;
      } catch (error) {
        this.#leave();
        if (Date.now() + pause > end) {
          for (const [id, request] of waiting) this.#asked.set(id, request);
          this.#end(error);
          return;
        }
      }
      await sleep(pause);
    }
    for (const [, { reject }] of waiting) reject(this.#error);
  }

  // Goes on with the session, or where the service has lost it with a new one: the signature is begun again.
  async #resume(waiting) {
    let session;
    let lost;
    try {
      session = await this.#ask("resume", { token: this.token, clears: this.#clears, points: this.count });
    } catch (error) {
      if (error.type !== "unknown-token") throw error;
      const [width, height] = this.size;
      session = await this.#ask("open", { model: this.model, width, height });
      await this.#ask("pen", this._pen);
      lost = new PadError(
        "session-lost",
        "the service was started again and has lost the signature: it has to be written again",
      );
    }
    const wasCleared = !lost && session.clears !== this.#clears;
    this.#adopt(session);
    if (lost) this.dispatchEvent(new PadEvent("error", { error: lost, points: this.points() }));
    if (lost || wasCleared) this._forgetPoints();
    for (const [id, request] of waiting) {
      const { method, params, resolve, reject } = request;
      if (method === "clear" && (lost || wasCleared)) resolve({});
      else if (lost && method !== "wait" && method !== "pen") reject(lost);
      else {
        this.#asked.set(id, request);
        this.#connection.send(id, method, params);
      }
    }
    this.#release();
  }
}

function storage() {
  try {
    return globalThis.sessionStorage;
  } catch {
    return undefined; // the user keeps pages from storing
  }
}

// The page itself as pad: mouse, finger or stylus on an element.
class PagePad extends Pad {
  #surface;
  #pointer; // that writes
  #isClosed = false;
  #listening = new AbortController();
  /** Why no pad is used, where one was asked for. */
  reason;

  constructor(model, size, surface, reason) {
    super();
    if (!surface?.getBoundingClientRect) throw invalid("signing on the page needs a surface: an element");
    const { left, top, width, height, levels } = models[model];
    Object.assign(this, { model, size, reason, area: { left, top, width, height }, pressureLevels: levels });
    this.#surface = surface;
    const { signal } = this.#listening;
    const on = (type, listener) => surface.addEventListener(type, listener, { signal });
    on("pointerdown", (event) => this.#down(event));
    on("pointermove", (event) => this.#move(event));
    on("pointerup", (event) => this.#up(event));
    on("pointercancel", (event) => this.#up(event));
    on("touchstart", (event) => event.preventDefault());
  }

  #down(event) {
    if (this.#pointer !== undefined || event.button !== 0) return;
    event.preventDefault();
    this.#pointer = event.pointerId;
    this.#surface.setPointerCapture(event.pointerId);
    this.#write(event);
  }

  #move(event) {
    if (event.pointerId !== this.#pointer) return;
    const joined = event.getCoalescedEvents?.() ?? [];
    for (const each of joined.length ? joined : [event]) this.#write(each);
  }

  #up(event) {
    if (event.pointerId !== this.#pointer) return;
    this.#pointer = undefined;
    if (this.count === 0) return; // cleared under the pen
    const { x, y, pressure, end } = this.points(this.count - 1)[0];
    if (!end) this._addPoint(x, y, pressure, this.#timeOf(event), 1);
  }

  #timeOf({ timeStamp }) {
    const last = this.count ? this.points(this.count - 1)[0].time : 0;
    return Math.max(last, Math.floor(performance.timeOrigin + timeStamp));
  }

  #write(event) {
    const { left, top, width, height } = this.#surface.getBoundingClientRect();
    const { area } = this;
    // the pad unit that lies nearest to the pixel
    const nearest = (offset, side, units) => within(Math.round((offset / side) * units), units);
    this._addPoint(
      area.left + nearest(event.clientX - left, width, area.width),
      area.top + nearest(event.clientY - top, height, area.height),
      this.#pressureOf(event),
      this.#timeOf(event),
      0,
    );
  }

  // Only a stylus tells how hard it is pressed; others draw as wide as the pen is set.
  #pressureOf({ pointerType, pressure }) {
    const part = pointerType === "pen" ? pressure * this.pressureLevels : 1 / pressureScale(this.model, 1, this.pressureLevels);
    return Math.max(1, Math.min(Math.round(part), this.pressureLevels));
  }

  #check() {
    if (this.#isClosed) throw closed();
  }

  #checkInk() {
    this.#check();
    if (this.count === 0) throw new PadError("no-ink", "nobody has signed");
  }

  _listenForKeys() {
    this.#check();
  }

  async clear() {
    this.#check();
    this._forgetPoints();
  }

  async pen(pen) {
    this.#check();
    const { width = 1, color = "#000000" } = pen;
    if (!Number.isInteger(width) || width < 1 || width > 10) throw invalid("width is a number from 1 to 10");
    if (!/^#[0-9a-f]{6}$/i.test(color)) throw invalid('color is "#rrggbb"');
    this._setPen(given({ width: pen.width, color: pen.color, pressure: pen.pressure }));
  }

  async image(format = "png", { dpi = 300, clip, transparent = false } = {}) {
    this.#checkInk();
    if (!Object.hasOwn(FORMATS, format)) throw invalid(`no format ${format}: it is one of ${Object.keys(FORMATS).join(", ")}`);
    if (dpi !== 150 && dpi !== 300) throw invalid("dpi is 150 or 300");
    if (format === "pdf")
      throw new PadError("no-format", "a signature on the page is not made into PDF: ask for png, jpeg or bmp");
    const canvas = this.#picture(clip);
    const dotsPerMetre = Math.floor(dpi / 0.0254);
    if (format === "bmp") return bitmap(canvas, dotsPerMetre);
    if (format === "png" && transparent) withoutWhite(canvas);
    const blob = await new Promise((resolve) => canvas.toBlob(resolve, FORMATS[format], 0.75));
    if (blob?.type !== FORMATS[format]) throw new PadError("no-format", `this browser does not make ${format}`);
    const bytes = new Uint8Array(await blob.arrayBuffer());
    return new Blob(format === "png" ? pngWith(bytes, dotsPerMetre) : jpegWith(bytes, dpi), { type: blob.type });
  }

  async svg({ clip } = {}) {
    this.#checkInk();
    const [left, top, width, height] = clip ? inkedPart(this.#picture(), clip) : [0, 0, ...this.size];
    const lines = Array.from(
      this._lines(),
      ([x1, y1, x2, y2, wide, color]) =>
        `<line x1="${x1 - left}" y1="${y1 - top}" x2="${x2 - left}" y2="${y2 - top}" stroke="${color}" ` +
        `stroke-width="${wide}"/>`,
    );
    return (
      `<svg xmlns="http://www.w3.org/2000/svg" width="${width}" height="${height}" ` +
      `viewBox="0 0 ${width} ${height}" stroke-linecap="round">\n${lines.join("\n")}\n</svg>\n`
    );
  }

  async ink() {
    this.#checkInk();
    const size = 24;
    const records = new DataView(new ArrayBuffer(size * this.count + 1));
    this.points().forEach(({ x, y, pressure, time, end }, index) => {
      const at = size * index;
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
    this.#check();
    return { pad: null, pen: null, version: null };
  }

  async fingerprint() {
    this.#check();
    throw new PadError("no-fingerprint", "there is no fingerprint reader on the page");
  }

  async close() {
    if (this.#isClosed) return;
    this.#isClosed = true;
    this.#listening.abort();
    this._failWaiting(closed());
    this._setState("closed");
  }

  #picture(clip) {
    if (!globalThis.document) throw new PadError("no-format", "pictures need a browser");
    const canvas = newCanvas(...this.size);
    const context = canvas.getContext("2d", { willReadFrequently: true });
    context.fillStyle = "#ffffff";
    context.fillRect(0, 0, ...this.size);
    this.draw(context);
    if (!clip) return canvas;
    const [left, top, width, height] = inkedPart(canvas, clip);
    const part = newCanvas(width, height);
    part.getContext("2d", { willReadFrequently: true }).drawImage(canvas, -left, -top);
    return part;
  }
}

function newCanvas(width, height) {
  return Object.assign(document.createElement("canvas"), { width, height });
}

const pixelsOf = (canvas) => canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);

// What is not white, and the margins around it.
function inkedPart(canvas, [marginX, marginY]) {
  const { width, height } = canvas;
  const isMargin = (margin) => Number.isInteger(margin) && margin >= 0 && margin <= 4096;
  if (!isMargin(marginX) || !isMargin(marginY) || marginX + marginY === 0)
    throw invalid("clip is [x, y], margins in pixels from 0 to 4096, not both 0");
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
  if (right < 0) return [0, 0, width, height];
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

function crc32(bytes) {
  let crc = -1;
  for (const byte of bytes) {
    crc ^= byte;
    for (let bit = 0; bit < 8; ++bit) crc = (crc >>> 1) ^ (crc & 1 && 0xedb88320);
  }
  return ~crc;
}

// PNG keeps the resolution in a chunk of its own, between the header, which ends at 33, and the picture.
function pngWith(bytes, dotsPerMetre) {
  const chunk = new DataView(new ArrayBuffer(21));
  chunk.setUint32(0, 9);
  chunk.setUint32(4, 0x70485973); // pHYs
  chunk.setUint32(8, dotsPerMetre);
  chunk.setUint32(12, dotsPerMetre);
  chunk.setUint8(16, 1); // a metre
  chunk.setUint32(17, crc32(new Uint8Array(chunk.buffer, 4, 13)));
  return [bytes.subarray(0, 33), chunk, bytes.subarray(33)];
}

// JPEG keeps it in the JFIF segment, with which browsers begin.
function jpegWith(bytes, dpi) {
  if (String.fromCharCode(...bytes.subarray(6, 10)) === "JFIF") {
    const header = new DataView(bytes.buffer);
    header.setUint8(13, 1); // an inch
    header.setUint16(14, dpi);
    header.setUint16(16, dpi);
  }
  return [bytes];
}

// 24 bits a pixel, bottom line first, each line filled up to four bytes.
function bitmap(canvas, dotsPerMetre) {
  const { data, width, height } = pixelsOf(canvas);
  const line = Math.ceil((width * 3) / 4) * 4;
  const file = new DataView(new ArrayBuffer(54 + line * height));
  file.setUint16(0, 0x424d); // BM
  [file.byteLength, 0, 54, 40, width, height, 1 | (24 << 16), 0, line * height, dotsPerMetre, dotsPerMetre].forEach(
    (value, index) => file.setUint32(2 + 4 * index, value, true),
  );
  for (let y = 0; y < height; ++y)
    for (let x = 0; x < width; ++x)
      for (let channel = 0; channel < 3; ++channel)
        file.setUint8(54 + (height - 1 - y) * line + 3 * x + channel, data[4 * (y * width + x) + 2 - channel]);
  return new Blob([file], { type: FORMATS.bmp });
}

const TEXTS = {
  signature: "Signature",
  connecting: "Looking for the pad.",
  pad: "Please sign on the pad.",
  page: "Please sign here.",
  signed: "Signed. Confirm to finish.",
  confirmed: "The signature is confirmed.",
  reconnecting: "The connection to the pad is lost. Trying again.",
  missing: "Please sign and confirm.",
  confirm: "Confirm",
  clear: "Clear",
  cancel: "Cancel",
};

const STYLE = `
:host { display: inline-block; max-width: 100%; color: var(--scribera-pad-color, #1d2733); font: inherit }
:host([hidden]) { display: none }
canvas { display: block; box-sizing: border-box; width: 100%; touch-action: none; user-select: none;
  background: var(--scribera-pad-background, #fff); outline: var(--scribera-pad-border, 1px solid #8794a3);
  border-radius: var(--scribera-pad-radius, 4px) }
:host(:invalid) canvas { outline: var(--scribera-pad-border-invalid, var(--scribera-pad-border, 1px solid #8794a3)) }
:host(:disabled) { opacity: 0.5 }
[part=controls] { display: flex; flex-wrap: wrap; align-items: center; gap: 0.5em; margin-top: 0.5em }
[part=status] { flex: 1 1 12em; margin: 0 }
button { font: inherit }`;

/** The element <scribera-pad>; see README.md. */
export class ScriberaPadElement extends (globalThis.HTMLElement ?? Object) {
  static formAssociated = true;
  static observedAttributes = ["required", "pen-width", "pen-color", "width", "height"];
  /** The words that it shows and says, for pages in other languages. */
  static texts = TEXTS;

  #internals = this.attachInternals();
  #canvas = document.createElement("canvas");
  #status = document.createElement("p");
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
    const style = new CSSStyleSheet();
    style.replaceSync(STYLE);
    root.adoptedStyleSheets = [style];
    const controls = document.createElement("div");
    this.#canvas.part = "surface";
    this.#canvas.setAttribute("role", "img");
    this.#status.part = "status";
    this.#status.setAttribute("role", "status");
    controls.part = "controls";
    controls.append(this.#status);
    for (const name of ["confirm", "clear", "cancel"]) {
      const button = document.createElement("button");
      Object.assign(button, { type: "button", part: `button ${name}`, textContent: this.#text(name) });
      button.addEventListener("click", () => this[name]());
      this.#buttons[name] = button;
      controls.append(button);
    }
    root.append(this.#canvas, controls);
    this.#internals.role = "group";
    new ResizeObserver(() => this.#redraw()).observe(this.#canvas);
    this.#show("connecting");
  }

  connectedCallback() {
    for (const name of ["pad", "value"])
      if (Object.hasOwn(this, name)) delete this[name]; // set before the element was defined
    this.#internals.ariaLabel = this.getAttribute("aria-label") ?? this.#text("signature");
    this.#fit();
    this.#judge();
    if (!this.hasAttribute("manual")) this.open().catch(() => {}); // the event has told
  }

  disconnectedCallback() {
    // a move within the page ends in it
    queueMicrotask(() => this.isConnected || this.close());
  }

  attributeChangedCallback(name) {
    if (name === "required") this.#judge();
    else if (name.startsWith("pen-")) this.#setPen()?.catch((error) => this.#fail(error));
    else this.#fit();
  }

  formDisabledCallback(isDisabled) {
    this.#isDisabled = isDisabled;
    this.#judge();
    if (isDisabled) this.close();
    else if (this.isConnected && !this.hasAttribute("manual")) this.open().catch(() => {});
  }

  formResetCallback() {
    this.clear();
  }

  get form() {
    return this.#internals.form;
  }
  get validity() {
    return this.#internals.validity;
  }
  get validationMessage() {
    return this.#internals.validationMessage;
  }
  get willValidate() {
    return this.#internals.willValidate;
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
  get type() {
    return "scribera-pad";
  }

  /** The pad, once it is open. */
  get pad() {
    return this.#pad;
  }

  /** What the form sends: a File with a PNG, or with value-type="ink" the ink text; null until confirmed. */
  get value() {
    return this.#value;
  }

  async open() {
    if (this.#opening || this.#isDisabled) return;
    const opening = (this.#opening = new AbortController());
    this.#show("connecting");
    try {
      const pad = await Pad.open({
        model: this.getAttribute("model"),
        size: this.#size(),
        url: this.getAttribute("url") ?? undefined,
        source: this.getAttribute("source") ?? "auto",
        surface: this.#canvas,
        signal: opening.signal,
      });
      if (opening.signal.aborted) return await pad.close();
      this.#pad = pad;
      pad.addEventListener("point", ({ index }) => this.#written(index));
      pad.addEventListener("clear", () => this.#forget());
      pad.addEventListener("error", ({ error }) => this.#fail(error));
      pad.addEventListener("statechange", () =>
        this.#show(pad.state === "open" ? this.#prompt() : pad.state === "reconnecting" ? pad.state : undefined),
      );
      await this.#setPen();
      this.#show(this.#prompt());
      this.#obey(pad);
    } catch (error) {
      if (opening.signal.aborted) return;
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
    if (this.#pad?.count) this.#pad.press("confirm");
  }

  cancel() {
    this.#pad?.press("cancel");
  }

  async clear() {
    this.#forget();
    if (this.#pad?.state === "closed") await this.close();
    if (this.#pad) await this.#pad.clear().catch((error) => this.#fail(error));
    else if (this.isConnected) await this.open().catch(() => {});
  }

  async #obey(pad) {
    try {
      while (pad === this.#pad) {
        const key = await pad.wait();
        if (key === "confirm" && pad.count) await this.#confirmed(pad);
        if (key === "cancel") {
          await pad.clear();
          this.dispatchEvent(new Event("cancel", { bubbles: true }));
        }
      }
    } catch (error) {
      if (pad === this.#pad && pad.state !== "closed") this.#fail(error); // a closed one has told
    }
  }

  async #confirmed(pad) {
    const { count } = pad;
    const clip = this.getAttribute("clip")?.split(/[ ,]+/).map(Number);
    const isInk = this.getAttribute("value-type") === "ink";
    const value = isInk
      ? await pad.ink()
      : await pad.image("png", {
          dpi: Number(this.getAttribute("dpi") ?? 300),
          clip: clip?.length === 1 ? [clip[0], clip[0]] : clip,
          transparent: this.hasAttribute("transparent"),
        });
    if (pad.count !== count) return; // written on meanwhile: to be confirmed anew
    this.#value = isInk ? value : new File([value], `${this.name || "signature"}.png`, { type: value.type });
    this.#judge();
    this.#show("confirmed");
    this.dispatchEvent(new Event("confirm", { bubbles: true }));
  }

  #written(index) {
    this.#value = null;
    this.#frame ??= requestAnimationFrame(() => this.#draw());
    if (index > 0) return;
    this.#judge();
    this.#show("signed");
    this.dispatchEvent(new Event("sign", { bubbles: true }));
  }

  #forget() {
    this.#value = null;
    this.#redraw();
    this.#judge();
    if (this.#pad) this.#show(this.#prompt());
  }

  #fail(error) {
    this.#show(undefined, error.message);
    this.dispatchEvent(new PadEvent("error", { error }));
  }

  #setPen() {
    const width = this.getAttribute("pen-width");
    const color = this.getAttribute("pen-color") ?? undefined;
    if (width !== null || color) return this.#pad?.pen(given({ width: width === null ? undefined : +width, color }));
  }

  #size() {
    return [Number(this.getAttribute("width") ?? 800), Number(this.getAttribute("height") ?? 400)];
  }

  #fit() {
    const [width, height] = this.#size();
    this.style.width ||= `${width}px`;
    this.#canvas.style.aspectRatio = `${width} / ${height}`;
  }

  #draw() {
    this.#frame = undefined;
    if (!this.#pad?.size) return;
    const context = this.#canvas.getContext("2d");
    const [width, height] = this.#pad.size;
    context.setTransform(this.#canvas.width / width, 0, 0, this.#canvas.height / height, 0, 0);
    this.#pad.draw(context, this.#drawn);
    this.#drawn = this.#pad.count;
  }

  // As many pixels as the screen has there.
  #redraw() {
    const { width, height } = this.#canvas.getBoundingClientRect();
    this.#canvas.width = Math.round(width * devicePixelRatio);
    this.#canvas.height = Math.round(height * devicePixelRatio);
    this.#drawn = 0;
    this.#draw();
  }

  #judge() {
    this.#internals.setFormValue(this.#value);
    const isMissing = this.hasAttribute("required") && this.#value === null;
    this.#internals.setValidity(
      { valueMissing: isMissing },
      isMissing ? this.#text("missing") : "",
      this.#buttons.confirm,
    );
  }

  #prompt() {
    if (this.#value !== null) return "confirmed";
    return this.#pad.count ? "signed" : this.#pad instanceof PagePad ? "page" : "pad";
  }

  #show(name, message = name && this.#text(name)) {
    if (message) this.#status.textContent = message;
    this.#canvas.setAttribute("aria-label", `${this.#text("signature")}: ${this.#status.textContent}`);
    this.#buttons.confirm.disabled = this.#buttons.cancel.disabled = !this.#pad?.count;
    this.#buttons.clear.disabled = this.#isDisabled;
  }

  #text(name) {
    return this.constructor.texts[name] ?? TEXTS[name];
  }
}

globalThis.customElements?.define("scribera-pad", ScriberaPadElement);
