import { currentSettings, settingsDocument } from './state/settings.ts';
import { place } from './state/navigation.ts';
import { setLanguage, t } from './text/text.ts';
import { ConfirmDialog } from './ui/dialog.tsx';
import { useStore } from './ui/hooks.ts';
import { Icon, Mark } from './ui/icon.tsx';
import { KeysDialog, useShortcuts } from './ui/keys.tsx';
import { ServiceDialog } from './ui/service.tsx';
import { Terminal } from './ui/terminal.tsx';
import { Toasts } from './ui/toast.tsx';
import { views } from './views/views.ts';

export function App() {
  useStore(settingsDocument);
  const { theme, language } = currentSettings();
  setLanguage(language);
  document.documentElement.dataset.theme = theme;
  document.documentElement.lang = language;
  useShortcuts();

  const { view } = useStore(place);
  const Current = views.find(({ id }) => id === view)!.component;
  return (
    <div class="frame">
      <Rail />
      <div class="stage">
        <Current key={view} />
        <Terminal />
      </div>
      <Toasts />
      <ConfirmDialog />
      <ServiceDialog />
      <KeysDialog />
    </div>
  );
}

function Rail() {
  const current = useStore(place).view;
  const groups = [...new Set(views.map(({ group }) => group))];
  return (
    <nav class="rail" aria-label={t('app.nav')}>
      <div class="rail-brand">
        <Mark />
        <span>Varnel</span>
      </div>
      {groups.map((group) => (
        <div class={group ? 'rail-group' : 'rail-group rail-foot'}>
          {group && <p class="rail-heading">{t(`group.${group}`)}</p>}
          <ul>
            {views
              .filter((entry) => entry.group === group)
              .map(({ id }) => (
                <li key={id}>
                  <button
                    type="button"
                    class="rail-item"
                    aria-current={id === current ? 'page' : undefined}
                    title={t(`view.${id}`)}
                    data-nav={id}
                    onClick={() => place.set({ view: id })}
                  >
                    <Icon name={id} />
                    <span>{t(`view.${id}`)}</span>
                  </button>
                </li>
              ))}
          </ul>
        </div>
      ))}
    </nav>
  );
}
