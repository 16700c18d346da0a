// Finds out whether a path named by a setting exists.
import { nameOf, parentOf } from '../base/paths.ts';
import { host } from '../bridge/host.ts';

/**
 * Checks whether paths are missing and lists each folder once. A path counts as missing if its folder is
 * missing, or if that lists other entries: an empty listing may only mean that this user has no access.
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
