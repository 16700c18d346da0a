// Corrects the sizes of an analysis after removals, because the host keeps those of the whole drive
// unchanged.
import type { Reply } from '../bridge/protocol.ts';

export type Entry = Reply<'getFolderContents'>['items'][number];
export interface Sized {
  path: string;
  size: number;
}

export const sumOf = (entries: readonly { size: number }[]) =>
  entries.reduce((total, { size }) => total + size, 0);

const isBelow = (path: string, folder: string) =>
  path.startsWith(folder.endsWith('\\') ? folder : `${folder}\\`);

/** The share of the used space from which a difference is mentioned. */
const missingShare = 0.02;

/**
 * Returns the bytes in use that are neither among those found nor went to the recycle bin since, less than
 * 0 if more was found than is in use, or 0 if the difference is small.
 */
export function unexplained(found: number, gone: readonly Sized[], used: number): number {
  const missing = used - found - sumOf(gone);
  return missing > used * missingShare ? missing : Math.min(0, used - found);
}

/**
 * Returns a listing without the bytes of everything removed from its folders. A folder that was created
 * again has no figures.
 */
export function withoutGone(items: readonly Entry[], gone: readonly Sized[]): Entry[] {
  return items.map((entry) => {
    if (!entry.isDirectory) return entry; // its size is not from the analysis
    const lost = gone.filter(({ path }) => path === entry.path || isBelow(path, entry.path));
    return lost.length === 0 ? entry : { ...entry, size: Math.max(0, entry.size - sumOf(lost)) };
  });
}

/** Returns the remaining files after some of them, or folders around them, were removed. */
export const stillThere = <T extends Sized>(files: readonly T[], gone: readonly Sized[]): T[] =>
  files.filter((file) => !gone.some(({ path }) => path === file.path || isBelow(file.path, path)));
