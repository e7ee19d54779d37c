export type Model = "K210" | "K420" | "K421B" | "KM730" | "T580";
export type Key = "confirm" | "cancel";
export type PictureFormat = "png" | "jpeg" | "bmp" | "pdf";

export type PadErrorType =
  // of this package
  | "invalid-argument"
  | "no-service"
  | "refused"
  | "permission-missing"
  | "blocked-by-csp"
  | "session-lost"
  | "protocol-error"
  | "no-format"
  | "closed"
  // of the service
  | "no-session"
  | "session-open"
  | "pad-busy"
  | "pad-not-opened"
  | "pad-lost"
  | "worker-failed"
  | "unknown-token"
  | "no-ink"
  | "no-fingerprint"
  | "waiting"
  | "failed"
  | "taken-over"
  | "open-too-long";

/** Why something was not done: `type` for programs, `message` for people. */
export class PadError extends Error {
  constructor(type: PadErrorType, message: string, options?: { cause?: unknown });
  readonly type: PadErrorType;
}

/**
 * Position and pressure as the pad counts them, milliseconds since 1970, whether it is the first of a stroke, and
 * whether the pen left the pad: a stroke that a key of the pad has ended has no such point.
 */
export interface Point {
  x: number;
  y: number;
  pressure: number;
  time: number;
  begin: boolean;
  end: boolean;
}

export class PadEvent extends Event {}

export interface PointEvent extends PadEvent, Readonly<Point> {
  /** From 0. */
  readonly index: number;
  /** Which stroke it belongs to, from 0. */
  readonly stroke: number;
}

export interface PadErrorEvent extends PadEvent {
  readonly error: PadError;
  /** With "session-lost": what was written before. */
  readonly points?: Point[];
}

export interface PadEventMap {
  point: PointEvent;
  clear: PadEvent;
  confirm: PadEvent;
  cancel: PadEvent;
  error: PadErrorEvent;
  statechange: PadEvent;
}

/** A WebSocket class: the browser's, or that of the package ws. */
export type WebSocketConstructor = new (url: string, protocols: string[]) => object;

export interface OpenOptions {
  /** Not needed with a token. */
  model?: Model;
  /** Width and height of the picture in pixels, each from 1 to 4096. Default [800, 400]. */
  size?: [number, number];
  /** Address of the service. Default "ws://127.0.0.1:17283/pad". */
  url?: string;
  /** Of an open session that is to be taken over. */
  token?: string;
  /** Gives up opening. */
  signal?: AbortSignal;
  /** For programs without a global WebSocket. */
  webSocket?: WebSocketConstructor;
  /** An element to sign on where there is no service. */
  surface?: Element;
  /** "pad", "page", or "auto": the pad, or where there is no service the page. Default "auto" with a surface. */
  source?: "auto" | "pad" | "page";
}

export interface PictureOptions {
  /** Default 300. */
  dpi?: 150 | 300;
  /** Cuts the picture to the ink and these margins in pixels, left and right, above and below. */
  clip?: [number, number];
  /** Makes white transparent, in PNG alone. */
  transparent?: boolean;
  signal?: AbortSignal;
}

export interface Pen {
  /** 1 to 10. */
  width?: number;
  /** "#rrggbb". */
  color?: string;
  /** Whether pressure makes the width. */
  pressure?: boolean;
}

/** A pad that is open. */
export abstract class Pad extends EventTarget {
  static open(options: OpenOptions): Promise<Pad>;

  readonly model: Model;
  /** Width and height of the picture in pixels. */
  readonly size: [number, number];
  /** The writing area in pad units. */
  readonly area: { left: number; top: number; width: number; height: number };
  readonly pressureLevels: number;
  readonly hasFingerprint: boolean;
  readonly state: "open" | "reconnecting" | "closed";
  /** Takes the session over elsewhere; undefined for a signature on the page. */
  readonly token?: string;
  /** For a signature on the page: why no pad is used. */
  readonly reason?: PadError;
  /** How many points there are. */
  readonly count: number;

  points(from?: number, count?: number): Point[];
  /** Until a key is used, or the time in milliseconds is over; at most an hour. */
  wait(options?: { timeout?: number; signal?: AbortSignal }): Promise<Key | "timeout">;
  /** Does what the pad's own key does for those who wait. */
  press(key: Key): void;
  clear(): Promise<void>;
  /** Holds for what is written later. */
  pen(pen: Pen): Promise<void>;
  image(format?: PictureFormat, options?: PictureOptions): Promise<Blob>;
  svg(options?: { clip?: [number, number]; signal?: AbortSignal }): Promise<string>;
  /** The points as text: Base64 of the library's records. */
  ink(options?: { signal?: AbortSignal }): Promise<string>;
  device(options?: {
    signal?: AbortSignal;
  }): Promise<{ pad: string | null; pen: string | null; version: string | null }>;
  fingerprint(format?: "png" | "jpeg" | "bmp", options?: { signal?: AbortSignal }): Promise<Blob>;
  /** Draws what was written from a point on, in pixels of the picture. */
  draw(context: CanvasRenderingContext2D, from?: number): void;
  close(): Promise<void>;

  addEventListener<T extends keyof PadEventMap>(
    type: T,
    listener: (event: PadEventMap[T]) => void,
    options?: boolean | AddEventListenerOptions,
  ): void;
  addEventListener(
    type: string,
    listener: EventListenerOrEventListenerObject | null,
    options?: boolean | AddEventListenerOptions,
  ): void;
}

export interface ModelData {
  left: number;
  top: number;
  width: number;
  height: number;
  /** Highest pressure. */
  levels: number;
  /** Whether that draws three pen widths; else a pressure of 306 draws one. */
  threeAtFull?: boolean;
}

export const models: Readonly<Record<Model, ModelData>>;

/** <scribera-pad> */
export class ScriberaPadElement extends HTMLElement {
  static readonly formAssociated: true;
  /** The words that it shows and says. */
  static texts: Record<string, string>;
  readonly form: HTMLFormElement | null;
  readonly name: string;
  readonly validity: ValidityState;
  readonly validationMessage: string;
  readonly willValidate: boolean;
  checkValidity(): boolean;
  reportValidity(): boolean;
  /** The pad, once it is open. */
  readonly pad: Pad | undefined;
  /** What the form sends, a PNG or the ink text; null until the signature is confirmed. */
  readonly value: File | string | null;
  open(): Promise<void>;
  close(): Promise<void>;
  confirm(): void;
  cancel(): void;
  clear(): Promise<void>;
}

declare global {
  interface HTMLElementTagNameMap {
    "scribera-pad": ScriberaPadElement;
  }
}
