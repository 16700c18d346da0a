export const texts = {
  'repair.needs': ['Potřebuje', 'Needs'],
  'repair.next': ['Co bude dál', 'What happens next'],
  'repair.silent': [
    'Nástroj nic nevypsal, nejspíš se nespustil.',
    'The tool printed nothing; it probably did not start.',
  ],
  'repair.noEnd': [
    'Služba neoznámila konec kontroly, její výsledek není známý.',
    'The service did not report the end of the check; its result is not known.',
  ],
  'repair.noShell': [
    'Chybí-li hlavní panel, stiskněte Ctrl+Shift+Esc a spusťte novou úlohu explorer.exe.',
    'If the taskbar is missing, press Ctrl+Shift+Esc and run the new task explorer.exe.',
  ],
  'repair.comeBack': [
    'Zpět do běžného režimu se vrátíte tímto příkazem v Příkazovém řádku spuštěném jako správce (ne v PowerShellu), a potom restartem:',
    'This command brings the normal mode back, in a Command Prompt run as administrator (not PowerShell), followed by a restart:',
  ],
  'repair.copyComeBack': ['Kopírovat příkaz pro návrat', 'Copy the command for coming back'],
  'repair.flush-dns': ['Vyprázdnit mezipaměť DNS', 'Flush the DNS cache'],
  'repair.flush-dns.about': [
    'Windows zapomenou zapamatované adresy serverů. Pomáhá, když se web přestěhoval nebo se přestal načítat jen u vás.',
    'Windows forgets the server addresses it has remembered. It helps when a site has moved or has stopped loading only for you.',
  ],
  'repair.flush-dns.needs': ['nic navíc', 'nothing more'],
  'repair.flush-dns.next': [
    'Hned hotovo, spojení se nepřeruší. Adresy se zjistí znovu.',
    'Done at once, connections stay. Addresses are looked up again.',
  ],
  'repair.flush-dns.verb': ['Vyprázdnit', 'Flush'],
  'repair.rebuild-icons': ['Obnovit ikony', 'Rebuild icons'],
  'repair.rebuild-icons.about': [
    'Smaže uložené ikony a náhledy, aby si je Windows vytvořily znovu. Pomáhá, když jsou ikony prázdné nebo špatné.',
    'Deletes stored icons and thumbnails, so that Windows makes them anew. It helps when icons are blank or wrong.',
  ],
  'repair.rebuild-icons.needs': [
    'souhlas se zavřením oken Průzkumníka',
    'your consent to closing Explorer windows',
  ],
  'repair.rebuild-icons.next': [
    'Průzkumník se ukončí a znovu spustí: otevřené složky se zavřou, hlavní panel na chvíli zmizí.',
    'Explorer ends and starts again: open folders close, the taskbar disappears for a moment.',
  ],
  'repair.rebuild-icons.verb': ['Obnovit ikony', 'Rebuild icons'],
  'repair.rebuild-icons.confirm': [
    'Ukončit Průzkumníka a obnovit ikony?',
    'End Explorer and rebuild the icons?',
  ],
  'repair.rebuild-icons.confirmBody': [
    'Všechna okna Průzkumníka se zavřou i s rozdělaným kopírováním souborů. Hlavní panel na chvíli zmizí. Ostatní programy poběží dál.',
    'All Explorer windows close, also while they copy files. The taskbar disappears for a moment. Other programs go on.',
  ],
  'repair.sfc': ['Ověřit systémové soubory', 'Check system files'],
  'repair.sfc.about': [
    'Projde soubory a součásti Windows a řekne, jestli jsou v pořádku.',
    'Goes through the files and components of Windows and says whether they are intact.',
  ],
  'repair.sfc.needs': ['pomocnou službu', 'the helper service'],
  'repair.sfc.next': [
    'Trvá 5 až 30 minut, během nich můžete pracovat i přejít do jiné části. Výsledek se objeví tady.',
    'It takes 5 to 30 minutes; you can go on working, also in other views. The result appears here.',
  ],
  'repair.sfc.verb': ['Ověřit', 'Check'],
  'repair.safemode-reboot': ['Nouzový režim', 'Safe mode'],
  'repair.safemode-reboot.about': [
    'Restartuje Windows jen s nejnutnějšími ovladači, aby šlo odstranit to, co jim brání v běhu.',
    'Restarts Windows with only the most necessary drivers, so that what keeps it from running can be removed.',
  ],
  'repair.safemode-reboot.needs': [
    'pomocnou službu a uloženou práci',
    'the helper service, and your work saved',
  ],
  'repair.safemode-reboot.next': [
    'Počítač se restartuje a bude v nouzovém režimu startovat pokaždé, dokud ho nevrátíte zpět.',
    'The computer restarts, and then starts in safe mode every time until you bring it back.',
  ],
  'repair.safemode-reboot.verb': ['Restartovat do nouzového režimu', 'Restart into safe mode'],
  'repair.safemode-reboot.confirm': ['Restartovat do nouzového režimu?', 'Restart into safe mode?'],
  'repair.safemode-reboot.confirmBody': [
    'Uložte si práci, počítač se restartuje. V nouzovém režimu zůstane i po dalších restartech. Zpět se vrátíte tak, že v něm spustíte Příkazový řádek jako správce, zadáte následující příkaz a restartujete. Opište si ho:',
    'Save your work, the computer restarts. It stays in safe mode after further restarts too. To come back, run the Command Prompt there as administrator, enter the command below and restart. Write it down:',
  ],

  'update.title': ['Aktualizace Varnelu', 'Update of Varnel'],
  'update.installed': ['Nainstalovaná', 'Installed'],
  'update.online': ['Poslední vydaná', 'Latest release'],
  'update.none': ['Máte nejnovější verzi.', 'You have the newest version.'],
  'update.mandatory': ['Tuto aktualizaci je potřeba nainstalovat', 'This update has to be installed'],
  'update.changes': ['Co je nového', 'What is new'],
  'update.install': ['Stáhnout a nainstalovat', 'Download and install'],
  'update.busy': [
    'Nejdřív nechte doběhnout frontu v části Software.',
    'Let the queue in Software finish first.',
  ],
  'update.confirm': ['Aktualizovat Varnel na verzi {version}?', 'Update Varnel to version {version}?'],
  'update.confirmBody': [
    'Stáhne se verze {version}. Potom se Varnel zavře a Windows se zeptají na oprávnění k instalaci. Když ho odmítnete, zůstane nainstalovaná dosavadní verze a Varnel spustíte sami. Pokud Varnel spouštíte z rozbaleného archivu ZIP, nainstaluje se nová verze do Program Files pro všechny uživatele a začne s výchozím nastavením; rozbalená složka zůstane a můžete ji pak smazat.',
    'Version {version} is downloaded. Then Varnel closes and Windows asks for permission to install. If you decline, the present version stays installed and you start Varnel yourself. If you run Varnel from an unpacked zip, the new version is installed to Program Files for all users and begins with default settings; the unpacked folder stays, and you can delete it then.',
  ],
  'update.closing': [
    'Staženo. Varnel se teď zavře a začne instalace.',
    'Downloaded. Varnel closes now and the installation begins.',
  ],
  'update.failed': [
    'Instalační program se nepodařilo stáhnout, běží dosavadní verze.',
    'The installer could not be downloaded; the present version goes on.',
  ],
  'update.unreachable': [
    'Aktualizační server neodpovídá. Zkontrolujte připojení k internetu.',
    'The update server does not answer. Check your internet connection.',
  ],
  'update.unreadable': [
    'Aktualizační server poslal nesrozumitelnou odpověď. Zkuste to později.',
    'The update server sent an answer that makes no sense. Try again later.',
  ],

  'remove.title': ['Odebrat Varnel', 'Remove Varnel'],
  'remove.about': [
    'Spustí odinstalační program Varnelu. Vašich souborů se nedotkne.',
    'Starts the uninstaller of Varnel. Your files stay untouched.',
  ],
  'remove.verb': ['Odinstalovat Varnel', 'Uninstall Varnel'],
  'remove.confirm': ['Odinstalovat Varnel?', 'Uninstall Varnel?'],
  'remove.confirmBody': [
    'Windows se zeptají na oprávnění, Varnel se zavře a odinstalační program ho odebere z počítače.',
    'Windows asks for permission, Varnel closes, and the uninstaller removes it from the computer.',
  ],
  'remove.started': [
    'Odinstalační program se spouští. Když oprávnění odmítnete, nic se nestane.',
    'The uninstaller is starting. If you decline the permission, nothing happens.',
  ],
} as const;
