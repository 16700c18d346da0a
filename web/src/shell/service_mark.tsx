import { t } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { status } from './status.ts';

/** Stands beside the name of what needs the helper service, as long as that is not running; its tool tip says why. */
export function ServiceMark() {
  const missing = useStore(status, ({ data }) => data?.serviceActive === false);
  if (!missing) return null;
  return (
    <span class="service-mark" role="img" aria-label={t('service.needed')} title={t('service.needed')}>
      <Icon name="service" />
    </span>
  );
}
