// The output of the stand-in winget, and functions shared by the tests of its view.
import { press } from './harness.mjs';

const crlf = (text) => text.replace(/^\n/, '').replaceAll('\n', '\r\n');
export const kSpinner = `\r   - \r   \\ \r   | \r${' '.repeat(120)}\r`;

// The tool prints only one space after the widest cell of a column.
const kUpdates = crlf(`
Name                         Id                Version Available Source
------------------------------------------------------------------------
Tarn Sync                    Brook.TarnSync    1.0.2   1.2.0     winget
Heron Media Suite 2024 (x64) Heron.MediaSuite  24.1    24.3.1    winget
Copse                        9QX2B4LMN0PR      3.1.0.0 3.2.0.0   msstore
Rill SDK                     Rill.SDK          < 6.0.8 6.0.8     winget
Peat Notes                   Peat.NotesWithAc… 2.0     2.1       winget
Fen Poznámky                 Fen.C++           1.0     1.1       winget
6 upgrades available.
`);
// The row with the widest ID and no source arrives as two cells; the list needs three.
const kInstalled = crlf(`
Name                         Id                                     Version    Available Source
-----------------------------------------------------------------------------------------------
Heron Media Suite 2024 (x64) Heron.MediaSuite                       24.1       24.3.1    winget
Tarn Sync                    Brook.TarnSync                         1.2.0                winget
Peat Audio Console           ARP\\Machine\\X64\\{0F3C11AA-9B1D-22AA}   6.0.1.8731           
Podzim Poznámky              MSIX\\Podzim.Poznamky_2.1.0.0_x64__h4k9 2.1.0.0              
`);

export const prints = (text, exit = 0) => ({ steps: [{ text: crlf(text) }], exit });
export const winget = (...cases) => ({
  'winget.exe': {
    cases: [
      ...cases,
      { when: 'upgrade --accept', steps: [{ text: kSpinner + kUpdates }] },
      { when: 'list', steps: [{ text: kSpinner + kInstalled }] },
    ],
  },
});
export const kAgreed = '--accept-source-agreements --disable-interactivity';

export const job = (page, id, state) => page.waitForSelector(`[data-job="${id}"][data-state=${state}]`);
// Opens a list, which loads automatically unless it is slow.
export async function openList(app, tab) {
  await app.page.click(`[data-tab=${tab}]`);
  if (tab === 'drivers') await app.page.keyboard.press('F5');
  await app.page.getByRole('grid', { name: app.text(`software.${tab}`) }).waitFor();
}
export const pressSelected = (app, verb, n) =>
  press(app.page, app.text('software.selected', { verb: app.text(`software.${verb}`), n }));
