// Ports, and runs of the diagnostic tools.

export type Reach = 'machine' | 'all' | 'address';

/** From where a listening address ("127.0.0.1:80", "[::1]:80") can be reached. */
export function reachOf(local: string): Reach {
  const host = local
    .slice(0, local.lastIndexOf(':'))
    .replace(/^\[|\]$/g, '')
    .replace(/^::ffff:(?=\d+\.)/i, '');
  if (host === '0.0.0.0' || host === '::') return 'all';
  return host === '::1' || /^127\./.test(host) ? 'machine' : 'address';
}

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
 * One run at a time is shown. The end of a tool does not say whose it is, so ends that are owed by runs put aside are
 * counted: while there are any, an end may be theirs, and only the last one certainly ends the run that is shown.
 */
export interface Ends {
  shown: boolean;
  owed: number;
  /** Some end of the shown run's time may have been another run's: its code is nobody's for certain. */
  mixed: boolean;
}

export const noRuns: Ends = { shown: false, owed: 0, mixed: false };

export const beginRun = ({ owed }: Ends): Ends => ({ shown: true, owed, mixed: owed > 0 });

/** The shown run is put aside; its tool runs on. */
export const putAside = (ends: Ends): Ends =>
  ends.shown ? { shown: false, owed: ends.owed + 1, mixed: false } : ends;

export function hearEnd({ shown, owed, mixed }: Ends): Ends {
  return owed > 0 ? { shown, owed: owed - 1, mixed } : { shown: false, owed, mixed };
}
