import { createStore } from '../base/store.ts';
import type { Settings } from './settings_document.ts';

const lightWanted = matchMedia('(prefers-color-scheme: light)');

/** Whether Windows uses the light mode for programs. */
export const windowsIsLight = createStore(lightWanted.matches);

lightWanted.addEventListener('change', () => windowsIsLight.set(lightWanted.matches));

/** Returns the theme to draw for the chosen one. */
export function drawnTheme(theme: Settings['theme']) {
  if (theme !== 'system') return theme;
  return windowsIsLight.get() ? 'light' : 'amethyst';
}
