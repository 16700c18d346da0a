import { useMemo, useState } from 'preact/hooks';
import { locale, t } from '../base/text.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { Table, type Column } from '../kit/table/table.tsx';
import { devices, type Device } from './devices.ts';

const isWell = ({ status }: Device) => status === 'OK';

export function Devices() {
  const list = useStore(devices);
  const [chosen, setGroup] = useState('');
  const groups = [...new Set(list.data?.map((device) => device.group))].sort();
  const group = groups.includes(chosen) ? chosen : '';
  const language = locale();
  const columns = useMemo<Column<Device>[]>(
    () => [
      { id: 'name', title: t('devices.name'), value: ({ name }) => name },
      { id: 'group', title: t('devices.class'), value: (device) => device.group, width: '14rem' },
      {
        id: 'status',
        title: t('devices.status'),
        value: isWell,
        text: ({ status }) => status,
        cell: (device) => <span class={isWell(device) ? 'muted' : 'tag tag-danger'}>{device.status}</span>,
        width: '10rem',
      },
    ],
    [language],
  );
  return (
    <DataView
      source={list}
      reload={() => void devices.reload()}
      empty={{
        when: (rows) => rows.length === 0,
        notice: (
          <Notice icon="developer" title={t('devices.none')}>
            <p>{t('devices.noneHint')}</p>
          </Notice>
        ),
      }}
    >
      {(rows) => (
        <Table
          label={t('developer.devices')}
          rows={group === '' ? rows : rows.filter((device) => device.group === group)}
          rowKey={({ key }) => key}
          columns={columns}
          sort={{ column: 'status', descending: false }}
          tools={
            <>
              <span class="muted small">{t('devices.hint')}</span>
              <select
                aria-label={t('devices.class')}
                value={group}
                onChange={(event) => setGroup(event.currentTarget.value)}
              >
                <option value="">{t('devices.all')}</option>
                {groups.map((one) => (
                  <option key={one} value={one}>
                    {one}
                  </option>
                ))}
              </select>
            </>
          }
        />
      )}
    </DataView>
  );
}
