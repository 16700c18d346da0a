// Defines everything that page and host say to each other. Add a message type or an action only here.
// Sizes are in bytes unless a comment says otherwise.
import {
  anything,
  array,
  bool,
  number,
  object,
  optional,
  record,
  text,
  type Guarded,
} from '../base/shape.ts';

const file = object({ path: text, size: number });
const folderEntry = object({ name: text, path: text, isDirectory: bool, size: number });
const softwareUpdate = object({ name: text, id: text, version: text, available: text, source: text });
// Passed on from Windows Update unchanged, whatever their type.
const driverUpdate = object({
  title: anything,
  description: anything,
  categories: anything,
  kbArticles: anything,
  currentVersion: anything,
  availableVersion: anything,
  releaseDate: anything,
  severity: anything,
  hardwareId: anything,
  isSkipped: anything,
});
const junk = object({
  categories: object({
    windowsTemp: number,
    userTemp: number,
    prefetch: number,
    winUpdate: number,
    browserCache: number,
    shaderCache: number,
    systemLogs: number,
  }),
  total: number,
  bytes: number,
  kept: optional(array(text)), // categories whose folder may not be emptied
});
const systemFile = object({ exists: bool, size: number });

/** One message of a running tool: `streamType` is "status", "stdout" or "exit". */
const toolStream = object({
  streamType: text,
  requestId: optional(number), // absent in the "exit" of a ping
  message: optional(text),
  isProgress: optional(bool), // the line ended with a carriage return, which does not prove a redraw
  code: optional(number), // unsigned 32-bit
  rebootRequired: optional(bool),
  error: optional(text),
});

/**
 * Host to page, by `type`: the members of a successful reply, a stream message or a notice besides the
 * envelope.
 */
export const messages = {
  // Program and machine.
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
    cpuTemp: number, // degrees Celsius, estimated from the load
    gpuTemp: number,
    download: number, // 2^20 bits per second
    upload: number,
    networkAdapter: text,
    battery: object({
      hasBattery: bool,
      isCharging: bool,
      percent: number,
      lifeTime: number, // seconds, -1 if unknown
      saverMode: bool,
    }),
    disks: array(
      object({
        drive: text,
        driveLetter: text,
        totalBytes: number,
        freeBytes: number,
        usedBytes: number,
        percent: number,
      }),
    ),
  }),
  debugSystem: object({}),
  settings: object({ settings: anything }),
  saveSettings: object({ settings: anything }),
  reboot: object({}),
  processes: object({
    processes: array(
      object({
        name: text,
        pid: number,
        memUsageMB: number,
        mem: number /* MB */,
        cpuTimeSec: number,
        isSystem: bool,
      }),
    ),
  }),
  killProcess: object({}),

  // Cleaning.
  junk,
  cleanJunk: junk,
  getDownloadsJunk: object({
    totalBytes: number,
    count: number,
    items: array(object({ name: text, path: text, size: number, daysOld: number })),
  }),
  deleteSpecificFiles: object({ deletedCount: number }),
  getSystemFilesAdvisor: object({
    hiberfil: object({ exists: bool, size: number, enabled: bool }),
    pagefile: systemFile,
    swapfile: systemFile,
  }),
  setHibernation: object({ enabled: bool }),

  // Software and drivers.
  software_updates: object({ updates: array(softwareUpdate), count: number }),
  apps: object({ apps: array(object({ name: text, id: text, version: text, source: text })) }),
  driver_updates: object({ updates: array(driverUpdate), count: number, scannedDriversCount: number }),
  scan_progress: object({
    status: text, // "scanning_apps", "scanning_drivers", "scanning_drivers_heartbeat", "done"
    requestId: number,
    success: optional(bool),
    softwareCount: optional(number),
    ticks: optional(number),
    software: optional(array(softwareUpdate)),
    drivers: optional(array(driverUpdate)),
    scannedDriversCount: optional(number),
  }),
  update_stream: toolStream,
  uninstall_stream: toolStream,
  findLeftovers: object({ leftovers: array(object({ type: text, path: text, size: number })) }),
  cleanLeftovers: object({}),

  // Disk.
  disk_analysis_progress: object({
    status: text, // "scanning", "done"
    requestId: number,
    success: optional(bool), // false: only a part was analysed
    scanned: optional(number),
    currentFolder: optional(text),
    drive: optional(text),
    folders: optional(array(folderEntry)),
    files: optional(array(file)),
  }),
  getFolderContents: object({ path: text, items: array(folderEntry) }),

  // Start-up.
  startup: object({
    items: array(
      object({ name: text, command: text, registryPath: text, scope: text, enabled: bool, impact: text }),
    ),
  }),
  toggleStartupItem: object({}),
  toggleScheduleClean: object({}),

  // Network and developer.
  getOpenPorts: object({
    ports: array(object({ proto: text, local: text, port: text, state: text, pid: text })),
  }),
  ping_diagnostic_stream: toolStream,
  getHostsFile: object({ content: text }),
  saveHostsFile: object({}),
  getEnvVariables: object({ user: record(text), system: record(text) }),
  saveEnvVariable: object({}),
  getDevServices: object({ services: array(anything) }),
  controlDevService: object({}),
  getPnpDevices: object({
    devices: array(object({ FriendlyName: anything, Class: anything, Status: anything })),
  }),

  // Maintenance.
  quickAction: object({ message: text }),
  sfc_stream: toolStream,
  checkForUpdates: object({
    onlineVersion: text,
    currentVersion: text,
    hasUpdate: bool,
    downloadUrl: text,
    changelog: text,
    mandatory: bool,
  }),
  downloadAndApplyUpdate: object({}),

  // Sent without a request.
  console_log: object({ message: text, style: text }),
  show_service_error_modal: object({}),
  error: object({ message: text }),
};

