// Suggests which leftovers of an uninstalled program to remove. Their places were guessed from its name,
// so a tick is a cautious suggestion.

export interface Leftover {
  type: string;
  path: string;
  size: number;
}

const roots =
  /^([a-z]:\\Users\\[^\\]+\\AppData\\(Local|Roaming)|[a-z]:\\ProgramData|[a-z]:\\Program Files( \(x86\))?|HK(CU|LM)\\Software)\\/i;

/**
 * Ticks an item initially only if it lies in a publisher's folder or key below a known root. An item
 * directly below the root may be the publisher's own and contain other programs, and Microsoft's contain
 * parts of Windows.
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
