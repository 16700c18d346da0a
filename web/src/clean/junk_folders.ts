// Lists the folders that the host measures and empties per category, and their contents.
import { host } from '../bridge/host.ts';
import type { Reply } from '../bridge/protocol.ts';
import type { Category } from './junk.ts';

interface Folder {
  path: string;
  /** The host only counts its bytes. */
  measured?: true;
}

const folders: Record<Category, Folder[]> = {
  windowsTemp: [{ path: 'C:\\Windows\\Temp' }, { path: 'C:\\Windows\\SystemTemp', measured: true }],
  prefetch: [{ path: 'C:\\Windows\\Prefetch' }],
  userTemp: [{ path: '%TEMP%' }],
  winUpdate: [{ path: 'C:\\Windows\\SoftwareDistribution\\Download' }],
  browserCache: [
    { path: '%LOCALAPPDATA%\\Google\\Chrome\\User Data\\Default\\Cache' },
    { path: '%LOCALAPPDATA%\\Google\\Chrome\\User Data\\Default\\Code Cache' },
    { path: '%LOCALAPPDATA%\\Microsoft\\Edge\\User Data\\Default\\Cache' },
    { path: '%LOCALAPPDATA%\\Microsoft\\Edge\\User Data\\Default\\Code Cache' },
    { path: '%LOCALAPPDATA%\\BraveSoftware\\Brave-Browser\\User Data\\Default\\Cache' },
    { path: '%LOCALAPPDATA%\\Mozilla\\Firefox\\Profiles', measured: true },
  ],
  shaderCache: [
    { path: '%LOCALAPPDATA%\\NVIDIA\\DXCache' },
    { path: '%LOCALAPPDATA%\\NVIDIA\\GLCache' },
    { path: '%LOCALAPPDATA%\\D3DSCache' },
  ],
  systemLogs: [
    { path: 'C:\\ProgramData\\Microsoft\\Windows\\WER' },
    { path: 'C:\\Windows\\Logs' },
    { path: 'C:\\Windows\\Minidump', measured: true },
  ],
};

/** Returns true for folders of Windows, which only the helper service may empty. */
export const isOfWindows = (category: Category) =>
  folders[category].some(({ path }) => path.startsWith('C:\\Windows\\'));

/** Replaces each `%NAME%`, in any case. Returns undefined if a name is unknown. */
export function expand(path: string, values: Readonly<Record<string, string | undefined>>) {
  const known = path.replace(/%([^%\\]+)%/g, (hole, name: string) => values[name.toUpperCase()] ?? hole);
  return known.includes('%') ? undefined : known;
}

/** A small folder in every user's local application data. */
const known = '\\Microsoft\\Windows\\History';

/**
 * Returns the values of `%...%`. No message contains the path of the user's profile, but the search for
 * leftovers of a program looks for its name in the local application data.
 */
async function places(): Promise<Record<string, string | undefined>> {
  const { leftovers } = await host.request('findLeftovers', { id: '', name: known.slice(1) });
  const local = leftovers
    .map(({ path }) => path.slice(0, -known.length))
    .find((folder) => /\\AppData\\Local$/i.test(folder));
  if (local === undefined) return {};
  const profile = local.slice(0, -'\\AppData\\Local'.length);
  const { user } = await host.request('getEnvVariables');
  const set = (name: string) => Object.entries(user).find(([key]) => key.toUpperCase() === name)?.[1];
  const values = { LOCALAPPDATA: local, USERPROFILE: profile };
  return { ...values, TEMP: expand(set('TMP') ?? set('TEMP') ?? `${local}\\Temp`, values) };
}

type Entry = Reply<'getFolderContents'>['items'][number];

/** Returns the bytes of a folder's contents, or undefined if no analysis has covered its subfolders. */
export function bytesOf(items: readonly Entry[]): number | undefined {
  const inner = items.filter(({ isDirectory }) => isDirectory);
  if (inner.length > 0 && inner.every(({ size }) => size === 0)) return undefined;
  return items.reduce((sum, { size }) => sum + size, 0);
}

export interface Contents extends Folder {
  /** The largest first. */
  items: Entry[];
}

export async function contentsOf(category: Category): Promise<Contents[]> {
  const wanted = folders[category];
  const values = wanted.some(({ path }) => path.startsWith('%')) ? await places() : {};
  const there = wanted.flatMap((folder) => {
    const path = expand(folder.path, values);
    return path === undefined ? [] : [{ ...folder, path: path.replace(/\\$/, '') }];
  });
  return Promise.all(
    there.map(async (folder) => {
      const { items } = await host.request('getFolderContents', { path: folder.path });
      return { ...folder, items: items.toSorted((a, b) => b.size - a.size) };
    }),
  );
}
