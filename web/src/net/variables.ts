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

/** Stores a variable and confirms that with a toast. Resolves to the reason if it fails. */
export async function saveVariable(variable: Variable): Promise<string | undefined> {
  const failure = await write(variable, false);
  if (!failure) toast(t('variables.saved', { name: variable.name }));
  return failure;
}

/** Deletes variables and offers to undo that. */
export async function deleteVariables(list: readonly Variable[]) {
  const gone: Variable[] = [];
  for (const one of list) {
    const failure = await write(one, true);
    if (failure) toast(failure, { error: true });
    else gone.push(one);
  }
  if (gone.length === 0) return;
  const text = t('variables.deleted', { name: gone.map(({ name }) => name).join(', ') });
  toast(text, { action: { label: t('app.undo'), run: () => void restore(gone) } });
}

async function restore(gone: readonly Variable[]) {
  for (const one of gone) {
    const failure = await saveVariable(one);
    if (failure) toast(failure, { error: true });
  }
}

async function write({ scope, name, value }: Variable, remove: boolean): Promise<string | undefined> {
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
  void variables.reload();
}
