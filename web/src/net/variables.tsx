import { useEffect, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { confirm } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { ListView } from '../kit/list_view.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { ServiceMark } from '../shell/service_mark.tsx';
import { VariableDialog } from './variable_dialog.tsx';
import { deleteVariables, scopeText, variableKey, variables, type Variable } from './variables.ts';

async function remove(list: Variable[]) {
  const agreed = await confirm({
    title: t('variables.deleteTitle', { n: list.length }),
    body: t('variables.deleteBody'),
    items: list.map((one) => `${one.name} (${scopeText(one)})`),
    listAll: true,
    verb: t('variables.delete'),
    danger: true,
  });
  if (agreed) await deleteVariables(list);
}

const columns: Column<Variable>[] = [
  { id: 'name', title: 'app.name', value: ({ name }) => name, width: '16rem' },
  {
    id: 'scope',
    title: 'app.scope',
    value: scopeText,
    cell: (one) => (
      <>
        {scopeText(one)}
        {one.scope === 'system' && <ServiceMark />}
      </>
    ),
    width: '9rem',
    drop: 1,
  },
  { id: 'value', title: 'variables.value', value: ({ value }) => value },
];

export function Variables() {
  const { data = [] } = useStore(variables);
  const selection = useSelection('variables');
  const [opened, setOpened] = useState<Variable | 'new'>();
  useEffect(() => void variables.reload(), []);
  const chosen = data.filter((one) => selection[0].keys.has(variableKey(one)));
  return (
    <>
      <ListView
        source={variables}
        label={t('developer.variables')}
        columns={columns}
        rowKey={variableKey}
        remember="variables"
        sort={{ column: 'name', descending: false }}
        selection={selection}
        onActivate={(row) => setOpened(row)}
        onDelete={(rows) => void remove(rows)}
        menu={(marked) => [
          ...(marked.length === 1 ? [{ label: t('variables.edit'), run: () => setOpened(marked[0]!) }] : []),
          { label: t('variables.delete'), icon: 'remove', danger: true, run: () => void remove(marked) },
        ]}
        tools={
          <>
            <Button onClick={() => setOpened('new')}>{t('variables.add')}</Button>
            <Button disabled={chosen.length !== 1} onClick={() => setOpened(chosen[0])}>
              {t('variables.edit')}
            </Button>
            <Button icon="remove" disabled={chosen.length === 0} onClick={() => void remove(chosen)}>
              {t('variables.delete')}
            </Button>
          </>
        }
      />
      {opened && (
        <VariableDialog
          key={opened === 'new' ? opened : variableKey(opened)}
          all={data}
          {...(opened !== 'new' && { before: opened })}
          onClose={() => setOpened(undefined)}
        />
      )}
    </>
  );
}
