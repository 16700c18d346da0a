import { useEffect } from 'preact/hooks';
import { setLanguage } from '../base/text.ts';
import { ConfirmDialog } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { clearToasts, Toasts } from '../kit/toast.tsx';
import { route } from '../shell/navigation.ts';
import { ServiceDialog } from '../shell/service.tsx';
import { currentSettings, settingsDocument } from '../shell/settings.ts';
import { drawnTheme, windowsIsLight } from '../shell/theme.ts';
import { Terminal } from '../shell/terminal_pane.tsx';
import { KeysDialog } from './keys_dialog.tsx';
import { SearchDialog } from './search_dialog.tsx';
import { useShortcuts } from './shortcuts.ts';
import { Sidebar } from './sidebar.tsx';
import { views } from './views.ts';

export function App() {
  useStore(settingsDocument);
  useStore(windowsIsLight);
  const { theme, language } = currentSettings();
  setLanguage(language);
  document.documentElement.dataset.theme = drawnTheme(theme);
  document.documentElement.lang = language;
  useShortcuts();
  useEffect(() => clearToasts, [language]); // their texts are in the previous language

  const { view } = useStore(route);
  const Current = views.find(({ id }) => id === view)!.component;
  return (
    <div class="frame">
      <Sidebar />
      <div class="stage">
        <Current key={view} />
        <Terminal />
      </div>
      <Toasts />
      <ConfirmDialog />
      <ServiceDialog />
      <KeysDialog />
      <SearchDialog />
    </div>
  );
}
