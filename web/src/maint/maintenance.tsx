import { useEffect, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { useStore } from '../kit/hooks.ts';
import { View } from '../shell/view.tsx';
import { RepairCard } from './repair_card.tsx';
import { repairs } from './repairs.ts';
import { checkForUpdate, uninstallVarnel, update } from './update.ts';
import { UpdateCard } from './update_card.tsx';

const check = () => void checkForUpdate();

export function Maintenance() {
  const state = useStore(update);
  useEffect(() => {
    if (state.phase === 'idle') check();
  }, []);
  // The card grows when the answer arrives. Above the repairs, it would then move them under the pointer.
  const [offered] = useState(state.data?.hasUpdate);
  const own = (
    <>
      <UpdateCard />
      <Card title={t('remove.title')} class="at-remove">
        <p class="muted">{t('remove.about')}</p>
        <Button icon="remove" onClick={() => void uninstallVarnel()}>
          {t('remove.verb')}
        </Button>
      </Card>
    </>
  );
  return (
    <View id="maintenance" refresh={check} state={state}>
      <div class="maintenance">
        {offered && own}
        {repairs.map((repair) => (
          <RepairCard key={repair} repair={repair} />
        ))}
        {!offered && own}
      </div>
    </View>
  );
}
