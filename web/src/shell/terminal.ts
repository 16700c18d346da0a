import { appendLines, type Incoming, type Line } from '../base/lines.ts';
import { createStore } from '../base/store.ts';
import { host } from '../bridge/host.ts';

interface TerminalState {
  lines: readonly Line[];
  open: boolean;
  /** The pane is open and scrolled to its end, so the newest line is visible. */
  atEnd: boolean;
  /** Lines that arrived while it was not. */
  unseen: number;
}

export const terminal = createStore<TerminalState>({ lines: [], open: false, atEnd: false, unseen: 0 });

// Tools print in bursts, so the lines of one frame are drawn together.
let waiting: Incoming[] = [];

function printLine(line: Incoming) {
  if (waiting.push(line) > 1) return;
  setTimeout(() => {
    const before = terminal.get();
    const lines = appendLines(before.lines, waiting);
    const added = (lines.at(-1)?.id ?? 0) - (before.lines.at(-1)?.id ?? 0);
    waiting = [];
    terminal.set({ ...before, lines, unseen: before.atEnd ? 0 : before.unseen + added });
  }, 16);
}

export function openTerminal(open: boolean) {
  terminal.set({ ...terminal.get(), open, atEnd: open, unseen: 0 });
}

/** Called when the pane was scrolled to its end or away from it. */
export function scrolledTerminal(atEnd: boolean) {
  const before = terminal.get();
  if (before.atEnd !== atEnd) terminal.set({ ...before, atEnd, unseen: atEnd ? 0 : before.unseen });
}

export function clearTerminal() {
  terminal.set({ ...terminal.get(), lines: [], atEnd: true, unseen: 0 });
}

export function startTerminal() {
  host.on('console_log', ({ message, style }) => printLine({ text: message, style }));
}
