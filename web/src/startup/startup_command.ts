import { isPlainPath } from '../base/paths.ts';

/** The file that a command runs, where that is certain: in quotes, or up to the first ".exe". */
export function fileOf(command: string): string | undefined {
  const [, quoted, bare] = /^\s*(?:"([^"]+)"|(.+?\.exe)(?=\s|$))/i.exec(command) ?? [];
  const file = quoted ?? bare;
  return file !== undefined && isPlainPath(file) ? file : undefined;
}
