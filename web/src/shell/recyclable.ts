// Decides what may go to the recycle bin, because the host recycles any path, and adds up its size.
import { crumbsOf } from '../base/paths.ts';

/**
 * Applies on any drive; `*` stands for any name. These folders and every folder above them are kept. With
 * `**`, so is everything inside.
 */
const kept = [
  'Windows\\**',
  '$Recycle.Bin\\**',
  'System Volume Information\\**',
  'Program Files',
  'Program Files (x86)',
  'ProgramData',
  'Users\\*',
  'Program Files\\Varnel\\**',
  'Program Files (x86)\\Varnel\\**',
  'Program Files (x86)\\Microsoft\\EdgeWebView\\**', // displays this page
  'Users\\*\\AppData\\Local\\Varnel\\**',
].map((pattern) => pattern.toLowerCase().split('\\'));

/**
 * Refuses drives, anything that Windows, all programs or a whole user needs, and anything that belongs to
 * an installed Varnel.
 */
export function mayRecycle(path: string): boolean {
  if (!/^[a-z]:\\[^\\]/i.test(path)) return false;
  const parts = path.toLowerCase().split('\\').slice(1);
  return !kept.some((pattern) => {
    const inside = pattern.at(-1) === '**';
    const names = inside ? pattern.slice(0, -1) : pattern;
    if (parts.length > names.length && !inside) return false;
    return names.every((name, i) => i >= parts.length || name === '*' || name === parts[i]);
  });
}

export interface File {
  path: string;
  size: number;
  isDirectory?: boolean;
}

/**
 * Returns true for a folder without bytes: it is empty, not accessible, or was never analysed, like one
 * behind a link.
 */
export const isUnknown = ({ isDirectory, size }: Pick<File, 'isDirectory' | 'size'>) =>
  isDirectory === true && size === 0;

/** Returns the bytes of all files and folders, or undefined if that of any is unknown. */
export const sizeOf = (files: File[]) =>
  files.some(isUnknown) ? undefined : files.reduce((sum, { size }) => sum + size, 0);

/**
 * Returns the places of the executable's `bin` folder if Varnel ran from the path, from a folder above it,
 * or from just below it.
 */
export const possibleBins = (paths: string[]) => [
  ...new Set([
    ...paths.flatMap((path) => crumbsOf(path).map((crumb) => `${crumb.path.replace(/\\$/, '')}\\bin`)),
    ...paths.map((path) => `${path}\\Varnel\\bin`),
  ]),
];
