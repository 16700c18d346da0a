import { BridgeError } from '../bridge/bridge.ts';
import { t } from '../text/text.ts';

/** What to tell the user about a failure: the host's own words when it gave any, `unexplained` when it refused without. */
export function errorText(error: unknown, unexplained = t('error.refused')): string {
  if (!(error instanceof BridgeError)) return t('error.unknown');
  return error.kind === 'refused' ? error.reason || unexplained : t(`error.${error.kind}`);
}
