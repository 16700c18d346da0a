import { createSource } from '../base/source.ts';
import { host } from '../bridge/host.ts';
import { route } from './navigation.ts';

/**
 * Elevation, helper service and hardware facts. The host pushes them after every load of the page, and once
 * more if the service starts within the next 30 s. The page requests them only if the push does not come,
 * if the user wants fresh ones, or, while the service is missing, when the user opens another view or
 * returns to the window.
 */
export const status = createSource(() => host.request('getStatus'));

const pushGraceMs = 2000;

const lookDelayMs = 2000;

// Waits a little, because the host answers on its window's thread and the new view's own requests go
// first.
let look: ReturnType<typeof setTimeout> | undefined;
function lookForService() {
  clearTimeout(look);
  look = setTimeout(() => {
    if (status.get().data?.serviceActive === false) void status.reload();
  }, lookDelayMs);
}

export function startStatus() {
  host.on('status', status.put);
  setTimeout(() => {
    if (status.get().phase === 'idle') void status.reload();
  }, pushGraceMs);
  route.subscribe(lookForService);
  addEventListener('focus', lookForService);
}
