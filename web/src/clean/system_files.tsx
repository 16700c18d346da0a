import { exactBytes, formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { Card } from '../kit/card.tsx';
import { DataView } from '../kit/data_view.tsx';
import { errorText } from '../kit/error_text.ts';
import { usePending } from '../kit/hooks.ts';
import { Switch } from '../kit/switch.tsx';
import { toast } from '../kit/toast.tsx';
import { ServiceMark } from '../shell/service_mark.tsx';
import { systemFiles } from './cleaning.ts';

export function SystemFiles() {
  return (
    <Card title={t('system.title')} class="at-system">
      <DataView source={systemFiles}>
        {(files) => (
          <>
            {(['hiberfil', 'pagefile', 'swapfile'] as const).map((file) => (
              <div class="row line system-file" key={file}>
                <span>
                  <strong>{t(`system.${file}`)}</strong>
                  <span class="muted small">{t(`system.${file}.about`)}</span>
                </span>
                <span class="system-size" title={exactBytes(files[file].size)}>
                  {files[file].exists ? formatBytes(files[file].size) : t('system.absent')}
                </span>
              </div>
            ))}
            <div class="row line">
              <span>
                <strong>
                  {t('system.hibernation')}
                  <ServiceMark />
                </strong>
                <span class="muted small">{t('system.hibernation.about')}</span>
              </span>
              <HibernationSwitch on={files.hiberfil.enabled} />
            </div>
          </>
        )}
      </DataView>
    </Card>
  );
}

async function setHibernation(enabled: boolean) {
  try {
    await host.request('setHibernation', { enabled });
    toast(enabled ? t('system.hibernationOn') : t('system.hibernationOff'));
  } catch (error) {
    const reason = errorText(error, t('service.refused'));
    toast(t('system.hibernationFailed', { reason }), { error: true });
  }
  await systemFiles.reload();
}

function HibernationSwitch({ on }: { on: boolean }) {
  return <Switch label={t('system.hibernation')} {...usePending(on, setHibernation)} />;
}
