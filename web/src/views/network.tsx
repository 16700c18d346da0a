import { useEffect, useMemo } from 'preact/hooks';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';
import { reachOf } from '../lib/network.ts';
import { createSource } from '../lib/source.ts';
import { diagnostics, runTool, setTarget, stopShowing } from '../state/diagnostics.ts';
import { processes, showProcess } from '../state/processes.ts';
import { locale, t } from '../text/text.ts';
import { Button } from '../ui/button.tsx';
import { Card } from '../ui/card.tsx';
import { copyText } from '../ui/clipboard.ts';
import { DataView, Notice } from '../ui/data_view.tsx';
import { useElapsed, useStore } from '../ui/hooks.ts';
import { Icon } from '../ui/icon.tsx';
import { Table, type Column } from '../ui/table.tsx';
import { ToolLog } from '../ui/tool_log.tsx';
import { View } from '../ui/view.tsx';

type Port = Message<'getOpenPorts'>['ports'][number];

const portsTimeoutMs = 60_000;

/** The tool can print a row twice. */
const portKey = ({ proto, local, pid }: Port) => `${proto} ${local} ${pid}`;

const ports = createSource(async () => {
  const list = (await host.request('getOpenPorts', undefined, portsTimeoutMs)).ports;
  return [...new Map(list.map((port) => [portKey(port), port])).values()];
});

function reload() {
  void ports.reload();
  void processes.reload();
}

export function Network() {
  const list = useStore(ports);
  useEffect(reload, []);
  return (
    <View id="network" refresh={reload} at={list.at}>
      <div class="network">
        <Card title={t('network.ports')} aside={<span class="muted">{t('network.portsHint')}</span>}>
          <DataView
            source={list}
            reload={reload}
            empty={{
              when: (rows) => rows.length === 0,
              notice: (
                <Notice icon="network" title={t('network.none')}>
                  <p>{t('network.noneHint')}</p>
                </Notice>
              ),
            }}
          >
            {(rows) => <Ports rows={rows} />}
          </DataView>
        </Card>
        <Diagnostics />
      </div>
    </View>
  );
}

const tags = { machine: 'tag tag-good', all: 'tag tag-warn', address: 'tag' };

function Ports({ rows }: { rows: Port[] }) {
  const running = useStore(processes).data;
  const language = locale();
  const columns = useMemo<Column<Port>[]>(() => {
    const names = new Map(running?.map(({ pid, name }) => [String(pid), name]));
    return [
      {
        id: 'port',
        title: t('network.port'),
        value: ({ port }) => Number(port),
        text: ({ port }) => port,
        numeric: true,
        width: '5rem',
      },
      { id: 'local', title: t('network.address'), value: ({ local }) => local },
      {
        id: 'reach',
        title: t('network.reach'),
        value: ({ local }) => t(`reach.${reachOf(local)}`),
        cell: ({ local }) => (
          <span class={tags[reachOf(local)]} title={t(`reach.${reachOf(local)}.hint`)}>
            {t(`reach.${reachOf(local)}`)}
          </span>
        ),
        width: '10rem',
      },
      {
        id: 'process',
        title: t('network.process'),
        value: ({ pid }) => `${names.get(pid) ?? ''} ${pid}`,
        cell: ({ pid }) => (
          <button
            type="button"
            class="link"
            title={t('network.show', { pid })}
            onClick={() => void showProcess(Number(pid))}
          >
            {pid} <span class="muted">{names.get(pid)}</span>
          </button>
        ),
      },
    ];
  }, [language, running]);
  return (
    <Table
      label={t('network.ports')}
      rows={rows}
      rowKey={portKey}
      columns={columns}
      sort={{ column: 'port', descending: false }}
      onActivate={({ pid }) => void showProcess(Number(pid))}
      menu={([port]) =>
        port
          ? [
              {
                label: t('network.show', { pid: port.pid }),
                icon: 'processes',
                run: () => void showProcess(Number(port.pid)),
              },
              { label: t('network.copy'), icon: 'copy', run: () => void copyText(port.local) },
            ]
          : []
      }
    />
  );
}

function Diagnostics() {
  const { ends, run, target, recent } = useStore(diagnostics);
  const seconds = useElapsed(ends.shown ? run?.since : undefined);
  const idle = ends.shown || target.trim() === '';
  return (
    <Card title={t('diagnostics.title')} class="diagnostics">
      <form
        class="buttons"
        onSubmit={(event) => {
          event.preventDefault();
          runTool('ping');
        }}
      >
        <input
          type="text"
          aria-label={t('diagnostics.target')}
          placeholder={t('diagnostics.target')}
          spellcheck={false}
          value={target}
          onInput={(event) => setTarget(event.currentTarget.value)}
        />
        <Button kind="primary" disabled={idle} onClick={() => runTool('ping')}>
          {t('diagnostics.ping')}
        </Button>
        <Button disabled={idle} onClick={() => runTool('dns')}>
          {t('diagnostics.dns')}
        </Button>
      </form>
      {recent.length > 0 && (
        <p class="buttons small">
          <span class="muted">{t('diagnostics.recent')}</span>
          {recent.map((one) => (
            <button key={one} type="button" class="link" onClick={() => setTarget(one)}>
              {one}
            </button>
          ))}
        </p>
      )}
      {!run ? (
        <Notice icon="network" title={t('diagnostics.none')}>
          <p>{t('diagnostics.noneHint')}</p>
        </Notice>
      ) : (
        <>
          <div class="diagnostics-state">
            {run.outcome ? <Icon name={run.outcome.icon} /> : <span class="spinner" aria-hidden="true" />}
            <p>
              <strong>{`${t(`diagnostics.${run.tool}`)} ${run.target}`}</strong>
              <span>
                <span role="status">
                  {run.outcome?.text ?? t(ends.mixed ? 'diagnostics.owed' : 'diagnostics.running')}
                </span>
                {ends.shown && <span class="muted"> {t('disk.seconds', { n: seconds })}</span>}
              </span>
            </p>
            {ends.shown && <Button onClick={stopShowing}>{t('diagnostics.stop')}</Button>}
          </div>
          <ToolLog label={t('diagnostics.output')} lines={run.lines} />
        </>
      )}
    </Card>
  );
}
