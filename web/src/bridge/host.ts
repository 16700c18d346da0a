import { Bridge, type WebView } from './bridge.ts';

declare global {
  var chrome: { webview?: WebView } | undefined;
}

/** The only connection to the program around the page. */
export const host = new Bridge(globalThis.chrome?.webview);
