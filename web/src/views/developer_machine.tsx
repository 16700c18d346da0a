import { useMemo, useState } from 'preact/hooks';
import { host } from '../bridge/host.ts';
import { readService, type DevService } from '../lib/services.ts';
import { createSource } from '../lib/source.ts';
import { createStore } from '../lib/store.ts';
import { locale, t } from '../text/text.ts';
import { DataView, Notice } from '../ui/data_view.tsx';
import { confirm } from '../ui/dialog.tsx';
import { errorText, explained } from '../ui/error_text.ts';
import { useStore } from '../ui/hooks.ts';
import { Table, type Column } from '../ui/table.tsx';
import { toast } from '../ui/toast.tsx';

const timeoutMs = 120_000;

type ServiceRow = DevService & { key: number };

export const services = createSource(async () => {
  const reply = await explained(host.request('getDevServices', undefined, timeoutMs), () =>
    t('services.refused'),
  );
  return reply.services.map((element, key): ServiceRow => ({ ...readService(element), key }));
});

/** The service that a command is under way for: one at a time. */
const commanded = createStore<ServiceRow | undefined>(undefined);

const knownCommands = ['start', 'stop', 'restart'] as const;
const isKnown = (command: string): command is (typeof knownCommands)[number] =>
  knownCommands.includes(command as never);
const commandText = (command: string) => (isKnown(command) ? t(`services.${command}`) : command);

async function control(service: ServiceRow, command: string) {
  const { title, type = '' } = service;
  const verb = commandText(command);
  const question = {
    title: t('services.title', { verb, title }),
    body: isKnown(command) ? t('services.body') : '',
    verb,
  };
  if (commanded.get() || (command !== 'start' && !(await confirm(question)))) return;
  commanded.set(service);
  let missing = false;
  const stop = host.on('show_service_error_modal', () => (missing = true));
  try {
    await host.request('controlDevService', { service_type: type, command }, timeoutMs);
    toast(t('services.done', { verb, title }));
  } catch (error) {
    toast(t('services.failed', { verb, title, reason: errorText(error, t('services.refused')) }), {
      error: true,
    });
  }
  stop();
  if (!missing) await services.reload(); // else its dialog would only open a second time
  commanded.set(undefined);
}

export function Services() {
  const list = useStore(services);
  const busy = useStore(commanded);
  const language = locale();
  const columns = useMemo<Column<ServiceRow>[]>(
    () => [
      { id: 'title', title: t('services.name'), value: ({ title }) => title, width: '28%' },
      {
        id: 'status',
        title: t('devices.status'),
        value: ({ status }) => status,
        cell: ({ key, status }) =>
          key === busy?.key ? (
            <span class="spinner" role="img" aria-label={t('diagnostics.running')} />
          ) : (
            status && <span class={status === 'running' ? 'tag tag-good' : 'tag'}>{status}</span>
          ),
        width: '10rem',
      },
      { id: 'facts', title: t('services.facts'), value: ({ facts }) => facts },
      {
        id: 'commands',
        title: t('services.commands'),
        value: ({ commands }) => commands.join(', '),
        cell: (service) =>
          service.type !== undefined &&
          service.commands.map((command) => (
            <button
              key={command}
              type="button"
              class="link"
              aria-disabled={busy !== undefined}
              onClick={() => void control(service, command)}
            >
              {commandText(command)}
            </button>
          )),
        width: '16rem',
      },
    ],
    [language, busy],
  );
  return (
    <DataView
      source={list}
      reload={() => void services.reload()}
      empty={{
        when: (rows) => rows.length === 0,
        notice: <Notice icon="service" title={t('services.none')} />,
      }}
    >
      {(rows) => (
        <Table
          label={t('developer.services')}
          rows={rows}
          rowKey={({ key }) => key}
          columns={columns}
          sort={{ column: 'title', descending: false }}
        />
      )}
    </DataView>
  );
}

interface Device {
  key: number;
  name: string;
  group: string;
  status: string;
}

export const devices = createSource(async () => {
  const reply = await explained(host.request('getPnpDevices', undefined, timeoutMs), () =>
    t('devices.refused'),
  );
  // Windows writes the classes in capitals, the host names what has none "System".
  return reply.devices.map((one, key): Device => ({
    key,
    name: String(one.FriendlyName),
    group: String(one.Class).toUpperCase(),
    status: String(one.Status),
  }));
});

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
