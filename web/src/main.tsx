import { render } from 'preact';
import { App } from './app.tsx';
import { host } from './bridge/host.ts';
import { settingsDocument } from './state/settings.ts';
import { startAutoScan, startQueue } from './state/software.ts';
import { startDiagnostics } from './state/diagnostics.ts';
import { startStatus } from './state/status.ts';
import { startTerminal } from './state/terminal.ts';
import { startServiceDialog } from './ui/service.tsx';
import { toast } from './ui/toast.tsx';

const settingsGraceMs = 500;

startStatus();
startTerminal();
startAutoScan();
startQueue();
startServiceDialog();
startDiagnostics();
host.on('error', ({ message }) => toast(message, { error: true }));

// The skeleton stays until theme and language are known, so that neither is seen to change; but not for long.
const grace = new Promise((resolve) => setTimeout(resolve, settingsGraceMs));
void Promise.race([settingsDocument.reload(), grace]).then(() => {
  const root = document.getElementById('app')!;
  root.replaceChildren();
  render(<App />, root);
});
