// The sizes of an analysis after things have gone: the host keeps those of the whole drive as they were.
import type { Reply } from '../bridge/protocol.ts';

export type Entry = Reply<'getFolderContents'>['items'][number];
export interface Sized {
  path: string;
  size: number;
}

export const sumOf = (entries: readonly { size: number }[]) =>
  entries.reduce((total, { size }) => total + size, 0);

export const isBelow = (path: string, folder: string) =>
  path.startsWith(folder.endsWith('\\') ? folder : `${folder}\\`);

/** A listing without the bytes of what has gone from its folders. A folder that has come back has no figures. */
export function withoutGone(items: readonly Entry[], gone: readonly Sized[]): Entry[] {
  return items.map((entry) => {
    if (!entry.isDirectory) return entry; // its size is not of the analysis
    const lost = gone.filter(({ path }) => path === entry.path || isBelow(path, entry.path));
    return lost.length === 0 ? entry : { ...entry, size: Math.max(0, entry.size - sumOf(lost)) };
  });
}

/** What is left of files when some of them, or folders that they lie in, have gone. */
export const stillThere = <T extends Sized>(files: readonly T[], gone: readonly Sized[]): T[] =>
  files.filter((file) => !gone.some(({ path }) => path === file.path || isBelow(file.path, path)));
