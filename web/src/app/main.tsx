import { render } from 'preact';
import { host } from '../bridge/host.ts';
import { startCleaning } from '../clean/cleaning.ts';
import { toast } from '../kit/toast.tsx';
import { startDeveloper } from '../net/developer.ts';
import { startDiagnostics } from '../net/diagnostics.ts';
import { startServiceDialog } from '../shell/service.tsx';
import { keepSorts, settingsDocument } from '../shell/settings.ts';
import { startStatus } from '../shell/status.ts';
import { telemetry } from '../shell/telemetry.ts';
import { startTerminal } from '../shell/terminal.ts';
import { startQueue } from '../software/queue.ts';
import { startAutoScan } from '../software/scan.ts';
import { App } from './app.tsx';
import './all_texts.ts';

const settingsGraceMs = 500;

startStatus();
startTerminal();
startAutoScan();
startQueue();
startCleaning();
startServiceDialog();
startDeveloper();
startDiagnostics();
host.on('error', ({ message }) => toast(message, { error: true }));

void settingsDocument.reload().then(keepSorts);
if (!document.hidden) void telemetry.reload(); // the host measures while the page is drawn

// The skeleton stays, for a limited time, until theme and language are known, so that the user sees
// neither change.
const grace = new Promise((resolve) => setTimeout(resolve, settingsGraceMs));
void Promise.race([settingsDocument.reload(), grace]).then(() => {
  const root = document.getElementById('app')!;
  root.replaceChildren();
  render(<App />, root);
});
