// Parses rows of the package manager's tables. The host cuts cells at two or more blanks, but the tool
// prints only one after the widest cell of a column. Such a row arrives with two values in one cell and
// with the others shifted.

export interface Cells {
  name: string;
  id: string;
  version: string;
  available: string;
  source: string;
}

export type Package = Cells & {
  /** True if every value is in its place. Otherwise the cells are unchanged. */
  whole: boolean;
};

const sources = new Set(['winget', 'msstore', 'winget-font']);

const isVersion = (word: string) => word === 'Unknown' || /^[vr]?\d+($|[-+_…]|[.,]\d)/i.test(word);

/**
 * Recognises an ID of a source ("Brook.TarnSync"), of the store (twelve characters or more), or of Windows
 * ("ARP\…", "MSIX\…"), possibly truncated.
 */
const isId = (word: string) =>
  /^\S+$/.test(word) && !isVersion(word) && /[^.]\.[^.]|\\|…$|^[0-9A-Z]{12,14}$/.test(word);

/** Returns true for one value, possibly after "<" or ">", that is clearly nothing but a version. */
const isVersionCell = (cell: string) => /^([<>] )?\S+$/.test(cell) && !sources.has(cell) && !isId(cell);

/** Reads from the right: source, one or two versions, ID. The rest is the name. */
function fromRight(text: string) {
  const words = text.split(/\s+/).filter(Boolean);
  const source = sources.has(words.at(-1) ?? '') ? words.pop() : undefined;
  const versions: string[] = [];
  while (versions.length < 2 && isVersion(words.at(-1) ?? '')) {
    const version = words.pop()!;
    const bound = /^[<>]$/.test(words.at(-1) ?? '') ? `${words.pop()} ` : '';
    versions.unshift(bound + version);
  }
  const id = words.pop() ?? '';
  return isId(id) && words.length > 0 ? { name: words.join(' '), id, versions, source } : undefined;
}

/**
 * Parses a row of available updates. The host fills in "winget" if the fifth cell is missing, as it is if
 * two cells were merged.
 */
export function parseUpdate(cells: Cells): Package {
  const { name, id, version, available, source } = cells;
  const owned = sources.has(source) || (/^\S+$/.test(source) && !isVersion(source));
  if (isId(id) && isVersionCell(version) && isVersionCell(available) && owned)
    return { ...cells, whole: true };
  const found = fromRight([name, id, version, available, sources.has(source) ? '' : source].join(' '));
  if (found?.versions.length !== 2) return { ...cells, whole: false };
  const [installed = '', offered = ''] = found.versions;
  return {
    name: found.name,
    id: found.id,
    version: installed,
    available: offered,
    source: found.source ?? (sources.has(source) ? source : ''),
    whole: true,
  };
}

/**
 * Parses a row of installed programs. In a row with merged cells, the third may be the available version or
 * the source.
 */
export function parseApp(cells: Omit<Cells, 'available'>): Package {
  const { name, id, version, source } = cells;
  if (isId(id) && isVersionCell(version)) return { ...cells, available: '', whole: true };
  const found = fromRight([name, id, version].join(' '));
  const [installed, available = ''] = found?.versions ?? [];
  if (!found || installed === undefined) return { ...cells, available: '', whole: false };
  return {
    name: found.name,
    id: found.id,
    version: installed,
    available,
    source: found.source ?? source,
    whole: true,
  };
}

/** Returns true if the host allows the text in a command line, where other characters have a meaning. */
export const isSafeArgument = (text: string) => /^[A-Za-z0-9 ()\-.:_]*$/.test(text);

export type Obstacle = 'shifted' | 'cut' | 'windows' | 'characters';

/** Returns the reason why nothing can be done with a package. */
export function obstacleOf({ id, whole }: Package): Obstacle | undefined {
  if (!whole) return 'shifted';
  if (id.includes('\\')) return 'windows'; // "ARP\…", "MSIX\…": no source, so no tool commands
  if (id.endsWith('…')) return 'cut';
  return isSafeArgument(id) ? undefined : 'characters';
}
