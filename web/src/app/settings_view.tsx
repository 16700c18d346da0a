import { useId } from 'preact/hooks';
import { languages, t, type Language } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { DataView, Notice } from '../kit/data_view.tsx';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { usePending } from '../kit/hooks.ts';
import { Mark } from '../kit/icon.tsx';
import { Switch, type SwitchProps } from '../kit/switch.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { toast } from '../kit/toast.tsx';
import { ServiceMark } from '../shell/service_mark.tsx';
import { currentSettings, saveSettings, settingsDocument } from '../shell/settings.ts';
import { themes, type Ignored, type Settings } from '../shell/settings_document.ts';
import { openTerminal } from '../shell/terminal.ts';
import { View } from '../shell/view.tsx';
import { showKeys } from './keys_dialog.tsx';

export function SettingsView() {
  return (
    <View id="settings">
      <div class="settings">
        <DataView source={settingsDocument}>{() => <Preferences {...currentSettings()} />}</DataView>
        <About />
      </div>
    </View>
  );
}

function Preferences({ theme, language, autoClean, autoScan, autoOpen, scanInterval, ignoreList }: Settings) {
  return (
    <>
      <Card title={t('settings.appearance')}>
        <fieldset class="row line">
          <legend>{t('settings.theme')}</legend>
          <div class="themes">
            {themes.map((name) => (
              <label class="theme choice line" data-theme={name}>
                <input
                  type="radio"
                  name="theme"
                  checked={name === theme}
                  onChange={() => saveSettings({ theme: name })}
                />
                <span class="swatch" aria-hidden="true" />
                {t(`theme.${name}`)}
              </label>
            ))}
          </div>
        </fieldset>
        <Choice
          label={t('settings.language')}
          value={language}
          options={Object.entries(languages)}
          onChoose={(id) => saveSettings({ language: id as Language })}
        />
      </Card>
      <Card title={t('settings.scan')}>
        <Toggle
          label={t('settings.autoScan')}
          hint={t('settings.autoScanHint')}
          on={autoScan}
          onToggle={(on) => saveSettings({ autoScan: on })}
        />
        <ScanInterval hours={scanInterval} />
        <Toggle
          label={t('settings.autoOpen')}
          hint={t('settings.autoOpenHint')}
          on={autoOpen}
          onToggle={(on) => saveSettings({ autoOpen: on })}
        />
      </Card>
      <Card title={t('settings.clean')}>
        <AutoClean on={autoClean} />
      </Card>
      <IgnoreList entries={ignoreList} />
    </>
  );
}

const scanIntervals = [1, 6, 12, 24, 72, 168];

function ScanInterval({ hours }: { hours: number }) {
  // Keeps offering an interval that another version stored.
  const offered = [...new Set([...scanIntervals, hours])].sort((a, b) => a - b);
  const name = (n: number) => (n % 24 === 0 ? t('settings.days', { n: n / 24 }) : t('settings.hours', { n }));
  return (
    <Choice
      label={t('settings.scanInterval')}
      hint={t('settings.scanIntervalHint')}
      value={String(hours)}
      options={offered.map((n) => [String(n), name(n)])}
      onChoose={(n) => saveSettings({ scanInterval: Number(n) })}
    />
  );
}

/**
 * Asks the service first, because it keeps the schedule. If it refuses, nothing is stored and the switch
 * goes back.
 */
async function setAutoClean(enabled: boolean) {
  try {
    await host.request('toggleScheduleClean', { enabled });
    saveSettings({ autoClean: enabled });
  } catch (error) {
    const reason = errorText(error, t('service.refused'));
    toast(t(enabled ? 'settings.autoCleanNotOn' : 'settings.autoCleanNotOff', { reason }), { error: true });
  }
}

function AutoClean({ on }: { on: boolean }) {
  return (
    <Toggle
      label={t('settings.autoClean')}
      hint={t('settings.autoCleanHint')}
      byService
      {...usePending(on, setAutoClean)}
    />
  );
}

interface ToggleProps extends SwitchProps {
  hint: string;
  byService?: boolean;
}

function Toggle({ hint, byService, ...props }: ToggleProps) {
  return (
    <div class="row line">
      <span>
        <span>
          {props.label}
          {byService && <ServiceMark />}
        </span>
        <span class="muted small">{hint}</span>
      </span>
      <Switch {...props} />
    </div>
  );
}

