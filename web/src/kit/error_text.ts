import { t } from '../base/text.ts';
import { BridgeError } from '../bridge/bridge.ts';

/** What to tell the user about a failure: the host's own words when it gave any, `unexplained` when it refused without. */
export function errorText(error: unknown, unexplained = t('error.refused')): string {
  if (!(error instanceof BridgeError)) return t('error.unknown');
  return error.kind === 'refused' ? error.reason || unexplained : t(`error.${error.kind}`);
}

/** Gives words to a refusal that comes without a reason. */
export async function explained<T>(answer: Promise<T>, unexplained: () => string): Promise<T> {
  try {
    return await answer;
  } catch (error) {
    throw new BridgeError('refused', errorText(error, unexplained()));
  }
}
