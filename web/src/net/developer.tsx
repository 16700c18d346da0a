import type { ComponentType } from 'preact';
import { useEffect } from 'preact/hooks';
import type { Readable } from '../base/source.ts';
import { t } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import { panelOf, Tabs } from '../kit/tabs.tsx';
import { unsaved } from '../shell/busy.ts';
import { status } from '../shell/status.ts';
import { View } from '../shell/view.tsx';
import { loadUnasked, openedPart, type Part } from './developer.ts';
import { devices } from './devices.ts';
import { Devices } from './devices.tsx';
import { hosts, reloadHosts } from './hosts.ts';
import { Hosts } from './hosts.tsx';
import { services } from './services.ts';
import { Services } from './services.tsx';
import { variables } from './variables.ts';
import { Variables } from './variables.tsx';

const parts: Record<Part, { source: Readable<unknown>; reload?: () => Promise<void>; Panel: ComponentType }> =
  {
    hosts: { source: hosts, reload: reloadHosts, Panel: Hosts },
    variables: { source: variables, Panel: Variables },
    services: { source: services, Panel: Services },
    devices: { source: devices, Panel: Devices },
  };

export function Developer() {
  const part = useStore(openedPart);
  const edited = useStore(unsaved);
  const { source, reload = source.reload, Panel } = parts[part];
  const state = useStore(source);
  // Requests a list only once the user looks at it, and only until it is there: two of them need the
  // helper service or many seconds. Without the service, requesting the list of services would open the
  // service dialog, so it waits for the service or the user.
  const active = useStore(status, ({ data }) => data?.serviceActive === true);
  const wanted = source !== services || active;
  useEffect(() => {
    if (wanted && !source.get().data) loadUnasked(source);
  }, [source, wanted]);
  return (
    <View id="developer" refresh={() => void reload()} state={state}>
      <div class="tabbed">
        <Tabs
          label={t('view.developer')}
          active={part}
          onChoose={(id: Part) => openedPart.set(id)}
          tabs={(Object.keys(parts) as Part[]).map((id) => ({
            id,
            title: (
              <>
                {t(`developer.${id}`)}
                {id === 'hosts' && edited && <span class="tag tag-warn">{t('hosts.unsaved')}</span>}
              </>
            ),
          }))}
        />
        <div class="tab-panel" role="tabpanel" id={panelOf(part)} aria-label={t(`developer.${part}`)}>
          <Panel key={part} />
        </div>
      </div>
    </View>
  );
}
