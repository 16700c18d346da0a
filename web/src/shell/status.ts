import { createSource } from '../base/source.ts';
import { host } from '../bridge/host.ts';
import { route } from './navigation.ts';

/**
 * Elevation, helper service and hardware facts. The host pushes them after every load of the page, and once more when
 * the service comes up in the next 30 s; they are asked for only when the push does not come, when the user wants them
 * fresh, and, as long as the service is missing, when the user comes to another view or back to the window.
 */
export const status = createSource(() => host.request('getStatus'));

const pushGraceMs = 2000;

const lookDelayMs = 2000;

// Not at once: the host answers on its window's thread, and what the new view asks for goes first.
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
