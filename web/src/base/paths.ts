// Paths of Windows.

/** The root that an analysis takes: "C:" and "C:\" give "C:\". */
export function rootOf(drive: string): string {
  return drive.endsWith('\\') ? drive : `${drive}\\`;
}

export function nameOf(path: string): string {
  return path.slice(path.lastIndexOf('\\') + 1);
}

/** The folder that holds a path; undefined for a root, which keeps its backslash: "C:\Users" is in "C:\". */
export function parentOf(path: string): string | undefined {
  const at = path.lastIndexOf('\\');
  if (at < 0 || at === path.length - 1) return undefined;
  return path.slice(0, path.indexOf('\\') === at ? at + 1 : at);
}

/** Says whether a path names one place on a drive for certain: whole, as Windows spells it, with nothing to be replaced. */
export const isPlainPath = (path: string) =>
  /^[a-z]:(\\[^\\%~;:*?"<>|]+)+$/i.test(path) && !/[. ](\\|$)/.test(path);

/** From the root to the folder itself. */
export function crumbsOf(path: string): { name: string; path: string }[] {
  const parent = parentOf(path);
  return parent === undefined
    ? [{ name: path.replace(/\\$/, ''), path }]
    : [...crumbsOf(parent), { name: nameOf(path), path }];
}
