import { useId, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { confirm, Dialog } from '../kit/dialog.tsx';
import { Entries } from './variable_entries.tsx';
import { isList, nameFault } from './variable_values.ts';
import { saveVariable, scopes, scopeText, variableKey, variables, type Variable } from './variables.ts';

const overwrite = (name: string, stored = '') =>
  confirm({
    title: t('variables.changed', { name }),
    body: t('variables.changedBody'),
    items: [stored],
    verb: t('hosts.overwrite'),
    danger: true,
  });

export function VariableDialog({
  all,
  before,
  onClose,
}: {
  all: Variable[];
  before?: Variable;
  onClose(): void;
}) {
  const [now, setNow] = useState<Variable>(before ?? { scope: 'user', name: '', value: '' });
  const [raw, setRaw] = useState(!before || !isList(before.name, before.value));
  const [saving, setSaving] = useState(false);
  const [failure, setFailure] = useState<string>();
  const id = useId();
  const fault = before
    ? undefined
    : nameFault(
        now.name,
        all.filter(({ scope }) => scope === now.scope).map(({ name }) => name),
      );
  const change = (changes: Partial<Variable>) => setNow({ ...now, ...changes });
  /** Asks before Esc, which is easily pressed by accident, discards changes. */
  async function leave() {
    const changed = now.value !== (before?.value ?? '') || (!before && now.name !== '');
    const question = {
      title: t('hosts.discardTitle'),
      body: t('variables.discardBody'),
      verb: t('hosts.discard'),
      danger: true,
    };
    if (!changed || (await confirm(question))) onClose();
  }
  async function save() {
    setSaving(true);
    // An installer may have extended the value since it was read.
    await variables.reload();
    const stored = variables.get().data?.find((one) => variableKey(one) === variableKey(now))?.value;
    if (stored === before?.value || (await overwrite(now.name, stored))) {
      const failed = await saveVariable(now);
      if (!failed) return onClose();
      setFailure(failed);
    }
    setSaving(false);
  }
  return (
    <Dialog
      title={before ? `${before.name} (${scopeText(before)})` : t('variables.add')}
      onClose={() => void leave()}
      actions={
        <>
          <Button onClick={onClose}>{t('app.cancel')}</Button>
          <Button
            kind="primary"
            disabled={saving || fault !== undefined || now.value === before?.value}
            onClick={() => void save()}
          >
            {t('hosts.save')}
          </Button>
        </>
      }
    >
      <div class="variable">
        {!before && <NewVariable id={id} now={now} fault={fault} change={change} />}
        <div class="variable-head">
          <label for={raw ? `${id}-value` : undefined}>{t('variables.value')}</label>
          <button type="button" class="link" onClick={() => setRaw(!raw)}>
            {t(raw ? 'variables.asList' : 'variables.asText')}
          </button>
        </div>
        {raw ? (
          <textarea
            id={`${id}-value`}
            data-first
            rows={5}
            spellcheck={false}
            value={now.value}
            onInput={(event) => change({ value: event.currentTarget.value.replace(/\n/g, '') })}
          />
        ) : (
          <Entries all={all} value={now.value} onChange={(value) => change({ value })} />
        )}
        {failure && <p role="alert">{failure}</p>}
      </div>
    </Dialog>
  );
}

interface NewVariableProps {
  id: string;
  now: Variable;
  fault: ReturnType<typeof nameFault>;
  change(changes: Partial<Variable>): void;
}

function NewVariable({ id, now, fault, change }: NewVariableProps) {
  return (
    <>
      <label for={`${id}-scope`}>{t('app.scope')}</label>
      <select
        id={`${id}-scope`}
        value={now.scope}
        onChange={(event) => change({ scope: event.currentTarget.value as Variable['scope'] })}
      >
        {scopes.map((scope) => (
          <option value={scope}>{scopeText({ scope })}</option>
        ))}
      </select>
      <label for={`${id}-name`}>{t('app.name')}</label>
      <input
        id={`${id}-name`}
        data-first
        type="text"
        spellcheck={false}
        value={now.name}
        onInput={(event) => change({ name: event.currentTarget.value })}
      />
      {fault && fault !== 'empty' && (
        <p class="small" role="alert">
          {t(`variables.${fault}`)}
        </p>
      )}
    </>
  );
}
