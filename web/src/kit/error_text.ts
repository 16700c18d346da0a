import { t } from '../base/text.ts';
import { BridgeError } from '../bridge/bridge.ts';

/** Returns the text for a failure: the host's own words, or `unexplained` if it refused without a reason. */
export function errorText(error: unknown, unexplained = t('error.refused')): string {
  if (!(error instanceof BridgeError)) return t('error.unknown');
  return error.kind === 'refused' ? error.reason || unexplained : t(`error.${error.kind}`);
}

/** Adds words to a refusal without a reason. */
export async function explained<T>(answer: Promise<T>, unexplained: () => string): Promise<T> {
  try {
    return await answer;
  } catch (error) {
    throw new BridgeError('refused', errorText(error, unexplained()));
  }
}
