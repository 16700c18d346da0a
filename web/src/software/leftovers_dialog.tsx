import { useState } from 'preact/hooks';
import { exactBytes, formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { confirm, Dialog } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { openInExplorer } from '../shell/explorer.ts';
import { placeOf, tickedAtFirst } from './leftover_ticks.ts';
import { cleanLeftovers, closeLeftovers, leftovers, type Found } from './leftovers.ts';

/** Offers the leftovers of an uninstalled program; those of several programs one after another. */
export function LeftoversDialog() {
  const [first] = useStore(leftovers);
  // A new list is a new dialog, without the ticks of the previous one.
  return first ? <LeftoversChoice key={`${first.job.id} ${first.items.length}`} found={first} /> : null;
}

function LeftoversChoice({ found }: { found: Found }) {
  const { job, items } = found;
  const close = () => closeLeftovers(found);
  const [ticked, setTicked] = useState<ReadonlySet<string>>(
    () => new Set(items.filter(tickedAtFirst).map(({ path }) => path)),
  );
  const chosen = items.filter(({ path }) => ticked.has(path));
  async function remove() {
    const agreed = await confirm({
      title: t('leftovers.confirm', { n: chosen.length }),
      body: t('leftovers.confirmBody'),
      items: chosen.map(({ path }) => path),
      listAll: true,
      verb: t('leftovers.verb'),
      danger: true,
    });
    if (!agreed) return;
    close();
    void cleanLeftovers(job, chosen);
  }
  function toggle(path: string) {
    const next = new Set(ticked);
    if (!next.delete(path)) next.add(path);
    setTicked(next);
  }
  return (
    <Dialog
      title={t('leftovers.title', { name: job.name })}
      onClose={close}
      actions={
        <>
          <Button onClick={close}>{t('leftovers.keep')}</Button>
          <Button kind="danger" disabled={chosen.length === 0} onClick={() => void remove()}>
            {t('leftovers.remove', { n: chosen.length })}
          </Button>
        </>
      }
    >
      <p>{t('leftovers.body')}</p>
      <ul class="leftovers">
        {items.map((item) => {
          const { type, path, size } = item;
          const isFolder = type === 'directory';
          return (
            <li key={path} data-leftover={path} class="line">
              <label class="check">
                <input type="checkbox" checked={ticked.has(path)} onChange={() => toggle(path)} />
                <span>
                  {path}
                  <span class="muted small">{t(`leftovers.${placeOf(item)}`)}</span>
                </span>
              </label>
              <span class="muted small" title={isFolder ? exactBytes(size) : undefined}>
                {isFolder ? t('leftovers.directory', { size: formatBytes(size) }) : t('leftovers.registry')}
              </span>
              {isFolder && (
                <IconButton
                  icon="explorer"
                  label={`${t('explorer.open')}: ${path}`}
                  onClick={() => void openInExplorer(path)}
                />
              )}
            </li>
          );
        })}
      </ul>
    </Dialog>
  );
}
