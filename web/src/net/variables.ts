import { nameOf, parentOf } from '../base/paths.ts';
import { createSource } from '../base/source.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import type { RequestData } from '../bridge/protocol.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';

export const scopes = ['user', 'system'] as const;

export interface Variable {
  scope: (typeof scopes)[number];
  name: string;
  value: string;
}

export const variableKey = ({ scope, name }: Variable) => `${scope}\n${name}`;
export const scopeText = ({ scope }: Pick<Variable, 'scope'>) => t(`variables.${scope}`);

export const variables = createSource(async () => {
  const reply = await host.request('getEnvVariables');
  return scopes.flatMap((scope) =>
    Object.entries(reply[scope]).map(([name, value]): Variable => ({ scope, name, value })),
  );
});

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

/** Stores or deletes a variable and confirms that with a toast. Resolves to the reason if it fails. */
export async function saveVariable(
  { scope, name, value }: Variable,
  remove = false,
): Promise<string | undefined> {
  const data: RequestData['saveEnvVariable'] = {
    type: scope,
    name,
    value: remove ? '' : value,
    is_delete: remove,
  };
  try {
    await host.request('saveEnvVariable', data);
  } catch (error) {
    const unexplained = t(scope === 'user' ? 'variables.refused' : 'variables.needsService');
    return t('variables.failed', { name, reason: errorText(error, unexplained) });
  }
  toast(t(remove ? 'variables.deleted' : 'variables.saved', { name }));
  void variables.reload();
}
