// Keeps the lines of the terminal pane.

export interface Line {
  id: number;
  text: string;
  style: string;
  isProgress: boolean;
}

export interface Incoming {
  text: string;
  /** Class of the line: letters, digits and hyphens, "system-line" if empty. */
  style?: string;
  /**
   * The tool ended the line with a carriage return, alone or before a line feed, so it may redraw the
   * previous line.
   */
  isProgress?: boolean;
}

const maxLines = 2000;

const spinner = /^\s*[-\\|/]\s*$/;
const redrawLooks = [
  /[█▉▊▋▌▍▎▏▒░■]/, // progress bar
  spinner,
  /\d+([.,]\d+)?\s*%/,
  /\d+([.,]\d+)?\s*[kKMGT]?i?B\s*\/\s*\d+([.,]\d+)?\s*[kKMGT]?i?B/, // 12.0 MB / 80.1 MB
];

/** Returns the part of a line that a console would show despite carriage returns: the one written last. */
const afterRedraws = (text: string) => text.split('\r').findLast((part) => part.trim() !== '') ?? text;

function looksLikeRedraw(text: string): boolean {
  return redrawLooks.some((look) => look.test(text));
}

/**
 * Appends lines and drops the oldest beyond the limit. A progress line replaces the previous one only if
 * both look like a redraw: tools also end ordinary lines with CR LF, so those are marked as progress, too.
 * Any next line replaces a spinner.
 */
export function appendLines(lines: readonly Line[], incoming: readonly Incoming[]): Line[] {
  const next = lines.slice();
  for (const { text: printed, style = '', isProgress = false } of incoming) {
    const text = afterRedraws(printed);
    const before = next.at(-1);
    const replaces =
      before?.isProgress &&
      (spinner.test(before.text) || (isProgress && looksLikeRedraw(text) && looksLikeRedraw(before.text)));
    const id = replaces ? before.id : (before?.id ?? 0) + 1;
    if (replaces) next.pop();
    next.push({ id, text, style: /^[\w-]+$/.test(style) ? style : 'system-line', isProgress });
  }
  return next.slice(-maxLines);
}

const unitBytes: Record<string, number> = { B: 1, KB: 2 ** 10, MB: 2 ** 20, GB: 2 ** 30, TB: 2 ** 40 };

/** Reads 0 to 100 from a progress line: "40%", or "30.1 MB / 63.0 MB". */
export function percentOf(text: string): number | undefined {
  if (!looksLikeRedraw(text)) return undefined;
  const percent = /(\d+(?:[.,]\d+)?)\s*%/.exec(text)?.[1];
  const sizes = /(\d+(?:[.,]\d+)?)\s*([KMGT]?B)\s*\/\s*(\d+(?:[.,]\d+)?)\s*([KMGT]?B)/i.exec(text);
  const number = (figure = '') => Number(figure.replace(',', '.'));
  const bytes = (figure = '', unit = '') => number(figure) * (unitBytes[unit.toUpperCase()] ?? 1);
  const share =
    percent !== undefined
      ? number(percent)
      : sizes
        ? (100 * bytes(sizes[1], sizes[2])) / bytes(sizes[3], sizes[4])
        : NaN;
  return Number.isFinite(share) ? Math.min(100, share) : undefined;
}
