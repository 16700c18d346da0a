import { useEffect } from 'preact/hooks';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import { panelOf, Tabs } from '../kit/tabs.tsx';
import { View } from '../shell/view.tsx';
import { devices } from './devices.ts';
import { Devices } from './devices.tsx';
import { draft, hosts, reloadHosts } from './hosts.ts';
import { Hosts } from './hosts.tsx';
import { services } from './services.ts';
import { Services } from './services.tsx';
import { variables } from './variables.ts';
import { Variables } from './variables.tsx';

const parts = {
  hosts: { source: hosts, reload: reloadHosts, Panel: Hosts },
  variables: { source: variables, reload: variables.reload, Panel: Variables },
  services: { source: services, reload: services.reload, Panel: Services },
  devices: { source: devices, reload: devices.reload, Panel: Devices },
};
type Part = keyof typeof parts;

const shown = createStore<Part>('hosts');

export function Developer() {
  const part = useStore(shown);
  const unsaved = useStore(draft) !== undefined;
  const { source, reload, Panel } = parts[part];
  const { at } = useStore<{ at?: number }>(source);
  // Asked for when it is looked at, until it is there: two of them need the helper service or many seconds.
  useEffect(() => {
    if (!(source.get() as { data?: unknown }).data) void source.reload();
  }, [source]);
  return (
    <View id="developer" refresh={reload as () => void} at={at}>
      <div class="software">
        <Tabs
          label={t('view.developer')}
          active={part}
          onChoose={(id: Part) => shown.set(id)}
          tabs={(Object.keys(parts) as Part[]).map((id) => ({
            id,
            title: (
              <>
                {t(`developer.${id}`)}
                {id === 'hosts' && unsaved && <span class="tag tag-warn">{t('hosts.unsaved')}</span>}
              </>
            ),
          }))}
        />
        <div class="software-list" role="tabpanel" id={panelOf(part)} aria-label={t(`developer.${part}`)}>
          <Panel key={part} />
        </div>
      </div>
    </View>
  );
}
