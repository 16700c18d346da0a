// Joins the text tables of the rooms into every text of the page.
import { setTexts } from '../base/text.ts';
import { texts as clean } from '../clean/texts.ts';
import { texts as disk } from '../disk/texts.ts';
import { texts as kit } from '../kit/texts.ts';
import { texts as maint } from '../maint/texts.ts';
import { texts as net } from '../net/texts.ts';
import { texts as shell } from '../shell/texts.ts';
import { texts as software } from '../software/texts.ts';
import { texts as startup } from '../startup/texts.ts';
import { texts as system } from '../system/texts.ts';
import { texts as app } from './texts.ts';

export const tables = { kit, shell, system, clean, software, disk, startup, net, maint, app };

export const texts = {
  ...kit,
  ...shell,
  ...system,
  ...clean,
  ...software,
  ...disk,
  ...startup,
  ...net,
  ...maint,
  ...app,
};

type AllTexts = typeof texts;

declare module '../base/text.ts' {
  interface Texts extends AllTexts {}
}

setTexts(texts);
