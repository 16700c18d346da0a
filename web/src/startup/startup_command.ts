import { isPlainPath } from '../base/paths.ts';

/**
 * Returns the file that a command runs, if that is certain: the quoted part, or everything up to the first
 * ".exe".
 */
export function fileOf(command: string): string | undefined {
  const [, quoted, bare] = /^\s*(?:"([^"]+)"|(.+?\.exe)(?=\s|$))/i.exec(command) ?? [];
  const file = quoted ?? bare;
  return file !== undefined && isPlainPath(file) ? file : undefined;
}
