import { codeText } from '../base/format.ts';
import { appendLines, type Incoming, type Line } from '../base/lines.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import {
  abandonRun,
  beginRun,
  endRun,
  exitWord,
  noRuns,
  withTarget,
  type RunState,
  type Tool,
} from './diagnostic_runs.ts';

interface Run {
  tool: Tool;
  target: string;
  since: number; // ms since the epoch
  lines: readonly Line[];
  /** The result in words; absent while it runs. The icon is neutral if the exit code says nothing. */
  outcome?: { text: string; icon: 'success' | 'alert' | 'network' };
}

interface Diagnostics {
  state: RunState;
  run?: Run;
  /** The text typed last, and the last targets of this session, the newest first. */
  target: string;
  recent: readonly string[];
}

/** Outlives the view: a tool keeps running while another view is shown. */
export const diagnostics = createStore<Diagnostics>({ state: noRuns, target: '', recent: [] });

const change = (changes: Partial<Diagnostics>) => diagnostics.set({ ...diagnostics.get(), ...changes });

export const setTarget = (target: string) => change({ target });

let startedId = -1;

function addLine(line: Incoming) {
  const { run } = diagnostics.get();
  if (run) change({ run: { ...run, lines: appendLines(run.lines, [line]) } });
}

function finish(text: string, icon: NonNullable<Run['outcome']>['icon'] = 'network') {
  const { run } = diagnostics.get();
  if (run) change({ run: { ...run, outcome: { text, icon } } });
}

export function startDiagnostics() {
  host.on('ping_diagnostic_stream', ({ streamType, requestId, message = '', code = -1 }) => {
    const { state, run } = diagnostics.get();
    if (streamType === 'stdout') {
      if (state.active && requestId === startedId) addLine({ text: message });
      return;
    }
    if (streamType !== 'exit') return;
    const now = endRun(state);
    change({ state: now });
    if (!run || !state.active || now.active) return;
    if (now.ambiguous) return finish(t('diagnostics.mixed'));
    const word = exitWord(run.tool, code);
    finish(
      `${t(`exit.${word}`)} (${t('exit.code', { code: codeText(code) })})`,
      word === 'replied' ? 'success' : word === 'asked' ? 'network' : 'alert',
    );
  });
}

export function runTool(tool: Tool) {
  const { state, target, recent } = diagnostics.get();
  if (state.active || target.trim() === '') return;
  try {
    startedId = host.start('runPingDiagnostic', { type: tool, target });
    change({
      state: beginRun(state),
      recent: withTarget(recent, target),
      run: { tool, target, since: Date.now(), lines: [] },
    });
  } catch (error) {
    toast(errorText(error), { error: true });
  }
}

/** Hides further lines, because the host cannot end the tool. */
export function stopShowing() {
  change({ state: abandonRun(diagnostics.get().state) });
  finish(t('diagnostics.stopped'));
}
