// The system scan, which fills all three lists.
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { createWatchdog } from '../base/watchdog.ts';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';
import { currentSettings, saveSettings, settingsDocument } from '../shell/settings.ts';
import { scanIsDue } from '../shell/settings_document.ts';
import { openTerminal } from '../shell/terminal.ts';
import { apps, drivers, toUpdates, updates } from './lists.ts';
import { notifyElsewhere } from './notify.ts';

const silenceMs = 240_000;
const dueCheckMs = 60_000;

interface Scan {
  running?: {
    since: number; // ms since the epoch
    /** Number of updates found, once the driver tool is running. */
    found?: number;
  };
  failed?: 'silent' | 'error' | 'drivers' | 'absent';
}

export const scan = createStore<Scan>({});

/** Starts the scan, which ends with its message or after a long silence. */
export function startScan() {
  if (scan.get().running) return;
  let startedId = -1;
  const watchdog = createWatchdog(silenceMs, () => end('silent'));
  const stops = [watchdog.stop, host.on('console_log', watchdog.reset), host.on('scan_progress', onProgress)];
  function end(failed?: NonNullable<Scan['failed']>) {
    for (const stop of stops) stop();
    scan.set(failed ? { failed } : {});
    notifyElsewhere(t(failed ? 'scan.failed' : 'scan.done'), failed !== undefined);
  }
  function onProgress(message: Message<'scan_progress'>) {
    if (message.requestId !== startedId) return;
    watchdog.reset();
    const { running } = scan.get();
    if (message.softwareCount !== undefined && running) {
      scan.set({ running: { ...running, found: message.softwareCount } });
      void apps.reload(); // the package tool is free now
    }
    if (message.status !== 'done') return;
    const onlyDrivers = running?.found !== undefined;
    end(message.success ? undefined : onlyDrivers ? 'drivers' : 'error');
    if (!message.success) {
      if (onlyDrivers) void updates.reload(); // the host sends no list if the drivers fail
      return;
    }
    updates.put(toUpdates(message.software ?? []));
    drivers.put({ updates: message.drivers ?? [], scannedDriversCount: message.scannedDriversCount ?? 0 });
    saveSettings({ lastScan: Date.now() }, null);
  }
  try {
    startedId = host.start('startSystemScan', {});
    scan.set({ running: { since: Date.now() } });
    watchdog.reset();
    if (currentSettings().autoOpen) openTerminal(true);
  } catch {
    end('absent');
  }
}

/** Scans automatically at program start and at intervals, if the settings say so. */
export function startAutoScan() {
  let tried = 0; // a failed scan is not repeated at every check
  const check = () => {
    if (!settingsDocument.get().data) return;
    const settings = currentSettings();
    if (!scanIsDue({ ...settings, lastScan: tried || settings.lastScan }, Date.now())) return;
    tried = Date.now();
    startScan();
  };
  const stop = settingsDocument.subscribe(() => {
    if (!settingsDocument.get().data) return;
    stop();
    check();
  });
  setInterval(check, dueCheckMs);
}
