import { createStore } from '../base/store.ts';
import type { Settings } from './settings_document.ts';

const lightWanted = matchMedia('(prefers-color-scheme: light)');

/** Whether Windows is set to light programs. */
export const windowsIsLight = createStore(lightWanted.matches);

lightWanted.addEventListener('change', () => windowsIsLight.set(lightWanted.matches));

/** The theme that is drawn for the one that is chosen. */
export function drawnTheme(theme: Settings['theme']) {
  if (theme !== 'system') return theme;
  return windowsIsLight.get() ? 'light' : 'amethyst';
}
