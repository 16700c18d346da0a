import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText, explained } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { readService, type DevService } from './service_report.ts';

export type ServiceRow = DevService & { key: number };

export const services = createSource(async () => {
  const reply = await explained(host.request('getDevServices'), () => t('services.refused'));
  return reply.services.map((element, key): ServiceRow => ({ ...readService(element), key }));
});

/** The service with a command in progress; one at a time. */
export const commanded = createStore<ServiceRow | undefined>(undefined);

const knownCommands = ['start', 'stop', 'restart'] as const;
const isKnown = (command: string): command is (typeof knownCommands)[number] =>
  knownCommands.includes(command as never);
export const commandText = (command: string) => (isKnown(command) ? t(`services.${command}`) : command);

const states = ['running', 'stopped', 'starting', 'stopping', 'paused', 'pausing', 'continuing'] as const;
const starts = ['auto', 'delayed', 'manual', 'disabled'] as const;

/** Returns a state or start type in words. An unknown one stays in the service's own words. */
export const stateText = (state: string) => {
  const known = states.find((one) => one === state);
  return known ? t(`services.state.${known}`) : state;
};
export const startText = (start: string) => {
  const known = starts.find((one) => one === start);
  return known ? t(`services.starts.${known}`) : start;
};

export async function control(service: ServiceRow, command: string) {
  const { title, type = '' } = service;
  const verb = commandText(command);
  const known = isKnown(command) ? command : 'other';
  const question = {
    title: t(`services.${known}.title`, { title, verb }),
    body: isKnown(command) ? t('services.body') : '',
    verb,
  };
  if (commanded.get() || (command !== 'start' && !(await confirm(question)))) return;
  commanded.set(service);
  let missing = false;
  const stop = host.on('show_service_error_modal', () => (missing = true));
  try {
    await host.request('controlDevService', { service_type: type, command });
    toast(t(`services.${known}.done`, { title, verb }));
  } catch (error) {
    const reason = errorText(error, t('services.refused'));
    toast(t(`services.${known}.failed`, { title, verb, reason }), { error: true });
  }
  stop();
  if (!missing) await services.reload(); // otherwise its dialog would open a second time
  commanded.set(undefined);
}
