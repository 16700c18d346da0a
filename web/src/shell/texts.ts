export const texts = {
  'app.undo': ['Vrátit zpět', 'Undo'],
  'search.title': ['Hledat ve všem', 'Search everything'],
  'app.refresh': ['Obnovit', 'Refresh'],
  'app.refreshing': ['Obnovuje se, {n} s', 'Refreshing, {n} s'],
  'app.updated': ['Aktualizováno {time}', 'Updated {time}'],
  'app.name': ['Název', 'Name'],
  'app.seconds': ['{n} s', '{n} s'],
  'app.web': ['Hledat na webu', 'Search the web'],
  'app.scope': ['Pro koho', 'Applies to'],
  'app.kind': ['Druh', 'Kind'],
  'app.size': ['Velikost', 'Size'],

  'view.dashboard': ['Přehled', 'Dashboard'],
  'view.cleaning': ['Čištění', 'Cleaning'],
  'view.software': ['Software', 'Software'],
  'view.disk': ['Disk', 'Disk'],
  'view.startup': ['Po spuštění', 'Start-up'],
  'view.processes': ['Procesy', 'Processes'],
  'view.network': ['Síť', 'Network'],
  'view.developer': ['Vývojář', 'Developer'],
  'view.maintenance': ['Údržba', 'Maintenance'],
  'view.settings': ['Nastavení', 'Settings'],

  'badge.admin': ['Správce', 'Administrator'],
  'badge.user': ['Běžný uživatel', 'Standard user'],
  'badge.admin.hint': ['Varnel běží s právy správce.', 'Varnel runs with administrator rights.'],
  'badge.user.hint': [
    'Varnel běží bez práv správce. Úkony, které je vyžadují, předává pomocné službě.',
    'Varnel runs without administrator rights. Anything that needs them is passed to the helper service.',
  ],
  'badge.service.on': ['Služba běží', 'Service running'],
  'badge.service.off': ['Služba neběží', 'Service not running'],
  'badge.service.on.hint': ['Pomocná služba odpovídá.', 'The helper service is responding.'],
  'badge.service.off.hint': [
    'Pomocná služba neodpovídá. Kliknutím zjistíte, co to znamená.',
    'The helper service is not responding. Click to see what that means.',
  ],
  'badge.checking': ['Zjišťuje se stav', 'Checking the status'],
  'badge.unknown': ['Stav neznámý', 'Status unknown'],

  'service.title': ['Pomocná služba neběží', 'The helper service is not running'],
  'service.what': [
    'Varnel sám pracuje s vašimi běžnými právy. Zásahy, které vyžadují práva správce, předává své pomocné službě, a ta teď neodpovídá.',
    'Varnel itself runs with your ordinary rights. Anything that needs administrator rights is passed to its helper service, which is not responding.',
  ],
  'service.stops': ['Dokud služba neběží, nelze:', 'Until the service runs, you cannot:'],
  'service.stops.1': [
    'uložit soubor hosts a systémové proměnné prostředí, spravovat vývojářské služby,',
    'save the hosts file and system environment variables, manage developer services,',
  ],
  'service.stops.2': [
    'měnit položky po spuštění společné pro všechny uživatele, čistit složky Windows, instalovat ovladače,',
    'change start-up items that all users share, clean the folders of Windows, install drivers,',
  ],
  'service.stops.3': [
    'ověřovat systémové soubory, přepínat hibernaci, plánovat čištění a restartovat do nouzového režimu.',
    'verify system files, switch hibernation, schedule cleaning or restart into safe mode.',
  ],
  'service.works': ['Vše ostatní funguje dál', 'Everything else still works'],
  'service.works.text': [
    'Přehled, seznamy, analýza disku i úklid vašich vlastních souborů na službě nezávisí.',
    'The dashboard, the lists, disk analysis and cleaning your own files do not depend on the service.',
  ],
  'service.get': ['Jak ji získat', 'How to get it'],
  'service.get.text': [
    'Spusťte instalační program Varnelu a nechte v něm zaškrtnutou součást „Pomocná služba“. Je-li už nainstalovaná, otevřete Služby (services.msc) a spusťte „Varnel Helper Service“.',
    'Run Varnel’s setup program and leave the “Helper service” component ticked. If the service is already installed, open Services (services.msc) and start “Varnel Helper Service”.',
  ],
  'service.needed': [
    'Vyžaduje pomocnou službu, která teď neběží.',
    'Needs the helper service, which is not running.',
  ],
  'service.refused': [
    'Pomocná služba požadavek nesplnila.',
    'The helper service did not carry out the request.',
  ],
  'service.back': ['Pomocná služba znovu běží', 'The helper service is running again'],

  'terminal.title': ['Terminál', 'Terminal'],
  'terminal.show': ['Zobrazit terminál', 'Show terminal'],
  'terminal.hide': ['Skrýt terminál', 'Hide terminal'],
  'terminal.output': ['Výpis terminálu', 'Terminal output'],
  'terminal.clear': ['Vymazat výpis', 'Clear output'],
  'terminal.empty': [
    'Zatím žádný výpis. Varnel a nástroje systému sem vypisují, co právě dělají.',
    'No output yet. What Varnel and the system tools are doing will appear here.',
  ],
  'terminal.unseen': [
    { one: '{n} nový řádek', few: '{n} nové řádky', other: '{n} nových řádků' },
    { one: '{n} new line', other: '{n} new lines' },
  ],

  'dashboard.noDisks': ['Nebyl nalezen žádný pevný disk.', 'No fixed disk was found.'],

  'recycle.verb': ['Přesunout do koše', 'Move to recycle bin'],
  'recycle.title': [
    {
      one: 'Přesunout {n} položku do koše?',
      few: 'Přesunout {n} položky do koše?',
      other: 'Přesunout {n} položek do koše?',
    },
    { one: 'Move {n} item to the recycle bin?', other: 'Move {n} items to the recycle bin?' },
  ],
  'recycle.size': ['Dohromady {size}.', '{size} together.'],
  'recycle.body': [
    'Složky se přesunou s celým obsahem. Z koše je můžete obnovit, dokud ho nevysypete. Co se do koše nevejde nebo leží na disku bez koše, smažou Windows natrvalo.',
    'Folders are moved with everything in them. You can restore the items until you empty the bin. Whatever does not fit into it, or lies on a drive without one, Windows deletes permanently.',
  ],
  'recycle.done': [
    {
      one: 'Do koše přesunuta {n} položka',
      few: 'Do koše přesunuty {n} položky',
      other: 'Do koše přesunuto {n} položek',
    },
    { one: '{n} item moved to the recycle bin', other: '{n} items moved to the recycle bin' },
  ],
  'recycle.some': [
    'Do koše přesunuto jen {n} z {total}. Ostatní nejspíš používá jiný program nebo k nim chybí oprávnění.',
    'Moved only {n} of {total} to the recycle bin. The others are probably in use by another program, or you have no right to delete them.',
  ],
  'recycle.none': [
    'Do koše se nepodařilo přesunout nic. Položky nejspíš používá jiný program, chybí k nim oprávnění, nebo už neexistují.',
    'Nothing could be moved to the recycle bin. The items are probably in use by another program, you have no right to delete them, or they are already gone.',
  ],
  'recycle.refused': [
    'Tohle Varnel do koše nepřesune: potřebují to Windows, jiné programy nebo sám Varnel.',
    'Varnel does not move this to the recycle bin: Windows, other programs or Varnel itself need it.',
  ],

  'explorer.open': ['Otevřít v Průzkumníku', 'Open in Explorer'],
  'explorer.failed': [
    'Složku {path} se nepodařilo otevřít. {reason}',
    'The folder {path} could not be opened. {reason}',
  ],

  'disk.copyPath': ['Kopírovat cestu', 'Copy path'],

  'exit.code': ['kód {code}', 'code {code}'],
  'jobs.log': ['Výpis nástroje', 'Tool output'],
  'jobs.abandon': ['Nečekat dál', 'Stop waiting'],

  'update.willClose': [
    'Po stažení se Varnel zavře a spustí se znovu už v nové verzi.',
    'After the download, Varnel closes and starts again in the new version.',
  ],
  'update.busy': [
    'Nejdřív nechte doběhnout frontu v části Software.',
    'Let the queue in Software finish first.',
  ],
  'hosts.lost': [
    'Neuložené úpravy souboru hosts se ztratí.',
    'Unsaved changes to the hosts file will be lost.',
  ],
  'update.downloading': ['Stahuje se instalační program…', 'Downloading the installer…'],

  'processes.end': ['Ukončit', 'End'],
  'processes.endTitle': [
    {
      one: 'Ukončit {n} proces?',
      few: 'Ukončit {n} procesy?',
      other: 'Ukončit {n} procesů?',
    },
    { one: 'End {n} process?', other: 'End {n} processes?' },
  ],
  'processes.endBody': [
    'Proces skončí okamžitě a nic už neuloží. Neuložená práce se ztratí.',
    'The process ends immediately and cannot save anything. Unsaved work is lost.',
  ],
  'processes.endOwnTitle': ['Ukončit i Varnel?', 'End Varnel as well?'],
  'processes.endOwnBody': [
    'Je to přímo Varnel: okno se zavře a rozdělané aktualizace, čištění i neuložené úpravy se ztratí.',
    'This is Varnel itself: its window closes, and updates in progress, cleaning and unsaved changes are lost.',
  ],
  'processes.ended': ['Proces {name} (PID {pid}) ukončen', '{name} (PID {pid}) ended'],
  'processes.gone': ['Proces {name} (PID {pid}) už neběží', '{name} (PID {pid}) is no longer running'],
  'processes.endFailed': [
    'Proces {name} (PID {pid}) se nepodařilo ukončit. {reason}',
    '{name} (PID {pid}) could not be ended. {reason}',
  ],
  'processes.endRefused': [
    'Buď už skončil, nebo k tomu Varnel nemá právo.',
    'It has already ended, or Varnel is not allowed to end it.',
  ],

  'network.process': ['Proces', 'Process'],

  'settings.saved': ['Nastavení uloženo', 'Settings saved'],
  'settings.saveFailed': [
    'Nastavení se nepodařilo uložit. {reason}',
    'The settings could not be saved. {reason}',
  ],
} as const;
