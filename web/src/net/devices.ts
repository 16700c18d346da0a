import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { explained } from '../kit/error_text.ts';

export interface Device {
  key: number;
  name: string;
  group: string;
  status: string;
}

/** The class that is shown, or '' for all; outlives the view. */
export const deviceClass = createStore('');

export const devices = createSource(async () => {
  const reply = await explained(host.request('getPnpDevices'), () => t('devices.refused'));
  // Windows writes the classes in capitals. The host calls a missing class "System".
  return reply.devices.map((one, key): Device => ({
    key,
    name: String(one.FriendlyName),
    group: String(one.Class).toUpperCase(),
    status: String(one.Status),
  }));
});
