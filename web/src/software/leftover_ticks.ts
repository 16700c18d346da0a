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
 * Classifies an item's place. "publisher": in a publisher's folder or key below a known root. "shared":
 * directly below the root, so it may be the publisher's own and contain other programs. "windows": in
 * Microsoft's, which contains parts of Windows.
 */
export function placeOf({ path }: Leftover): 'publisher' | 'shared' | 'windows' | 'unknown' {
  const root = roots.exec(path);
  const parts = root ? path.slice(root[0].length).split('\\') : [];
  if (!root || !parts.every((part) => /[^. ]/.test(part))) return 'unknown';
  if (/^(microsoft|windows)/i.test(parts[0]!)) return 'windows';
  return parts.length > 1 ? 'publisher' : 'shared';
}

/** Whether an item is ticked initially. */
export const tickedAtFirst = (leftover: Leftover) => placeOf(leftover) === 'publisher';
