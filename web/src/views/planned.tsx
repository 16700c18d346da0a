import { t } from '../text/text.ts';
import { Notice } from '../ui/data_view.tsx';
import { View } from '../ui/view.tsx';
import type { ViewId } from './views.ts';

/** A view whose work has not been built yet: one sentence about what will be there. */
export function planned(id: Exclude<ViewId, 'dashboard' | 'cleaning' | 'software' | 'disk' | 'maintenance' | 'settings'>) {
  return function Planned() {
    return (
      <View id={id}>
        <Notice icon={id} title={t(`planned.${id}`)}>
          <p>{t('planned.note')}</p>
        </Notice>
      </View>
    );
  };
}
