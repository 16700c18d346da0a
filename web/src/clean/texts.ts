export const texts = {
  'cleaning.junk': ['Nepotřebné soubory', 'Junk files'],
  'cleaning.total': ['K vyčištění', 'To be cleaned'],
  'cleaning.ofAll': [
    'z nalezených {size}. Skutečně se může uvolnit méně.',
    'of {size} found. The space freed may be less.',
  ],
  'cleaning.nothing': ['Není co čistit.', 'There is nothing to clean.'],
  'cleaning.measuring': ['Měří se, {n} s', 'Measuring, {n} s'],
  'cleaning.cleaning': ['Čistí se, {n} s', 'Cleaning, {n} s'],
  'cleaning.clean': ['Vyčistit', 'Clean'],
  'cleaning.confirm': ['Vyčistit vybrané kategorie?', 'Clean the ticked categories?'],
  'cleaning.confirmBody': [
    'Obsah jejich složek, dohromady až {size}, se smaže natrvalo, nepůjde do koše. Co právě používá jiný program, zůstane.',
    'The contents of their folders, up to {size} together, are deleted permanently and do not go to the recycle bin. Files in use by other programs stay.',
  ],
  'cleaning.freed': ['Uvolněno {size}', 'Freed {size}'],
  'cleaning.freedTotal': ['Uvolněno', 'Freed'],
  'cleaning.stays': [
    'Ve všech kategoriích dohromady zbývá {size}.',
    '{size} left in all categories together.',
  ],
  'cleaning.left': [
    'Zůstalo {size}: některé soubory právě používá jiný program nebo k nim chybí oprávnění.',
    '{size} left: some files are in use by another program, or you have no right to delete them.',
  ],
  'cleaning.leftMeasured': [
    'Zůstalo {size}. {what} Varnel nemaže a některé soubory může používat jiný program.',
    '{size} left. {what} are not deleted by Varnel, and other programs may be using some files.',
  ],
  'cleaning.failed': ['Čištění se nedokončilo. {reason}', 'Cleaning did not finish. {reason}'],

  'junk.windowsTemp': ['Dočasné soubory Windows', 'Windows temporary files'],
  'junk.windowsTemp.about': [
    'Zbytky po instalacích a službách ve složkách Temp a SystemTemp. Druhou z nich Varnel jen měří.',
    'What installers and services left in the Temp and SystemTemp folders. Varnel only measures the latter.',
  ],
  'junk.windowsTemp.measured': ['Soubory ve složce SystemTemp', 'Files in the SystemTemp folder'],
  'junk.prefetch': ['Prefetch', 'Prefetch'],
  'junk.prefetch.about': [
    'Záznamy pro rychlejší start programů, Windows si je vytvoří znovu. Čistí se vždy spolu s dočasnými soubory Windows.',
    'Records that let programs start faster; Windows recreates them. Always cleaned together with Windows temporary files.',
  ],
  'junk.userTemp': ['Vaše dočasné soubory', 'Your temporary files'],
  'junk.userTemp.about': [
    'Co si programy odložily do vaší dočasné složky a neuklidily po sobě.',
    'What programs put into your temporary folder and did not clean up.',
  ],
  'junk.kept': [
    'Složka leží v místě, které Varnel nevyprazdňuje.',
    'It is in a place that Varnel does not empty.',
  ],
  'junk.winUpdate': ['Stažené aktualizace', 'Downloaded updates'],
  'junk.winUpdate.about': [
    'Instalační soubory aktualizací Windows. Co bude ještě potřeba, stáhne se znovu.',
    'Installation files of Windows updates. What is still needed is downloaded again.',
  ],
  'junk.browserCache': ['Mezipaměť prohlížečů', 'Browser caches'],
  'junk.browserCache.about': [
    'Uložené kopie stránek z Chromu, Edge a Brave. Profily Firefoxu Varnel jen měří.',
    'Saved copies of pages from Chrome, Edge and Brave. Varnel only measures Firefox profiles.',
  ],
  'junk.browserCache.measured': ['Profily Firefoxu', 'Firefox profiles'],
  'junk.shaderCache': ['Mezipaměť grafiky', 'Graphics cache'],
  'junk.shaderCache.about': [
    'Shadery přeložené pro hry a programy. Po vyčištění se hry a programy poprvé spustí pomaleji.',
    'Shaders compiled for games and programs. After cleaning, games and programs start more slowly the first time.',
  ],
  'junk.systemLogs': ['Protokoly a hlášení chyb', 'Logs and error reports'],
  'junk.systemLogs.about': [
    'Záznamy systému a hlášení o pádech programů. Výpisy paměti ve složce Minidump Varnel jen měří.',
    'System records and reports of crashed programs. Varnel only measures memory dumps in the Minidump folder.',
  ],
  'junk.systemLogs.measured': ['Výpisy paměti ve složce Minidump', 'Memory dumps in the Minidump folder'],

  'junk.show': ['Složky kategorie {name}', 'Folders of {name}'],
  'junk.open': ['Otevřít', 'Open'],
  'junk.onlyMeasured': ['jen se měří', 'only measured'],
  'junk.empty': ['prázdná nebo nepřístupná', 'empty or not accessible'],
  'junk.entries': [
    { one: '{n} položka', few: '{n} položky', other: '{n} položek' },
    { one: '{n} item', other: '{n} items' },
  ],
  'junk.more': [
    { one: 'a {n} další', few: 'a {n} další', other: 'a {n} dalších' },
    { one: 'and {n} more', other: 'and {n} more' },
  ],
  'junk.nowhere': [
    'Složky této kategorie se nepodařilo najít.',
    'The folders of this category were not found.',
  ],

  'downloads.title': ['Velké staré stažené soubory', 'Large old downloads'],
  'downloads.about': [
    'Instalační soubory, obrazy disků a archivy větší než 1 MB, které leží ve složce Stažené soubory beze změny aspoň 30 dní.',
    'Installers, disk images and archives over 1 MB that have been in the Downloads folder unchanged for at least 30 days.',
  ],
  'downloads.none': ['Žádné velké staré stažené soubory', 'No large old downloads'],
  'downloads.total': ['celkem {size}', '{size} in total'],
  'downloads.age': ['Stáří', 'Age'],
  'downloads.days': [
    { one: '{n} den', few: '{n} dny', other: '{n} dní' },
    { one: '{n} day', other: '{n} days' },
  ],

  'recycle.verbSize': ['Přesunout do koše ({size})', 'Move to recycle bin ({size})'],

  'system.title': ['Systémové soubory', 'System files'],
  'system.hiberfil': ['hiberfil.sys', 'hiberfil.sys'],
  'system.hiberfil.about': [
    'Obsah paměti pro hibernaci a rychlé spuštění. Vypnutím hibernace zmizí.',
    'Holds the contents of memory for hibernation and fast start-up. It disappears when hibernation is turned off.',
  ],
  'system.pagefile': ['pagefile.sys', 'pagefile.sys'],
  'system.pagefile.about': [
    'Stránkovací soubor: Windows do něj odkládají, co se nevejde do paměti. Nemažte ho.',
    'The paging file: Windows puts here what does not fit into memory. Do not delete it.',
  ],
  'system.swapfile': ['swapfile.sys', 'swapfile.sys'],
  'system.swapfile.about': [
    'Odkládací soubor aplikací ze Store, které zrovna nepoužíváte. Spravují ho Windows.',
    'Holds suspended Store apps. Windows manages it.',
  ],
  'system.absent': ['neexistuje', 'does not exist'],
  'system.hibernation': ['Hibernace', 'Hibernation'],
  'system.hibernation.about': [
    'Bez ní nefunguje ani rychlé spuštění. Přepíná ji pomocná služba.',
    'Fast start-up does not work without it either. The helper service turns it on and off.',
  ],
  'system.hibernationOn': ['Hibernace zapnuta', 'Hibernation turned on'],
  'system.hibernationOff': ['Hibernace vypnuta', 'Hibernation turned off'],
  'system.hibernationFailed': [
    'Hibernaci se nepodařilo přepnout. {reason}',
    'Hibernation could not be turned on or off. {reason}',
  ],
} as const;
