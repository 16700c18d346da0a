// Handles Windows paths.

/** Returns the root for an analysis: "C:\" for both "C:" and "C:\". */
export function rootOf(drive: string): string {
  return drive.endsWith('\\') ? drive : `${drive}\\`;
}

/** Returns the name of a drive for the user: "C:" for both "C:" and "C:\". */
export const driveOf = (root: string) => root.replace(/\\$/, '');

export function nameOf(path: string): string {
  return path.slice(path.lastIndexOf('\\') + 1);
}

/**
 * Returns the folder that contains a path, or undefined for a root. A root keeps its backslash: "C:\Users"
 * is in "C:\".
 */
export function parentOf(path: string): string | undefined {
  const at = path.lastIndexOf('\\');
  if (at < 0 || at === path.length - 1) return undefined;
  return path.slice(0, path.indexOf('\\') === at ? at + 1 : at);
}

/**
 * Returns true if a path certainly names one place on a drive: complete, in Windows' own spelling, with
 * nothing to expand.
 */
export const isPlainPath = (path: string) =>
  /^[a-z]:(\\[^\\%~;:*?"<>|]+)+$/i.test(path) && !/[. ](\\|$)/.test(path);

/** Returns the steps from the root to the folder itself. */
export function crumbsOf(path: string): { name: string; path: string }[] {
  const parent = parentOf(path);
  return parent === undefined
    ? [{ name: driveOf(path), path }]
    : [...crumbsOf(parent), { name: nameOf(path), path }];
}
