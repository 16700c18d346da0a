import { host } from '../bridge/host.ts';
import {
  beginRun,
  exitWord,
  hearEnd,
  noRuns,
  putAside,
  withTarget,
  type Ends,
  type Tool,
} from '../lib/network.ts';
import { createStore } from '../lib/store.ts';
import { appendLines, type Incoming, type Line } from '../lib/terminal.ts';
import { codeText } from '../lib/jobs.ts';
import { t } from '../text/text.ts';
import { errorText } from '../ui/error_text.ts';
import { toast } from '../ui/toast.tsx';

interface Run {
  tool: Tool;
  target: string;
  since: number; // ms since the epoch
  lines: readonly Line[];
  /** How it ended, in words; absent while it runs. The icon is neutral where the code says nothing. */
  outcome?: { text: string; icon: 'success' | 'alert' | 'network' };
}

interface Diagnostics {
  ends: Ends;
  run?: Run;
  /** What was typed last, and the last targets of this session, the newest first. */
  target: string;
  recent: readonly string[];
}

/** Outlives the view: a tool runs on while another one is shown. */
export const diagnostics = createStore<Diagnostics>({ ends: noRuns, target: '', recent: [] });

const change = (changes: Partial<Diagnostics>) => diagnostics.set({ ...diagnostics.get(), ...changes });

export const setTarget = (target: string) => change({ target });

let startedId = -1;

function hear(line: Incoming) {
  const { run } = diagnostics.get();
  if (run) change({ run: { ...run, lines: appendLines(run.lines, [line]) } });
}

function finish(text: string, icon: NonNullable<Run['outcome']>['icon'] = 'network') {
  const { run } = diagnostics.get();
  if (run) change({ run: { ...run, outcome: { text, icon } } });
}

export function startDiagnostics() {
  host.on('ping_diagnostic_stream', ({ streamType, requestId, message = '', code = -1 }) => {
    const { ends, run } = diagnostics.get();
    if (streamType === 'stdout') {
      if (ends.shown && requestId === startedId) hear({ text: message });
      return;
    }
    if (streamType !== 'exit') return;
    const now = hearEnd(ends);
    change({ ends: now });
    if (!run || !ends.shown || now.shown) return;
    if (now.mixed) return finish(t('diagnostics.mixed'));
    const word = exitWord(run.tool, code);
    finish(
      `${t(`exit.${word}`)} (${t('exit.code', { code: codeText(code) })})`,
      word === 'replied' ? 'success' : word === 'asked' ? 'network' : 'alert',
    );
  });
}

export function runTool(tool: Tool) {
  const { ends, target, recent } = diagnostics.get();
  if (ends.shown || target.trim() === '') return;
  try {
    startedId = host.start('runPingDiagnostic', { type: tool, target });
    change({
      ends: beginRun(ends),
      recent: withTarget(recent, target),
      run: { tool, target, since: Date.now(), lines: [] },
    });
  } catch (error) {
    toast(errorText(error), { error: true });
  }
}

/** The host cannot end the tool: its lines are only not shown any more. */
export function stopShowing() {
  change({ ends: putAside(diagnostics.get().ends) });
  finish(t('diagnostics.stopped'));
}
