import { Bridge, type WebView } from './bridge.ts';

declare global {
  interface Window {
    chrome?: { webview?: WebView };
  }
}

/** The one line to the program around the page. */
export const host = new Bridge(window.chrome?.webview);
