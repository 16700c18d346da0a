import { t } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { status } from './status.ts';

/** Marks a name that needs the helper service while that is not running. Its tool tip gives the reason. */
export function ServiceMark() {
  const missing = useStore(status, ({ data }) => data?.serviceActive === false);
  if (!missing) return null;
  return (
    <span class="service-mark" role="img" aria-label={t('service.needed')} title={t('service.needed')}>
      <Icon name="service" />
    </span>
  );
}
