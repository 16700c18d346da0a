// Reads the helper service's report about development services. Only the list itself is agreed on. The
// page shows whatever the report contains, and offers a command only if the report names both the
// service and the command.
import { isRecord } from '../base/shape.ts';

export interface DevService {
  title: string;
  /** The status in words, if there is one. */
  status: string;
  /** The start type, if it is a word. */
  start?: string;
  /** The other members, unchanged. */
  facts: string;
  /** The service's type for commands; absent if the report does not name it. */
  type?: string;
  commands: string[];
}

const textOf = (value: unknown) => (typeof value === 'string' ? value : JSON.stringify(value));
const titleMembers = ['display_name', 'displayName', 'name', 'title', 'service_type'];

export function readService(element: unknown): DevService {
  if (!isRecord(element)) return { title: textOf(element), status: '', facts: '', commands: [] };
  const { service_type: type, commands, status, start } = element;
  const inWords = typeof status === 'string';
  const startInWords = typeof start === 'string';
  const title = titleMembers.find((member) => typeof element[member] === 'string' && element[member] !== '');
  const said = [title, 'service_type', 'commands', inWords && 'status', startInWords && 'start'];
  const shown = Object.entries(element).filter(([name]) => !said.includes(name));
  return {
    title: title === undefined ? textOf(element) : textOf(element[title]),
    status: inWords ? status : '',
    facts: shown.map(([name, value]) => `${name}: ${textOf(value)}`).join(', '),
    ...(startInWords && { start }),
    ...(typeof type === 'string' && type !== '' && { type }),
    commands: Array.isArray(commands)
      ? commands.filter((one): one is string => typeof one === 'string' && one !== '')
      : [],
  };
}
