// Keeps track of the runs of the diagnostic tools.

const recentTargets = 5;

/** Puts the target first, drops its repeats, and limits the list to the number kept. */
export function withTarget(targets: readonly string[], target: string): string[] {
  return [target, ...targets.filter((other) => other !== target)].slice(0, recentTargets);
}

export type Tool = 'ping' | 'dns';

/** Returns the meaning of a tool's exit code (a 32-bit number, or -1 for a tool that was not started). */
export function exitWord(tool: Tool, code: number) {
  switch (code) {
    case -1:
      return 'notStarted';
    case 0:
      return tool === 'ping' ? 'replied' : 'asked'; // nslookup also ends with 0 for a missing name
    case 1:
      return tool === 'ping' ? 'silent' : 'failed';
    case 259:
      return 'early'; // the tool had closed its output and was still ending
    case 9009:
      return 'missing'; // the command interpreter does not know the tool
    case 0xc000013a:
      return 'interrupted';
    default:
      return 'failed';
  }
}

/**
 * One run is shown at a time. A tool's end does not say which run it belongs to, so this counts the ends
 * that abandoned runs have not yet reported. While there are any, an end may be theirs, and only the last
 * one certainly ends the run that is shown.
 */
export interface RunState {
  active: boolean;
  /** Number of abandoned runs that have not reported their end. */
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

/** Stops showing the run. Its tool keeps running. */
export const abandonRun = (state: RunState): RunState =>
  state.active ? { active: false, outstanding: state.outstanding + 1, ambiguous: false } : state;

export const endRun = (state: RunState): RunState =>
  state.outstanding > 0 ? { ...state, outstanding: state.outstanding - 1 } : { ...state, active: false };
