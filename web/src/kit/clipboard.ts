import { t } from '../base/text.ts';
import { toast } from './toast.tsx';

export async function copyText(text: string) {
  try {
    await navigator.clipboard.writeText(text);
    toast(t('app.copied'));
  } catch {
    toast(t('app.copyFailed'), { error: true });
  }
}
