// The meanings of the exit codes (unsigned, 32 bits) of the tools that install and remove.

export type JobKind = 'update' | 'driver' | 'uninstall';

const packageManagerCodes = 0x8a150000;
const restartCodes = new Set([0x109, 0x10a, 0x10b].map((low) => packageManagerCodes + low));
const finishedCodes = new Set([0x109, 0x10b].map((low) => packageManagerCodes + low));

const packageCodes = {
  0x02: 'oldTool',
  0x06: 'installer',
  0x08: 'download',
  0x0f: 'source',
  0x10: 'noInstaller',
  0x11: 'hash',
  0x14: 'notFound',
  0x16: 'several',
  0x19: 'rights',
  0x2b: 'noUpdate',
  0x2f: 'noUninstall',
  0x30: 'uninstaller',
  0x3a: 'policy',
  0x45: 'source',
  0x46: 'agreements',
  0x4b: 'source',
  0x4f: 'noUpdate',
  0x50: 'unknownVersion',
  0x56: 'elevated',
  0x68: 'pinned',
  0x7d: 'elevated',
  0x101: 'inUse',
  0x102: 'otherInstall',
  0x103: 'inUse',
  0x105: 'diskFull',
  0x109: 'restart',
  0x10a: 'restartFirst',
  0x10b: 'restart',
  0x10c: 'cancelled',
} as const;

const driverCodes = {
  1: 'notStarted',
  2: 'notOffered',
  3: 'download',
  4: 'driver',
  5: 'rights',
  6: 'search',
  7: 'noAgent',
} as const;

type Values<T> = T[keyof T];
export type CodeWord = Values<typeof packageCodes> | Values<typeof driverCodes> | 'refused';

export const isSuccess = (code: number | undefined) => code === 0 || finishedCodes.has(code ?? -1);
export const needsRestart = (code: number | undefined) => restartCodes.has(code ?? 0);

/** Returns the meaning of an exit code if it is known. */
export function wordOf(kind: JobKind, code: number): CodeWord | undefined {
  if (code === 999) return 'refused';
  if (kind === 'driver') return driverCodes[code as keyof typeof driverCodes];
  return code === 1 ? 'notStarted' : packageCodes[(code - packageManagerCodes) as keyof typeof packageCodes];
}
