import type { TextTable } from '../base/text.ts';

export const texts = {
  'startup.name': ['Program', 'Program'],
  'startup.runs': ['Spouští se', 'Starts'],
  'startup.yes': ['ano', 'yes'],
  'startup.no': ['ne', 'no'],
  'startup.impact': ['Dopad', 'Impact'],
  'startup.impactHint': [
    'Dopad je odhad podle slov v příkazu, neměří se.',
    'The impact is guessed from words in the command, not measured.',
  ],
  'startup.high': ['vysoký', 'high'],
  'startup.medium': ['střední', 'medium'],
  'startup.low': ['nízký', 'low'],
  'startup.scope': ['Pro koho', 'For whom'],
  'startup.user': ['jen pro vás', 'only you'],
  'startup.machine': ['všichni uživatelé', 'all users'],
  'startup.command': ['Příkaz', 'Command'],
  'startup.copy': ['Kopírovat příkaz', 'Copy command'],
  'startup.copyCommand': ['Kopírovat příkaz položky {name}', 'Copy the command of {name}'],
  'startup.switch': ['Spouštět {name} po přihlášení', 'Start {name} after sign-in'],
  'startup.on': ['{name} se zase bude spouštět po přihlášení', '{name} will start after sign-in again'],
  'startup.off': ['{name} se už po přihlášení nespustí', '{name} will not start after sign-in any more'],
  'startup.onFailed': ['{name} se nepodařilo zapnout. {reason}', '{name} could not be switched on. {reason}'],
  'startup.offFailed': [
    '{name} se nepodařilo vypnout. {reason}',
    '{name} could not be switched off. {reason}',
  ],
  'startup.noList': [
    'Windows pro tento účet ještě nevedou seznam povolených položek. Vznikne, až některou přepnete ve Správci úloh.',
    'Windows keeps no list of approved items for this account yet. It appears once you switch an item in Task Manager.',
  ],
  'startup.needsService': [
    'Položky společné pro všechny mění pomocná služba, a ta to neprovedla.',
    'Items that all users share are changed by the helper service, and it did not do so.',
  ],
  'startup.notStored': ['Windows změnu neuložily.', 'Windows did not store the change.'],
  'startup.none': ['Po přihlášení se nic nespouští', 'Nothing starts after sign-in'],
  'startup.noneHint': [
    'Varnel hledá v registru v klíči Run, ve vašem i ve společném.',
    'Varnel looks into the Run key of the registry, yours and the shared one.',
  ],
} as const satisfies TextTable;
