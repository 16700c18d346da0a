import { BridgeError } from '../bridge/bridge.ts';
import { t } from '../text/text.ts';

/** What to tell the user about a failure: the host's own words when it gave any. */
export function errorText(error: unknown): string {
  if (error instanceof BridgeError) return error.kind === 'refused' && error.reason ? error.reason : t(`error.${error.kind}`);
  return t('error.unknown');
}
