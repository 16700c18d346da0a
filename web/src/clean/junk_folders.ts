// Which folders the host measures and empties in each category, and what lies in them.
import { host } from '../bridge/host.ts';
import type { Reply } from '../bridge/protocol.ts';
import type { Category } from './junk.ts';

interface Folder {
  path: string;
  /** The host counts its bytes and leaves it alone. */
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

/** Only the helper service may empty folders of Windows. */
export const isOfWindows = (category: Category) =>
  folders[category].some(({ path }) => path.startsWith('C:\\Windows\\'));

/** Replaces `%NAME%`, in any case; undefined if a name is not known. */
export function expand(path: string, values: Readonly<Record<string, string | undefined>>) {
  const known = path.replace(/%([^%\\]+)%/g, (hole, name: string) => values[name.toUpperCase()] ?? hole);
  return known.includes('%') ? undefined : known;
}

/** Small, and in every user's local application data. */
const known = '\\Microsoft\\Windows\\History';

/**
 * What `%...%` stands for. No message says where the user's profile is; but the search for what a program left behind looks
 * for its name in the local application data.
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

/** Bytes of what lies in a folder; undefined if no analysis has been in its subfolders. */
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
