import { distinctBy } from '../base/distinct.ts';
import { createSource } from '../base/source.ts';
import { host } from '../bridge/host.ts';
import type { Reply } from '../bridge/protocol.ts';
import { parseApp, parseUpdate, type Package } from './package_rows.ts';

export const packageKey = ({ id, name, version }: Package) => `${id}\n${name}\n${version}`;

/** Parses the rows and drops repeats, because the tool can print a row twice. */
export const toUpdates = (rows: Reply<'getSoftwareUpdates'>['updates']) =>
  distinctBy(rows.map(parseUpdate), packageKey);

export type Drivers = Pick<Reply<'getDriverUpdates'>, 'updates' | 'scannedDriversCount'>;

export const updates = createSource(async () =>
  toUpdates((await host.request('getSoftwareUpdates')).updates),
);
export const drivers = createSource<Drivers>(() => host.request('getDriverUpdates'));
export const apps = createSource(async () =>
  distinctBy((await host.request('getInstalledApps')).apps.map(parseApp), packageKey),
);

export const lists = { updates, installed: apps, drivers };
export type List = keyof typeof lists;
