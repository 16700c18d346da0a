import assert from 'node:assert/strict';
import { test } from 'node:test';
import { fileOf } from './startup_command.ts';

test('a command yields its file only if that is certain', () => {
  const cases: [command: string, want: string | undefined][] = [
    ['"C:\\Program Files\\Kite\\kite sync.exe" /tray', 'C:\\Program Files\\Kite\\kite sync.exe'],
    ['C:\\Program Files\\Hvězdář\\Teams.EXE --quiet', 'C:\\Program Files\\Hvězdář\\Teams.EXE'],
    ['"C:\\Tools\\run.cmd"', 'C:\\Tools\\run.cmd'],
    ['C:\\Tools\\run.cmd /q', undefined],
    ['"%LOCALAPPDATA%\\kite.exe"', undefined],
    ['rundll32.exe C:\\x.dll,Run', undefined],
    ['\\\\server\\share\\a.exe', undefined],
    ['C:\\PROGRA~1\\a.exe', undefined],
  ];
  for (const [command, want] of cases) assert.equal(fileOf(command), want, command);
});
