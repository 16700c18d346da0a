export const texts = {
  'repair.needs': ['Potřebuje', 'Needs'],
  'repair.next': ['Co se stane', 'What happens next'],
  'repair.silent': [
    'Nástroj nic nevypsal, nejspíš se nespustil.',
    'The tool printed nothing; it probably did not start.',
  ],
  'repair.noEnd': [
    'Služba neoznámila konec kontroly, výsledek proto není známý.',
    'The service did not report the end of the check, so the result is not known.',
  ],
  'repair.noShell': [
    'Chybí-li hlavní panel, stiskněte Ctrl+Shift+Esc, zvolte Spustit novou úlohu a zadejte explorer.exe.',
    'If the taskbar is missing, press Ctrl+Shift+Esc, choose Run new task and enter explorer.exe.',
  ],
  'repair.comeBack': [
    'Do běžného režimu se vrátíte tak, že v Příkazovém řádku spuštěném jako správce (ne v PowerShellu) zadáte tento příkaz a restartujete:',
    'To return to normal mode, enter this command in a Command Prompt run as administrator (not PowerShell) and restart:',
  ],
  'repair.copyComeBack': ['Kopírovat příkaz pro návrat', 'Copy the command to return'],
  'repair.flush-dns': ['Vyprázdnit mezipaměť DNS', 'Flush the DNS cache'],
  'repair.flush-dns.about': [
    'Windows zapomenou uložené adresy serverů. Pomáhá, když se web přestěhoval nebo se nenačítá jen vám.',
    'Windows forgets the server addresses it has stored. Helps when a site has moved or fails to load only for you.',
  ],
  'repair.flush-dns.needs': ['nic navíc', 'nothing else'],
  'repair.flush-dns.next': [
    'Hotovo hned, žádné spojení se nepřeruší. Adresy si Windows zjistí znovu.',
    'Done at once, without interrupting connections. Windows looks the addresses up again.',
  ],
  'repair.flush-dns.verb': ['Vyprázdnit', 'Flush'],
  'repair.rebuild-icons': ['Obnovit ikony', 'Rebuild icons'],
  'repair.rebuild-icons.about': [
    'Smaže uložené ikony a náhledy, aby si je Windows vytvořily znovu. Pomáhá, když jsou ikony prázdné nebo špatné.',
    'Deletes stored icons and thumbnails so that Windows recreates them. Helps when icons are blank or wrong.',
  ],
  'repair.rebuild-icons.needs': [
    'souhlas se zavřením oken Průzkumníka',
    'your consent to closing Explorer windows',
  ],
  'repair.rebuild-icons.next': [
    'Průzkumník se ukončí a znovu spustí: otevřené složky se zavřou, hlavní panel na chvíli zmizí.',
    'Explorer closes and starts again: open folders close, and the taskbar disappears for a moment.',
  ],
  'repair.rebuild-icons.verb': ['Obnovit ikony', 'Rebuild icons'],
  'repair.rebuild-icons.confirm': [
    'Ukončit Průzkumníka a obnovit ikony?',
    'End Explorer and rebuild the icons?',
  ],
  'repair.rebuild-icons.confirmBody': [
    'Zavřou se všechna okna Průzkumníka a přeruší se i probíhající kopírování souborů. Hlavní panel na chvíli zmizí. Ostatní programy poběží dál.',
    'All Explorer windows close, and copying in progress is interrupted. The taskbar disappears for a moment. Other programs keep running.',
  ],
  'repair.sfc': ['Ověřit systémové soubory', 'Check system files'],
  'repair.sfc.about': [
    'Projde soubory a součásti Windows a zjistí, jestli jsou v pořádku.',
    'Goes through the files and components of Windows and finds out whether they are intact.',
  ],
  'repair.sfc.needs': ['pomocnou službu', 'the helper service'],
  'repair.sfc.next': [
    'Trvá 5 až 30 minut, během nich můžete pracovat i přejít do jiné části. Výsledek se objeví tady.',
    'Takes 5 to 30 minutes. You can keep working, in other views too. The result appears here.',
  ],
  'repair.sfc.verb': ['Ověřit', 'Check'],
  'repair.safemode-reboot': ['Nouzový režim', 'Safe mode'],
  'repair.safemode-reboot.about': [
    'Restartuje Windows jen s nejnutnějšími ovladači, abyste mohli odstranit to, co systému brání v běhu.',
    'Restarts Windows with only the essential drivers, so that you can remove what keeps it from running.',
  ],
  'repair.safemode-reboot.needs': [
    'pomocnou službu a uloženou práci',
    'the helper service, and your work saved',
  ],
  'repair.safemode-reboot.next': [
    'Počítač se restartuje a bude v nouzovém režimu startovat pokaždé, dokud ho nepřepnete zpět.',
    'The computer restarts, and from then on starts in safe mode until you switch it back.',
  ],
  'repair.safemode-reboot.verb': ['Restartovat do nouzového režimu', 'Restart into safe mode'],
  'repair.safemode-reboot.confirm': ['Restartovat do nouzového režimu?', 'Restart into safe mode?'],
  'repair.safemode-reboot.confirmBody': [
    'Uložte si práci, počítač se restartuje. V nouzovém režimu zůstane i po dalších restartech. Zpět se vrátíte tak, že v něm spustíte Příkazový řádek jako správce, zadáte následující příkaz a restartujete. Opište si ho:',
    'Save your work: the computer restarts. It stays in safe mode after further restarts too. To return, run the Command Prompt there as administrator, enter the command below and restart. Write it down:',
  ],

  'update.title': ['Aktualizace Varnelu', 'Varnel update'],
  'update.installed': ['Nainstalovaná', 'Installed'],
  'update.online': ['Poslední vydaná', 'Latest release'],
  'update.checking': ['Hledá se novější verze…', 'Looking for a newer version…'],
  'update.none': ['Máte nejnovější verzi.', 'You have the latest version.'],
  'update.mandatory': ['Tato aktualizace je povinná', 'This update is required'],
  'update.changes': ['Co je nového', 'What’s new'],
  'update.install': ['Stáhnout a nainstalovat', 'Download and install'],
  'update.confirm': ['Aktualizovat Varnel na verzi {version}?', 'Update Varnel to version {version}?'],
  'update.confirmBody': [
    'Stáhne se verze {version}. Potom se Varnel zavře a Windows se zeptají na oprávnění k instalaci. Když ho odmítnete, zůstane nainstalovaná dosavadní verze a Varnel si znovu spustíte sami. Pokud Varnel spouštíte z rozbaleného archivu ZIP, nainstaluje se nová verze do Program Files pro všechny uživatele a začne s výchozím nastavením; rozbalená složka zůstane a můžete ji pak smazat.',
    'Version {version} is downloaded. Then Varnel closes and Windows asks for permission to install. If you decline, the current version stays installed and you start Varnel again yourself. If you run Varnel from an unpacked zip, the new version is installed in Program Files for all users and starts with default settings; the unpacked folder stays, and you can delete it afterwards.',
  ],
  'update.closing': [
    'Staženo. Varnel se teď zavře a začne instalace.',
    'Downloaded. Varnel closes now, and the installation begins.',
  ],
  'update.failed': [
    'Instalační program se nepodařilo stáhnout, dál běží dosavadní verze.',
    'The installer could not be downloaded; the current version keeps running.',
  ],
  'update.unreachable': [
    'Aktualizační server neodpovídá. Zkontrolujte připojení k internetu.',
    'The update server is not responding. Check your internet connection.',
  ],
  'update.unreadable': [
    'Aktualizační server poslal nesrozumitelnou odpověď. Zkuste to později.',
    'The update server’s answer could not be understood. Try again later.',
  ],

  'remove.title': ['Odebrat Varnel', 'Remove Varnel'],
  'remove.about': [
    'Spustí odinstalační program Varnelu. Vašich souborů se nedotkne.',
    'Starts the Varnel uninstaller. Your files stay untouched.',
  ],
  'remove.verb': ['Odinstalovat Varnel', 'Uninstall Varnel'],
  'remove.confirm': ['Odinstalovat Varnel?', 'Uninstall Varnel?'],
  'remove.confirmBody': [
    'Windows se zeptají na oprávnění, Varnel se zavře a odinstalační program ho odebere z počítače.',
    'Windows asks for permission, Varnel closes, and the uninstaller removes it from the computer.',
  ],
  'remove.started': [
    'Odinstalační program se spouští. Když oprávnění odmítnete, nic se nestane.',
    'The uninstaller is starting. If you decline, nothing happens.',
  ],
} as const;
