// Rows of the package manager's tables. The host cuts cells at two or more blanks, but the tool leaves only one behind the
// widest cell of a column, so such a row arrives with cells that hold two values, and the others shifted.

export interface Cells {
  name: string;
  id: string;
  version: string;
  available: string;
  source: string;
}

export type Package = Cells & {
  /** Every value stands in its place. Otherwise the cells are as they came. */
  whole: boolean;
};

const sources = new Set(['winget', 'msstore', 'winget-font']);

const isVersion = (word: string) => word === 'Unknown' || /^[vr]?\d+($|[-+_…]|[.,]\d)/i.test(word);

/** Of a source ("Brook.TarnSync"), of the store (twelve characters and more), or of Windows ("ARP\…", "MSIX\…"); maybe cut. */
const isId = (word: string) =>
  /^\S+$/.test(word) && !isVersion(word) && /[^.]\.[^.]|\\|…$|^[0-9A-Z]{12,14}$/.test(word);

/** One value, or one with "<" or ">" before it, that is clearly nothing else. */
const isVersionCell = (cell: string) => /^([<>] )?\S+$/.test(cell) && !sources.has(cell) && !isId(cell);

/** Reads from the right: source, one or two versions, identifier, and the rest is the name. */
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

/** A row of available updates. The host fills in "winget" where the fifth cell is missing, as it is when two have become one. */
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

/** A row of installed programs: of a squeezed one, the third cell may be the available version or the source. */
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

/** What the host lets into a command line: the other characters mean something there. */
export const isSafeArgument = (text: string) => /^[A-Za-z0-9 ()\-.:_]*$/.test(text);

export type Obstacle = 'shifted' | 'cut' | 'windows' | 'characters';

/** Why nothing can be done with a package. */
export function obstacleOf({ id, whole }: Package): Obstacle | undefined {
  if (!whole) return 'shifted';
  if (id.includes('\\')) return 'windows'; // "ARP\…", "MSIX\…": of no source, so the tool's commands are not needed for it
  if (id.endsWith('…')) return 'cut';
  return isSafeArgument(id) ? undefined : 'characters';
}
