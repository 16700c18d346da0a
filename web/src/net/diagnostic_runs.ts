// Runs of the diagnostic tools.

const recentTargets = 5;

/** The target first, without repeats, and no more than are kept. */
export function withTarget(targets: readonly string[], target: string): string[] {
  return [target, ...targets.filter((other) => other !== target)].slice(0, recentTargets);
}

export type Tool = 'ping' | 'dns';

/** What an exit code of a tool means (a number of 32 bits, or -1 for a tool that was not started). */
export function exitWord(tool: Tool, code: number) {
  switch (code) {
    case -1:
      return 'notStarted';
    case 0:
      return tool === 'ping' ? 'replied' : 'asked'; // nslookup also ends with 0 for a name that does not exist
    case 1:
      return tool === 'ping' ? 'silent' : 'failed';
    case 259:
      return 'early'; // the tool has closed its output and was still ending
    case 9009:
      return 'missing'; // the command interpreter knows no such tool
    case 0xc000013a:
      return 'interrupted';
    default:
      return 'failed';
  }
}

/**
 * One run at a time is shown. The end of a tool does not say which run it belongs to, so the ends that abandoned runs still
 * owe are counted: while there are any, an end may be theirs, and only the last one certainly ends the run that is shown.
 */
export interface RunState {
  active: boolean;
  /** Ends that abandoned runs have not reported yet. */
  outstanding: number;
  /** An end seen during this run may belong to an earlier one, so its exit code cannot be trusted. */
  ambiguous: boolean;
}

export const noRuns: RunState = { active: false, outstanding: 0, ambiguous: false };

export const beginRun = ({ outstanding }: RunState): RunState => ({
  active: true,
  outstanding,
  ambiguous: outstanding > 0,
});

/** Stops showing the run; its tool runs on. */
export const abandonRun = (state: RunState): RunState =>
  state.active ? { active: false, outstanding: state.outstanding + 1, ambiguous: false } : state;

export const endRun = (state: RunState): RunState =>
  state.outstanding > 0 ? { ...state, outstanding: state.outstanding - 1 } : { ...state, active: false };
