export const texts = {
  'app.nav': ['Hlavní navigace', 'Main navigation'],

  'nav.busy': ['pracuje', 'working'],
  'nav.unsaved': ['neuloženo', 'unsaved'],

  'search.hint': [
    'Část, úkon, proces, port, program, složka…',
    'View, action, process, port, program, folder…',
  ],
  'search.nothing': ['Nic takového Varnel nenašel.', 'Varnel found nothing like that.'],
  'search.notYet': [
    'Nic takového Varnel zatím nenašel, nainstalované programy ale ještě nemá načtené.',
    'Nothing like that so far, but the installed programs have not been loaded yet.',
  ],
  'search.apps.idle': [
    'Načíst nainstalované programy a hledat i v nich',
    'Load the installed programs and search them too',
  ],
  'search.apps.loading': ['Načítají se nainstalované programy…', 'Loading the installed programs…'],
  'search.apps.failed': [
    'Programy se nepodařilo načíst, zkusit znovu',
    'The programs could not be loaded, try again',
  ],
  'search.variables': ['Proměnné prostředí (PATH)', 'Environment variables (PATH)'],

  'group.overview': ['Stav', 'Status'],
  'group.tidy': ['Úklid', 'Clean-up'],
  'group.system': ['Systém', 'System'],
  'group.tools': ['Nástroje', 'Tools'],

  'keys.title': ['Klávesové zkratky', 'Keyboard shortcuts'],
  'keys.filter': ['Filtrovat tabulku', 'Filter the table'],
  'keys.refresh': ['Obnovit údaje', 'Refresh the data'],
  'keys.views': ['Přejít na 1. až 10. část', 'Go to view 1 to 10'],
  'keys.escape': ['Zavřít dialog, vymazat filtr', 'Close a dialog, clear the filter'],
  'keys.help': ['Zobrazit tento seznam', 'Show this list'],
  'keys.rows': ['Pohyb v tabulce', 'Move in a table'],
  'keys.select': ['Vybrat řádek', 'Select a row'],
  'keys.range': ['Rozšířit výběr', 'Extend the selection'],
  'keys.all': ['Vybrat vše', 'Select all'],
  'keys.copy': ['Kopírovat vybrané řádky', 'Copy the selected rows'],
  'keys.delete': ['Smazat nebo ukončit vybrané', 'Delete or end what is selected'],
  'keys.save': ['Uložit soubor hosts', 'Save the hosts file'],
  'keys.comment': ['Zakomentovat řádky (soubor hosts)', 'Comment lines out (hosts file)'],
  'keys.next': ['Najít další (soubor hosts)', 'Find the next (hosts file)'],
  'keys.up': ['O složku výš (Disk)', 'Up one folder (Disk)'],
  'keys.space': ['Mezerník', 'Space'],
  'keys.arrows': ['Šipky', 'Arrows'],

  'settings.appearance': ['Vzhled a jazyk', 'Appearance and language'],
  'settings.theme': ['Motiv', 'Theme'],
  'settings.language': ['Jazyk', 'Language'],
  'settings.scan': ['Kontrola systému', 'System scan'],
  'settings.autoScan': ['Kontrolovat systém automaticky', 'Scan the system automatically'],
  'settings.autoScanHint': [
    'Po spuštění a potom v nastaveném intervalu, dokud Varnel běží. Jen hledá, nic neinstaluje.',
    'When Varnel starts, and then at the chosen interval while it runs. It only looks and installs nothing.',
  ],
  'settings.autoOpen': ['Při kontrole otevřít terminál', 'Open the terminal during a scan'],
  'settings.autoOpenHint': [
    'V terminálu je vidět, co kontrola právě dělá.',
    'The terminal shows what the scan is doing.',
  ],
  'settings.scanInterval': ['Interval kontroly', 'Scan interval'],
  'settings.scanIntervalHint': [
    'Jak často má automatická kontrola hledat aktualizace.',
    'How often the automatic scan looks for updates.',
  ],
  'settings.hours': [
    { one: 'každou hodinu', few: 'každé {n} hodiny', many: 'každých {n} hodiny', other: 'každých {n} hodin' },
    { one: 'every hour', other: 'every {n} hours' },
  ],
  'settings.days': [
    { one: 'jednou denně', few: 'každé {n} dny', many: 'každých {n} dne', other: 'každých {n} dní' },
    { one: 'once a day', other: 'every {n} days' },
  ],
  'settings.clean': ['Automatické čištění', 'Automatic cleaning'],
  'settings.autoClean': ['Čistit pravidelně bez potvrzování', 'Clean regularly without asking'],
  'settings.autoCleanHint': [
    'Pomocná služba bude spouštět Varnel bez okna, aby vyčistil všech sedm kategorií z části Čištění. Termín určuje služba.',
    'The helper service will start Varnel without a window to clean all seven categories of the Cleaning view. The service decides when.',
  ],
  'settings.autoCleanNotOn': [
    'Automatické čištění zůstává vypnuté. {reason}',
    'Automatic cleaning stays off. {reason}',
  ],
  'settings.autoCleanNotOff': [
    'Automatické čištění zůstává zapnuté. {reason}',
    'Automatic cleaning stays on. {reason}',
  ],
  'settings.ignored': ['Ignorované aktualizace', 'Ignored updates'],
  'settings.ignoredHint': [
    'Aktualizace na tomto seznamu Varnel nenabízí.',
    'Updates on this list are not offered.',
  ],
  'settings.ignoredEmpty': [
    'Seznam je prázdný. Aktualizaci sem přidáte z nabídky řádku v části Software.',
    'The list is empty. Add updates from the row menu in Software.',
  ],
  'settings.ignored.id': ['Položka', 'Item'],
  'settings.ignored.every': ['všechny', 'all'],
  'settings.remove': ['Odebrat ze seznamu', 'Remove from the list'],
  'settings.removed': [
    {
      one: 'Odebrána {n} položka',
      few: 'Odebrány {n} položky',
      other: 'Odebráno {n} položek',
    },
    { one: '{n} item removed', other: '{n} items removed' },
  ],
  'settings.removeTitle': [
    {
      one: 'Odebrat {n} položku ze seznamu?',
      few: 'Odebrat {n} položky ze seznamu?',
      other: 'Odebrat {n} položek ze seznamu?',
    },
    { one: 'Remove {n} item from the list?', other: 'Remove {n} items from the list?' },
  ],
  'settings.removeBody': ['Varnel je začne znovu nabízet:', 'Varnel will offer them again:'],
  'settings.about': ['O programu', 'About'],
  'settings.purpose': ['Správce systému pro Windows 10 a 11', 'System manager for Windows 10 and 11'],
  'settings.libraries': ['Použité knihovny', 'Libraries used'],
  'settings.test': ['Ověřit spojení s programem', 'Check the connection to the program'],
  'settings.testOk': ['Program odpověděl za {ms} ms', 'The program answered in {ms} ms'],
  'settings.testFailed': ['Spojení nefunguje. {reason}', 'The connection does not work. {reason}'],
  'settings.diagnostics': ['Vypsat diagnostiku do terminálu', 'Print diagnostics to the terminal'],
  'settings.diagnosticsFailed': [
    'Diagnostiku se nepodařilo vypsat. {reason}',
    'The diagnostics could not be printed. {reason}',
  ],

  'theme.amethyst': ['Ametyst', 'Amethyst'],
  'theme.sapphire': ['Safír', 'Sapphire'],
  'theme.emerald': ['Smaragd', 'Emerald'],
  'theme.ember': ['Žár', 'Ember'],
  'theme.light': ['Světlý', 'Light'],
  'theme.system': ['Podle Windows', 'Same as Windows'],
} as const;
