import { appendLines, percentOf, type Line } from '../base/lines.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { currentSettings, saveSettings } from '../shell/settings.ts';
import type { Settings } from '../shell/settings_document.ts';

export const repairs = ['flush-dns', 'rebuild-icons', 'sfc', 'safemode-reboot'] as const;
export type Repair = (typeof repairs)[number];

/** Ends safe mode. For the command prompt, because PowerShell interprets the braces itself. */
export const leaveSafeMode = 'bcdedit /deletevalue {current} safeboot';

export interface RepairState {
  /** When the running repair began (ms since the epoch). */
  since?: number;
  /** When the tool last printed something (ms since the epoch). */
  lastOutput?: number;
  percent?: number;
  lines?: readonly Line[];
  /** Result of the last run in this session. */
  result?: Settings['repairResults'][string];
}

/** Outlives the view, because the file check takes many minutes. */
export const repairStates = createStore<Readonly<Partial<Record<Repair, RepairState>>>>({});

const put = (repair: Repair, state: RepairState) =>
  repairStates.set({ ...repairStates.get(), [repair]: state });

function end(repair: Repair, good: boolean, text: string) {
  const { lines } = repairStates.get()[repair] ?? {};
  const result = { good, text, at: Date.now() };
  put(repair, { ...(lines && { lines }), result });
  saveSettings({ repairResults: { ...currentSettings().repairResults, [repair]: result } }, null);
}

export function startRepair(repair: Repair) {
  if (repairStates.get()[repair]?.since !== undefined) return;
  if (repair === 'sfc') startFileCheck();
  else void runRepair(repair);
}

async function runRepair(type: Exclude<Repair, 'sfc'>) {
  put(type, { since: Date.now() });
  try {
    const { message } = await host.request('quickAction', { type });
    // Emptying the cache never reports a failure, but without output the tool did not run.
    const text = message.trim().replace(/\s*\n\s*/g, '\n');
    end(type, text !== '', text || t('repair.silent'));
  } catch (error) {
    end(type, false, errorText(error) + (type === 'rebuild-icons' ? `\n${t('repair.noShell')}` : ''));
  }
}

let endFileCheck: (good: boolean, text: string) => void = () => {};

/** Gives up the file check, because the service can disappear without reporting an end. */
export function abandonFileCheck() {
  endFileCheck(false, t('repair.noEnd'));
}

function startFileCheck() {
  const since = Date.now();
  let startedId = -1;
  const stop = host.on('sfc_stream', ({ requestId, streamType, message = '', code }) => {
    if (requestId !== startedId) return;
    if (streamType === 'exit') return endFileCheck(code === 0, message);
    const lines = appendLines(repairStates.get().sfc?.lines ?? [], [{ text: message, isProgress: true }]);
    const percent = percentOf(message);
    put('sfc', { since, lastOutput: Date.now(), lines, ...(percent !== undefined && { percent }) });
  });
  endFileCheck = (good, text) => {
    stop();
    endFileCheck = () => {};
    end('sfc', good, text);
  };
  put('sfc', { since, lastOutput: since });
  try {
    startedId = host.start('quickAction', { type: 'sfc' });
  } catch (error) {
    endFileCheck(false, errorText(error));
  }
}
