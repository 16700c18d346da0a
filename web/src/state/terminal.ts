import { host } from '../bridge/host.ts';
import { createStore } from '../lib/store.ts';
import { appendLines, type Incoming, type Line } from '../lib/terminal.ts';

export const terminal = createStore<{ lines: readonly Line[]; open: boolean; unseen: number }>({
  lines: [],
  open: false,
  unseen: 0,
});

// Tools print in bursts: what arrives within one frame is drawn together.
let waiting: Incoming[] = [];

export function printLine(line: Incoming) {
  if (waiting.push(line) > 1) return;
  setTimeout(() => {
    const { lines, open, unseen } = terminal.get();
    const next = appendLines(lines, waiting);
    const added = (next.at(-1)?.id ?? 0) - (lines.at(-1)?.id ?? 0);
    waiting = [];
    terminal.set({ open, lines: next, unseen: open ? 0 : unseen + added });
  }, 16);
}

export function openTerminal(open: boolean) {
  terminal.set({ ...terminal.get(), open, unseen: 0 });
}

export function clearTerminal() {
  terminal.set({ ...terminal.get(), lines: [], unseen: 0 });
}

export function startTerminal() {
  host.on('console_log', ({ message, style }) => printLine({ text: message, style }));
}
