import assert from 'node:assert/strict';
import { test } from 'node:test';
import { explorerAddress } from './explorer.ts';
import { mayRecycle, possibleBins, sizeOf } from './recyclable.ts';

test('paths that Windows, all programs, a whole user or Varnel needs are never recycled', () => {
  const refused = `C: C:\\ D:\\ c:\\windows C:\\Windows\\System32 D:\\WINDOWS\\Temp\\a.tmp C:\\Program§Files
    C:\\Program§Files§(x86) C:\\ProgramData C:\\Users C:\\users\\Žofie C:\\Users\\Žofie\\AppData\\Local
    C:\\Users\\Public C:\\$Recycle.Bin\\S-1-5 C:\\Program§Files\\Varnel C:\\Program§Files\\Varnel\\bin\\Varnel.exe
    C:\\Program§Files§(x86)\\Microsoft C:\\Program§Files§(x86)\\Microsoft\\EdgeWebView\\Application
    C:\\Users\\Žofie\\AppData\\Local\\Varnel\\x \\\\server\\share\\x Users\\x`;
  const offered = `C:\\Windows.old C:\\pagefile.txt C:\\Program§Files\\Game C:\\ProgramData\\Game D:\\Users.zip
    C:\\Users\\Žofie\\Downloads C:\\Users\\Žofie\\AppData\\Local\\Temp C:\\Data\\Windows D:\\Varnel`;
  const paths = (text: string) => text.split(/\s+/).map((path) => path.replaceAll('§', ' '));
  for (const path of paths(refused)) assert.equal(mayRecycle(path), false, path);
  for (const path of paths(offered)) assert.equal(mayRecycle(path), true, path);
});

test('Varnel is looked for around and just below a path to recycle', () => {
  const bins = ['D:\\bin', 'D:\\Tools\\bin', 'D:\\Tools\\a.zip\\bin', 'D:\\Tools\\a.zip\\Varnel\\bin'];
  assert.deepEqual(possibleBins(['D:\\Tools\\a.zip']), bins);
});

test('Explorer opens only folders', () => {
  const cases = [
    explorerAddress('C:\\a\\run.exe', false),
    explorerAddress('C:\\a', true),
    explorerAddress('C:\\x.exe', false),
    explorerAddress('C:\\', true),
  ];
  assert.deepEqual(cases, ['C:\\a\\', 'C:\\a\\', 'C:\\', 'C:\\']);
});

test('the size of a selection is unknown if that of a folder is', () => {
  const of = (size: number, isDirectory = false) => ({ path: '', size, isDirectory });
  assert.equal(sizeOf([of(0), of(2), of(3, true)]), 5);
  assert.equal(sizeOf([of(2), of(0, true)]), undefined);
});
