// Which paths may go to the recycle bin. The host recycles whatever it is told to, so the page says no.
import { crumbsOf } from '../base/paths.ts';

/** On any drive, `*` for any name. They stay, and so does what they lie in; with `**`, also all that lies in them. */
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
  'Program Files (x86)\\Microsoft\\EdgeWebView\\**', // shows this page
  'Users\\*\\AppData\\Local\\Varnel\\**',
].map((pattern) => pattern.toLowerCase().split('\\'));

/** No drive, nothing that Windows, all programs or a user as a whole needs, and nothing of an installed Varnel. */
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

/** Where the `bin` with the executable would be if Varnel ran from the path, from around it, or from just below it. */
export const possibleBins = (paths: string[]) => [
  ...new Set([
    ...paths.flatMap((path) => crumbsOf(path).map((crumb) => `${crumb.path.replace(/\\$/, '')}\\bin`)),
    ...paths.map((path) => `${path}\\Varnel\\bin`),
  ]),
];
