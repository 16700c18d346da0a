import { useEffect } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Card } from '../kit/card.tsx';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { View } from '../shell/view.tsx';
import { Diagnostics } from './diagnostics.tsx';
import { ports, reloadPorts } from './ports.ts';
import { Ports } from './ports.tsx';

export function Network() {
  useEffect(reloadPorts, []);
  return (
    <View id="network" refresh={reloadPorts} state={useStore(ports)}>
      <div class="network">
        <Card title={t('network.ports')} aside={<span class="muted">{t('network.portsHint')}</span>}>
          <DataView
            source={ports}
            reload={reloadPorts}
            nothing={<Notice icon="network" title={t('network.none')} hint={t('network.noneHint')} />}
          >
            {(list) => <Ports ports={list} />}
          </DataView>
        </Card>
        <Diagnostics />
      </div>
    </View>
  );
}
