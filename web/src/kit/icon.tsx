import activity from 'lucide:activity';
import arrowDown from 'lucide:arrow-down';
import arrowUp from 'lucide:arrow-up';
import battery from 'lucide:battery';
import batteryCharging from 'lucide:battery-charging';
import cleaning from 'lucide:brush-cleaning';
import check from 'lucide:check';
import chevronDown from 'lucide:chevron-down';
import chevronRight from 'lucide:chevron-right';
import chevronUp from 'lucide:chevron-up';
import alert from 'lucide:circle-alert';
import success from 'lucide:circle-check';
import developer from 'lucide:code-xml';
import copy from 'lucide:copy';
import file from 'lucide:file';
import folder from 'lucide:folder';
import explorer from 'lucide:folder-open';
import dashboard from 'lucide:gauge';
import disk from 'lucide:hard-drive';
import images from 'lucide:images';
import keyboard from 'lucide:keyboard';
import network from 'lucide:network';
import software from 'lucide:package';
import pause from 'lucide:pause';
import play from 'lucide:play';
import service from 'lucide:plug-zap';
import power from 'lucide:power';
import refresh from 'lucide:refresh-cw';
import startup from 'lucide:rocket';
import skip from 'lucide:skip-forward';
import search from 'lucide:search';
import settings from 'lucide:settings';
import user from 'lucide:shield';
import admin from 'lucide:shield-check';
import terminal from 'lucide:terminal';
import remove from 'lucide:trash';
import maintenance from 'lucide:wrench';
import close from 'lucide:x';

const icons = {
  admin,
  alert,
  arrowDown,
  arrowUp,
  battery,
  batteryCharging,
  check,
  chevronDown,
  chevronRight,
  chevronUp,
  cleaning,
  close,
  copy,
  dashboard,
  developer,
  disk,
  explorer,
  file,
  folder,
  images,
  keyboard,
  maintenance,
  network,
  pause,
  play,
  power,
  processes: activity,
  refresh,
  remove,
  search,
  service,
  settings,
  skip,
  software,
  startup,
  success,
  terminal,
  user,
};

export type IconName = keyof typeof icons;

/** Decoration only: the words beside it, or its button's label, carry the meaning. */
export function Icon({ name }: { name: IconName }) {
  return (
    <svg class="icon" viewBox="0 0 24 24" aria-hidden="true">
      <path d={icons[name]} />
    </svg>
  );
}

/** Draws the mark of icons/varnel.svg in the theme's colours. */
export function Mark() {
  return (
    <svg class="mark" viewBox="16 24 224 224" aria-hidden="true">
      <path class="mark-1" d="M28 36 92 36 128 128 128 236Z" />
      <path class="mark-2" d="M228 36 164 36 128 128 128 236Z" />
      <path class="mark-3" d="M106 36 150 36 128 92Z" />
    </svg>
  );
}
