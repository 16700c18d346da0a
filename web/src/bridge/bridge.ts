import { isRecord } from '../base/shape.ts';
import {
  messages,
  replies,
  unnumbered,
  type Action,
  type Message,
  type MessageType,
  type Reply,
  type RequestData,
  type StreamData,
} from './protocol.ts';

/** The browser control's side of the connection: texts go out, parsed JSON comes in. */
export interface WebView {
  postMessage(text: string): void;
  addEventListener(type: 'message', listener: (event: { data: unknown }) => void): void;
}

/**
 * The reason why a request failed: no host, no answer in time, an answer of the wrong shape, or a refusal
 * by the host.
 */
export type FailureKind = 'absent' | 'timeout' | 'malformed' | 'refused';

export class BridgeError extends Error {
  constructor(
    readonly kind: FailureKind,
    /** The host's own words, if it gave any. */
    readonly reason = '',
  ) {
    super(`${kind}: ${reason}`);
  }
}

/** The action's data, required if the action reads any. */
export type RequestArgs<A extends Action> = A extends keyof RequestData
  ? [data: RequestData[A]]
  : [data?: undefined];

interface Pending {
  type: MessageType;
  resolve(message: never): void;
  reject(error: BridgeError): void;
  timer: ReturnType<typeof setTimeout>;
}

export class Bridge {
  #webView: WebView | undefined;
  #lastId = 0;
  #pending = new Map<number, Pending>();
  #listeners = new Map<string, Set<(message: never) => void>>();

  constructor(webView: WebView | undefined) {
    this.#webView = webView;
    webView?.addEventListener('message', (event) => this.#receive(event.data));
  }

  /** Sends a request and waits for the answer with the same `requestId`. Rejects with a BridgeError. */
  request<A extends Action>(action: A, ...[data]: RequestArgs<A>): Promise<Reply<A>> {
    return this.#ask(action, { data: data ?? {} });
  }

  /**
   * Starts an action that answers with stream messages: call `on` for them first. Returns the `requestId`
   * that they carry, or 0 for actions sent without one.
   */
  start<A extends keyof StreamData>(action: A, data: StreamData[A]): number {
    if (!this.#webView) throw new BridgeError('absent');
    const requestId = unnumbered.has(action) ? 0 : ++this.#lastId;
    this.#webView.postMessage(JSON.stringify({ action, ...(requestId && { requestId }), data }));
    return requestId;
  }

  /**
   * Opens an address with the system's default program. The host reads `url` beside `action`, not inside
   * `data`.
   */
  openUrl(url: string): Promise<Reply<'openUrl'>> {
    return this.#ask('openUrl', { url, data: {} });
  }

  /** Listens to every message of one type, including replies. Returns a function that stops listening. */
  on<T extends MessageType>(type: T, listener: (message: Message<T>) => void): () => void {
    const listeners = this.#listeners.get(type) ?? new Set();
    this.#listeners.set(type, listeners.add(listener));
    return () => listeners.delete(listener);
  }

  #ask<A extends Action>(action: A, members: Record<string, unknown>): Promise<Reply<A>> {
    const webView = this.#webView;
    if (!webView) return Promise.reject(new BridgeError('absent'));
    const requestId = ++this.#lastId;
    const [type, waitSeconds] = replies[action];
    return new Promise((resolve, reject) => {
      const timer = setTimeout(
        () => this.#take(requestId)?.reject(new BridgeError('timeout')),
        waitSeconds * 1000,
      );
      this.#pending.set(requestId, { type, resolve, reject, timer });
      webView.postMessage(JSON.stringify({ action, requestId, ...members }));
    });
  }

  #take(requestId: unknown): Pending | undefined {
    const pending = this.#pending.get(requestId as number);
    if (pending) {
      clearTimeout(pending.timer);
      this.#pending.delete(requestId as number);
    }
    return pending;
  }

  #receive(message: unknown) {
    if (!isRecord(message)) return;
    const type = String(message.type);
    const fits = Object.hasOwn(messages, type) && messages[type as MessageType](message as unknown);

    const pending = this.#take(message.requestId);
    if (pending) {
      if (message.success !== true) {
        const reason = [message.message, message.error].find(
          (word) => typeof word === 'string' && word !== '',
        );
        pending.reject(new BridgeError('refused', reason as string | undefined));
      } else if (fits && type === pending.type) {
        pending.resolve(message as never);
      } else {
        pending.reject(new BridgeError('malformed', type));
      }
    }
    if (fits) for (const listener of [...(this.#listeners.get(type) ?? [])]) listener(message as never);
  }
}
