import type { TextTable } from '../base/text.ts';

export const texts = {
  'disk.drives': ['Disky k analýze', 'Disks to analyse'],
  'disk.used': ['{used} z {total}, volných {free}', '{used} of {total}, {free} free'],
  'disk.analyse': ['Analyzovat {drive}', 'Analyse {drive}'],
  'disk.start': ['Zjistěte, co na disku zabírá místo', 'Find out what takes the space on a disk'],
  'disk.startHint': [
    'Analýza projde celý disk jednou. Potom ukáže velikosti složek a 30 největších souborů. Nic nemění ani nemaže.',
    'The analysis goes through the whole disk once. Then it shows the sizes of folders and the 30 largest files. It changes and deletes nothing.',
  ],
  'disk.running': ['Prochází se {drive}', 'Going through {drive}'],
  'disk.reading': ['Čtou se první složky…', 'Reading the first folders…'],
  'disk.scanned': ['Položek', 'Items'],
  'disk.perSecond': ['Za sekundu', 'Per second'],
  'disk.elapsed': ['Uplynulo', 'Elapsed'],
  'disk.done': ['Analýza disku {drive} je hotová', 'The analysis of {drive} is done'],
  'disk.partial': [
    'Analýza disku {drive} se nedokončila, chyběla paměť. Zobrazena je jen část.',
    'The analysis of {drive} ran out of memory. Only a part is shown.',
  ],
  'disk.silent': [
    'Analýza disku {drive} se už minutu neozvala, dál se na ni nečeká.',
    'The analysis of {drive} has been silent for a minute and is not waited for any more.',
  ],
  'disk.openFailed': [
    'Složku {path} se nepodařilo otevřít. {reason}',
    'The folder {path} could not be opened. {reason}',
  ],
  'disk.path': ['Cesta ke složce', 'Path of the folder'],
  'disk.up': ['O složku výš', 'Up one folder'],
  'disk.found': ['Nalezeno {found}', '{found} found'],
  'disk.foundOf': ['Nalezeno {found}, obsazeno {used}', '{found} found, {used} in use'],
  'disk.hardLinks': [
    'Nalezeno je víc než obsazeno: soubor s více pevnými odkazy, hlavně ve složce Windows, se počítá na každém místě znovu.',
    'More is found than is in use: a file with several hard links, mostly in the Windows folder, counts anew in every place.',
  ],
  'disk.contents': ['Obsah složky', 'Folder contents'],
  'disk.share': ['Podíl', 'Share'],
  'disk.kind': ['Druh', 'Kind'],
  'disk.unknown': ['bez údajů', 'no figures'],
  'disk.unknownHint': [
    'Složka je prázdná, nepřístupná, nebo ji analýza neprošla, třeba proto, že je odkazem jinam.',
    'The folder is empty, cannot be opened, or the analysis has not been there, for example because it is a link to elsewhere.',
  ],
  'disk.open': ['Otevřít složku', 'Open folder'],
  'disk.map': [
    'Mapa složky {path}. Totéž obsahuje tabulka.',
    'Map of the folder {path}. The table holds the same.',
  ],
  'disk.mapEmpty': ['Nic, co by zabíralo místo, se tu nenašlo.', 'Nothing that takes space was found here.'],
  'disk.rest': [
    {
      one: '{n} malá položka',
      few: '{n} malé položky',
      many: '{n} malé položky',
      other: '{n} malých položek',
    },
    { one: '{n} small item', other: '{n} small items' },
  ],
  'disk.largest': ['Největší soubory', 'Largest files'],
  'disk.largestHint': ['z celého disku, nejvýše 30', 'on the whole disk, at most 30'],

  'kind.folder': ['Složka', 'Folder'],
  'kind.video': ['Video', 'Video'],
  'kind.image': ['Obrázek', 'Picture'],
  'kind.audio': ['Zvuk', 'Sound'],
  'kind.document': ['Dokument', 'Document'],
  'kind.archive': ['Archiv', 'Archive'],
  'kind.program': ['Program', 'Program'],
  'kind.other': ['Ostatní', 'Other'],
} as const satisfies TextTable;