interface ChoiceProps {
  label: string;
  hint?: string;
  value: string;
  options: [value: string, name: string][];
  onChoose(value: string): void;
}

function Choice({ label, hint, value, options, onChoose }: ChoiceProps) {
  const id = useId();
  return (
    <div class="row line">
      <span>
        <label for={id}>{label}</label>
        {hint && (
          <span class="muted small" id={`${id}-hint`}>
            {hint}
          </span>
        )}
      </span>
      <select
        id={id}
        aria-describedby={hint && `${id}-hint`}
        value={value}
        onChange={(event) => onChoose(event.currentTarget.value)}
      >
        {options.map(([option, name]) => (
          <option value={option}>{name}</option>
        ))}
      </select>
    </div>
  );
}

const keyOf = ({ type, id, version }: Ignored) => [type, id, version].join('\n');

/** Removes a single entry immediately and offers to undo that; asks before removing several. */
async function removeEntries(entries: Ignored[], gone: Ignored[]) {
  const n = gone.length;
  const question = {
    title: t('settings.removeTitle', { n }),
    body: t('settings.removeBody'),
    items: gone.map(({ id }) => id),
    verb: t('settings.remove'),
    danger: true,
  };
  if (n === 0 || (n > 1 && !(await confirm(question)))) return;
  saveSettings(
    { ignoreList: entries.filter((entry) => !gone.includes(entry)) },
    {
      text: t('settings.removed', { n }),
      action: { label: t('app.undo'), run: () => saveSettings({ ignoreList: entries }) },
    },
  );
}

const columns: Column<Ignored>[] = [
  { id: 'id', title: 'settings.ignored.id', value: ({ id }) => id },
  {
    id: 'version',
    title: 'software.version',
    value: ({ version }) => version ?? t('settings.ignored.every'),
    width: '9rem',
  },
  { id: 'type', title: 'app.kind', value: ({ type }) => type, width: '12rem', drop: 1 },
];

function IgnoreList({ entries }: { entries: Ignored[] }) {
  const selection = useSelection('ignored');
  const remove = (gone: Ignored[]) => void removeEntries(entries, gone);
  const selected = entries.filter((entry) => selection[0].keys.has(keyOf(entry)));
  return (
    <Card title={t('settings.ignored')} aside={<span class="muted">{t('settings.ignoredHint')}</span>}>
      {entries.length === 0 ? (
        <Notice icon="success" title={t('settings.ignoredEmpty')} />
      ) : (
        <Table
          label={t('settings.ignored')}
          rows={entries}
          rowKey={keyOf}
          columns={columns}
          remember="ignored"
          sort={{ column: 'id', descending: false }}
          selection={selection}
          onDelete={remove}
          menu={(rows) => [
            { label: t('settings.remove'), icon: 'remove', danger: true, run: () => remove(rows) },
          ]}
          tools={
            <Button icon="remove" disabled={selected.length === 0} onClick={() => remove(selected)}>
              {t('settings.remove')}
            </Button>
          }
        />
      )}
    </Card>
  );
}

async function testBridge() {
  const started = performance.now();
  try {
    await host.request('testBridge');
    toast(t('settings.testOk', { ms: Math.round(performance.now() - started) }));
  } catch (error) {
    toast(t('settings.testFailed', { reason: errorText(error) }), { error: true });
  }
}

async function printDiagnostics() {
  openTerminal(true);
  try {
    await host.request('debugSystem');
  } catch (error) {
    toast(t('settings.diagnosticsFailed', { reason: errorText(error) }), { error: true });
  }
}

function About() {
  return (
    <Card title={t('settings.about')}>
      <div class="about line">
        <Mark />
        <div>
          <p class="about-name">
            Varnel <span class="muted">{`${t('software.version')} ${VARNEL_VERSION}`}</span>
          </p>
          <p class="muted">{t('settings.purpose')}</p>
          <p class="muted small">
            {t('settings.libraries')}: Preact, Lucide, nlohmann/json (THIRD_PARTY_NOTICES.txt)
          </p>
        </div>
      </div>
      <div class="buttons line">
        <Button icon="terminal" onClick={() => void printDiagnostics()}>
          {t('settings.diagnostics')}
        </Button>
        <Button icon="service" onClick={() => void testBridge()}>
          {t('settings.test')}
        </Button>
        <Button icon="keyboard" onClick={showKeys}>
          {t('keys.title')}
        </Button>
      </div>
    </Card>
  );
}
