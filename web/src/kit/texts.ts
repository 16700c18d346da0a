export const texts = {
  'app.retry': ['Zkusit znovu', 'Try again'],
  'app.cancel': ['Zrušit', 'Cancel'],
  'app.close': ['Zavřít', 'Close'],
  'app.copied': ['Zkopírováno do schránky', 'Copied to the clipboard'],
  'app.copyFailed': ['Kopírování do schránky se nezdařilo', 'Copying to the clipboard failed'],
  'app.messages': ['Oznámení', 'Notifications'],

  'error.absent': [
    'Stránka není otevřená v programu Varnel, a proto nemá odkud brát údaje.',
    'This page is not open inside Varnel, so it cannot get any data.',
  ],
  'error.timeout': ['Program do stanovené doby neodpověděl.', 'The program did not answer in time.'],
  'error.malformed': ['Program odpověděl nesrozumitelně.', 'The program’s answer could not be understood.'],
  'error.refused': [
    'Program požadavek odmítl a neuvedl důvod.',
    'The program refused the request without giving a reason.',
  ],
  'error.unknown': ['Něco se nepovedlo.', 'Something went wrong.'],

  'data.loading': ['Načítá se…', 'Loading…'],
  'data.elapsed': [
    {
      one: 'Načítá se už {n} sekundu…',
      few: 'Načítá se už {n} sekundy…',
      other: 'Načítá se už {n} sekund…',
    },
    { one: 'Loading for {n} second…', other: 'Loading for {n} seconds…' },
  ],
  'data.failed': ['Údaje se nepodařilo načíst', 'The data could not be loaded'],
  'data.failedOld': [
    'Novější údaje se nepodařilo načíst, zobrazují se údaje z {time}.',
    'The data could not be refreshed; what you see is from {time}.',
  ],

  'terminal.copy': ['Kopírovat výpis', 'Copy output'],

  'table.filter': ['Filtrovat', 'Filter'],
  'table.filterLabel': ['Filtrovat tabulku {label}', 'Filter the table {label}'],
  'table.count': ['{shown} z {total}', '{shown} of {total}'],
  'table.rows': [
    { one: '{n} řádek', few: '{n} řádky', other: '{n} řádků' },
    { one: '{n} row', other: '{n} rows' },
  ],
  'table.selected': [
    { one: 'vybrán {n}', few: 'vybrány {n}', other: 'vybráno {n}' },
    { one: '{n} selected', other: '{n} selected' },
  ],
  'table.hidden': ['{n} z nich skrývá filtr', '{n} of them hidden by the filter'],
  'table.selectAll': ['Vybrat všechny řádky', 'Select all rows'],
  'table.selectRow': ['Vybrat řádek {name}', 'Select row {name}'],
  'table.held': ['Pořadí se nemění, dokud hýbete ukazatelem.', 'Sorting pauses while you move the pointer.'],
  'table.empty': ['Tabulka je prázdná.', 'The table is empty.'],
  'table.copyName': ['Kopírovat „{name}“', 'Copy “{name}”'],
  'table.noMatch': ['Filtru neodpovídá žádný řádek.', 'No row matches the filter.'],
  'table.clearFilter': ['Vymazat filtr', 'Clear filter'],
  'table.copyRows': ['Kopírovat řádky', 'Copy rows'],
  'table.menu': ['Nabídka řádku', 'Row menu'],

  'confirm.more': [
    { one: 'a {n} další', few: 'a {n} další', other: 'a dalších {n}' },
    { one: 'and {n} more', other: 'and {n} more' },
  ],
} as const;
