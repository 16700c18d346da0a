import { useEffect } from 'preact/hooks';
import type { Readable } from '../base/source.ts';
import { formatNumber, t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { Spinner } from '../kit/data_view.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { panelOf, Tabs } from '../kit/tabs.tsx';
import { openedList } from '../shell/links.ts';
import { openTerminal } from '../shell/terminal.ts';
import { View } from '../shell/view.tsx';
import { LeftoversDialog } from './leftovers_dialog.tsx';
import { apps, drivers, lists, type List } from './lists.ts';
import { DriversPanel, InstalledPanel, UpdatesPanel } from './lists.tsx';
import { QueuePanel } from './queue_panel.tsx';
import { scan, startScan } from './scan.ts';
import { openSettings } from './task_list.tsx';
import { useWaiting } from './waiting.ts';

const panels = { updates: UpdatesPanel, installed: InstalledPanel, drivers: DriversPanel };

/** Returns the number of entries in each list, if known. */
function useCounts(): Record<List, number | undefined> {
  return {
    updates: useWaiting(),
    installed: useStore(apps).data?.length,
    drivers: useStore(drivers).data?.updates.length,
  };
}

export function Software() {
  const list = useStore(openedList);
  const source: Readable<unknown> = lists[list];
  const { running, failed } = useStore(scan);
  const state = useStore(source);
  const counts = useCounts();
  const Panel = panels[list];
  // Loads a list automatically if it takes only seconds and is not part of the running scan.
  const ready = list === 'installed' || (list === 'updates' && !running && !failed);
  useEffect(() => {
    if (ready && source.get().phase === 'idle') void source.reload();
  }, [source, ready]);
  return (
    <View
      id="software"
      refresh={() => void source.reload()}
      state={running ? { phase: 'loading', since: running.since } : state}
      actions={
        <Button icon="search" disabled={running !== undefined} onClick={startScan}>
          {t('software.scan')}
        </Button>
      }
    >
      <div class="tabbed">
        <ScanState />
        <Tabs
          label={t('software.lists')}
          active={list}
          onChoose={(id: List) => openedList.set(id)}
          tabs={(['updates', 'installed', 'drivers'] as const).map((id) => ({
            id,
            title: (
              <>
                {t(`software.${id}`)}
                {counts[id] !== undefined && <span class="tag">{formatNumber(counts[id])}</span>}
              </>
            ),
          }))}
        />
        <div class="tab-panel" role="tabpanel" id={panelOf(list)} aria-label={t(`software.${list}`)}>
          <Panel />
        </div>
        <QueuePanel />
      </div>
      <LeftoversDialog />
    </View>
  );
}

/** Shows the progress of the scan, or why it did not finish. */
function ScanState() {
  const { running, failed } = useStore(scan);
  const seconds = useElapsed(running?.since);
  if (!running && !failed) return null;
  return (
    <div class="banner" role={failed && 'alert'} data-testid="scan">
      {running ? <Spinner /> : <Icon name="alert" />}
      <p>
        {failed && t(`scan.failed.${failed}`)}
        {running && (
          <>
            <span role="status">
              {running.found === undefined ? t('scan.apps') : t('scan.drivers', { n: running.found })}
            </span>{' '}
            <span class="muted">{t('app.seconds', { n: seconds })}</span>
          </>
        )}
      </p>
      {(failed === 'drivers' || failed === 'error') && (
        <Button icon="settings" onClick={() => openSettings('ms-settings:windowsupdate')}>
          {t('scan.windowsUpdate')}
        </Button>
      )}
      <Button kind="quiet" icon="terminal" onClick={() => openTerminal(true)}>
        {t('scan.log')}
      </Button>
      {failed && <IconButton icon="close" label={t('app.close')} onClick={() => scan.set({})} />}
    </div>
  );
}
