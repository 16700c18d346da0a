import { host } from '../bridge/host.ts';
import { createSource } from '../lib/source.ts';

/**
 * Elevation, helper service and hardware facts. The host pushes them after every load of the page, and once more when
 * the service has come up; they are asked for only when the push does not come, or when the user wants them fresh.
 */
export const status = createSource(() => host.request('getStatus'));

const kPushGraceMs = 2000;

export function startStatus() {
  host.on('status', status.put);
  setTimeout(() => {
    if (status.get().phase === 'idle') void status.reload();
  }, kPushGraceMs);
}