export type MessageType = keyof typeof messages;
export type Message<T extends MessageType> = Guarded<(typeof messages)[T]>;

/**
 * Page to host: each action with a single answer, the `type` of that answer, and the seconds to wait for
 * it. Long waits are for whole folder trees, servers, and the helper service, which has no limit of its
 * own.
 */
export const replies = {
  testBridge: ['testBridge', 5],
  openUrl: ['openUrl', 30],
  openMailto: ['openMailto', 30],
  getCPU: ['cpu_info', 30],
  getStatus: ['status', 30],
  getTelemetry: ['telemetry', 10],
  debugSystem: ['debugSystem', 30],
  getSettings: ['settings', 30],
  saveSettings: ['saveSettings', 30],
  reboot: ['reboot', 30],
  getProcesses: ['processes', 30],
  killProcess: ['killProcess', 30],
  getJunk: ['junk', 900],
  cleanJunk: ['cleanJunk', 3600],
  getDownloadsJunk: ['getDownloadsJunk', 120],
  deleteSpecificFiles: ['deleteSpecificFiles', 600],
  getSystemFilesAdvisor: ['getSystemFilesAdvisor', 30],
  setHibernation: ['setHibernation', 60],
  getSoftwareUpdates: ['software_updates', 300],
  getInstalledApps: ['apps', 300],
  getDriverUpdates: ['driver_updates', 300],
  findLeftovers: ['findLeftovers', 300],
  cleanLeftovers: ['cleanLeftovers', 300],
  getFolderContents: ['getFolderContents', 120],
  getStartupItems: ['startup', 30],
  toggleStartupItem: ['toggleStartupItem', 30],
  toggleScheduleClean: ['toggleScheduleClean', 120],
  getOpenPorts: ['getOpenPorts', 60],
  getHostsFile: ['getHostsFile', 120],
  saveHostsFile: ['saveHostsFile', 120],
  getEnvVariables: ['getEnvVariables', 30],
  saveEnvVariable: ['saveEnvVariable', 120],
  getDevServices: ['getDevServices', 120],
  controlDevService: ['controlDevService', 120],
  getPnpDevices: ['getPnpDevices', 120],
  quickAction: ['quickAction', 120],
  checkForUpdates: ['checkForUpdates', 120],
  downloadAndApplyUpdate: ['downloadAndApplyUpdate', 3600],
} as const satisfies Record<string, readonly [type: MessageType, waitSeconds: number]>;

export type Action = keyof typeof replies;
export type Reply<A extends Action> = Message<(typeof replies)[A][0]>;

/** The content of `data`, which is `{}` for an action not listed here. */
export interface RequestData {
  saveSettings: Record<string, unknown>;
  killProcess: { pid: number };
  cleanJunk: Record<keyof Message<'junk'>['categories'], boolean>; // prefetch equals windowsTemp
  deleteSpecificFiles: { paths: string[] };
  setHibernation: { enabled: boolean };
  findLeftovers: { id: string; name: string };
  cleanLeftovers: { items: Message<'findLeftovers'>['leftovers'] };
  getFolderContents: { path: string };
  toggleStartupItem: { scope: string; name: string; enabled: boolean };
  toggleScheduleClean: { enabled: boolean };
  saveHostsFile: { content: string };
  saveEnvVariable: { type: 'user' | 'system'; name: string; value: string; is_delete: boolean };
  controlDevService: { service_type: string; command: string };
  quickAction: { type: 'flush-dns' | 'rebuild-icons' | 'safemode-reboot' };
  downloadAndApplyUpdate: { downloadUrl?: string };
}

/** Page to host: actions answered by stream messages, and the content of their `data`. */
export interface StreamData {
  startSystemScan: Record<string, never>; // scan_progress
  startDiskAnalysis: { drive: string }; // disk_analysis_progress
  runPingDiagnostic: { type: 'ping' | 'dns'; target: string }; // ping_diagnostic_stream
  quickAction: { type: 'sfc' }; // sfc_stream
  uninstallAppSuite: Record<string, never>; // not answered: the program ends
  // Sent without `requestId`.
  installSoftware: { id: string }; // update_stream
  installDriver: { title: string }; // update_stream
  uninstallApp: { id: string }; // uninstall_stream
}

export const unnumbered: ReadonlySet<keyof StreamData> = new Set([
  'installSoftware',
  'installDriver',
  'uninstallApp',
] as const);
