// What an uninstalled program may have left behind. The places were guessed from its name, so a tick is a careful suggestion.

export interface Leftover {
  type: string;
  path: string;
  size: number;
}

const roots =
  /^([a-z]:\\Users\\[^\\]+\\AppData\\(Local|Roaming)|[a-z]:\\ProgramData|[a-z]:\\Program Files( \(x86\))?|HK(CU|LM)\\Software)\\/i;

/**
 * Ticked from the start only when it lies in a publisher's folder or key below a root that is known. What stands directly
 * below the root may be the publisher's own, with other programs in it; and in Microsoft's lie parts of Windows.
 */
export function tickedAtFirst({ path }: Leftover): boolean {
  const root = roots.exec(path);
  if (!root) return false;
  const parts = path.slice(root[0].length).split('\\');
  const [publisher = ''] = parts;
  return (
    parts.length > 1 && parts.every((part) => /[^. ]/.test(part)) && !/^(microsoft|windows)/i.test(publisher)
  );
}
