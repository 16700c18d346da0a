import { distinctBy } from '../base/distinct.ts';
import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';
import { leadToRow } from '../kit/table/memory.ts';
import { processes } from '../shell/processes.ts';

export type Port = Message<'getOpenPorts'>['ports'][number];

export type Reach = 'machine' | 'all' | 'address';

/** Returns from where a listening address ("127.0.0.1:80", "[::1]:80") can be reached. */
export function reachOf(local: string): Reach {
  const host = local
    .slice(0, local.lastIndexOf(':'))
    .replace(/^\[|\]$/g, '')
    .replace(/^::ffff:(?=\d+\.)/i, '');
  if (host === '0.0.0.0' || host === '::') return 'all';
  return host === '::1' || /^127\./.test(host) ? 'machine' : 'address';
}

export const portKey = ({ proto, local, pid }: Port) => `${proto} ${local} ${pid}`;

/** The tool can print a row twice, so repeats are dropped. */
export const ports = createSource(async () =>
  distinctBy((await host.request('getOpenPorts')).ports, portKey),
);

/** Shows a port in its table, even if another process has it by now. */
export async function leadToPort(port: Port) {
  leadToRow('ports', portKey(port));
  await ports.reload();
  const now = ports.get().data?.find(({ proto, local }) => proto === port.proto && local === port.local);
  if (now && portKey(now) !== portKey(port)) leadToRow('ports', portKey(now));
}

/** Reloads the ports and the names of the processes behind them. */
export function reloadPorts() {
  void ports.reload();
  void processes.reload();
}

/** Whether the list reloads automatically. */
export const followed = createStore(false);
