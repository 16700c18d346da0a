import type { ComponentType } from 'preact';
import { Cleaning } from '../clean/cleaning.tsx';
import { Disk } from '../disk/disk.tsx';
import { Maintenance } from '../maint/maintenance.tsx';
import { Developer } from '../net/developer.tsx';
import { Network } from '../net/network.tsx';
import type { ViewId } from '../shell/navigation.ts';
import { Software } from '../software/software.tsx';
import { Startup } from '../startup/startup.tsx';
import { Dashboard } from '../system/dashboard.tsx';
import { Processes } from '../system/processes.tsx';
import { SettingsView } from './settings_view.tsx';

interface ViewEntry {
  /** Also the name of its icon, its texts (`view.<id>`) and `data-view`. */
  id: ViewId;
  /** Heading in the navigation; absent for the entries at its foot. */
  group?: 'overview' | 'tidy' | 'system' | 'tools';
  component: ComponentType;
}

/** Every view in the order of the navigation, which Ctrl+1 to 9 follow. */
export const views: readonly ViewEntry[] = [
  { id: 'dashboard', group: 'overview', component: Dashboard },
  { id: 'cleaning', group: 'tidy', component: Cleaning },
  { id: 'software', group: 'tidy', component: Software },
  { id: 'disk', group: 'tidy', component: Disk },
  { id: 'startup', group: 'system', component: Startup },
  { id: 'processes', group: 'system', component: Processes },
  { id: 'network', group: 'tools', component: Network },
  { id: 'developer', group: 'tools', component: Developer },
  { id: 'maintenance', group: 'tools', component: Maintenance },
  { id: 'settings', component: SettingsView },
];
