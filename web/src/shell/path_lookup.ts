// Whether what a setting names is on the disk.
import { nameOf, parentOf } from '../base/paths.ts';
import { host } from '../bridge/host.ts';

/**
 * Looks whether paths are missing; each folder is listed once. A path is missing when the folder that would hold it is, or
 * lists others: without entries it may as well be closed to this user.
 */
export function createLookup() {
  const listings = new Map<string, Promise<Set<string>>>();
  async function list(path: string) {
    const reply = await host.request('getFolderContents', { path }).catch(() => undefined);
    return new Set(reply?.items.map(({ name }) => name.toLowerCase()));
  }
  return async function isMissing(path: string): Promise<boolean> {
    const parent = parentOf(path);
    if (parent === undefined) return false;
    if (!listings.has(parent)) listings.set(parent, list(parent));
    const names = await listings.get(parent)!;
    return !names.has(nameOf(path).toLowerCase()) && (names.size > 0 || isMissing(parent));
  };
}
