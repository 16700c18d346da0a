import { useMemo } from 'preact/hooks';
import { t } from '../base/text.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import type { Column } from '../kit/table/column.ts';
import { Table } from '../kit/table/table.tsx';
import { deviceClass, devices, type Device } from './devices.ts';

const isWell = ({ status }: Device) => status === 'OK';

const columns: Column<Device>[] = [
  { id: 'name', title: 'devices.name', value: ({ name }) => name },
  { id: 'group', title: 'devices.class', value: (device) => device.group, width: '14rem' },
  {
    id: 'status',
    title: 'devices.status',
    value: isWell,
    text: ({ status }) => status,
    cell: (device) => <span class={isWell(device) ? 'muted' : 'tag tag-danger'}>{device.status}</span>,
    width: '10rem',
  },
];

export function Devices() {
  return (
    <DataView
      source={devices}
      nothing={<Notice icon="developer" title={t('devices.none')} hint={t('devices.noneHint')} />}
    >
      {(all) => <DeviceTable all={all} />}
    </DataView>
  );
}

function DeviceTable({ all }: { all: Device[] }) {
  const chosen = useStore(deviceClass);
  const groups = [...new Set(all.map((device) => device.group))].sort();
  const group = groups.includes(chosen) ? chosen : '';
  const rows = useMemo(() => all.filter((device) => group === '' || device.group === group), [all, group]);
  return (
    <Table
      label={t('developer.devices')}
      rows={rows}
      rowKey={({ key }) => key}
      columns={columns}
      remember="devices"
      sort={{ column: 'status', descending: false }}
      tools={
        <>
          <span class="muted small">{t('devices.hint')}</span>
          <select
            aria-label={t('devices.class')}
            value={group}
            onChange={(event) => deviceClass.set(event.currentTarget.value)}
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
  );
}
