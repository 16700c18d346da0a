// Decides which paths may go to the recycle bin. The host recycles any path, so the page has to refuse.
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
