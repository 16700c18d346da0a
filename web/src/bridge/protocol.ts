// Everything page and host say to each other. A message type or action is added here and nowhere else.
import { anything, array, bool, number, object, text, type Guarded } from '../lib/shape.ts';

/** Host to page, by `type`: what a successful reply, stream message or notice carries besides the envelope. */
export const messages = {
  // Replies.
  testBridge: object({ status: text }),
  openUrl: object({}),
  openMailto: object({}),
  cpu_info: object({ cpu: text }),
  status: object({
    isAdmin: bool,
    serviceActive: bool,
    specs: object({ cpu: text, gpu: text, ram: text, ramTooltip: text, motherboard: text, os: text }),
  }),
  telemetry: object({
    cpu: number, // percent since the previous sample
    ram: number, // percent
    cpuTemp: number, // degrees Celsius, derived from the load
    gpuTemp: number,
    download: number, // 2^20 bits per second
    upload: number,
    networkAdapter: text,
    battery: object({
      hasBattery: bool,
      isCharging: bool,
      percent: number,
      lifeTime: number, // seconds, -1 when unknown
      saverMode: bool,
    }),
    disks: array(
      object({ drive: text, driveLetter: text, totalBytes: number, freeBytes: number, usedBytes: number, percent: number }),
    ),
  }),
  debugSystem: object({}),
  settings: object({ settings: anything }),
  saveSettings: object({ settings: anything }),
  reboot: object({}),

  // Sent unasked.
  console_log: object({ message: text, style: text }),
  show_service_error_modal: object({}),
  error: object({ message: text }),
};

export type MessageType = keyof typeof messages;
export type Message<T extends MessageType> = Guarded<(typeof messages)[T]>;

/** Page to host: each action that is answered, with the `type` of its answer. */
export const replies = {
  testBridge: 'testBridge',
  openUrl: 'openUrl',
  openMailto: 'openMailto',
  getCPU: 'cpu_info',
  getStatus: 'status',
  getTelemetry: 'telemetry',
  debugSystem: 'debugSystem',
  getSettings: 'settings',
  saveSettings: 'saveSettings',
  reboot: 'reboot',
} as const satisfies Record<string, MessageType>;

export type Action = keyof typeof replies;
export type Reply<A extends Action> = Message<(typeof replies)[A]>;

/** What goes into `data`, for the actions that read it. */
export interface RequestData {
  saveSettings: Record<string, unknown>;
}

export type DataOf<A extends Action> = A extends keyof RequestData ? RequestData[A] : Record<string, never>;
