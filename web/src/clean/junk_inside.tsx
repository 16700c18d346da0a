import { useEffect, useMemo } from 'preact/hooks';
import { formatBytes, noValue } from '../base/format.ts';
import { createSource } from '../base/source.ts';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { openInExplorer } from '../shell/explorer.ts';
import type { Category } from './junk.ts';
import { bytesOf, contentsOf, type Contents } from './junk_folders.ts';

const named = 8;

/** Shows the contents of a category's folders; `at` is the time of their measurement. */
export function JunkInside({ id, category, at }: { id: string; category: Category; at: number | undefined }) {
  const source = useMemo(() => createSource(() => contentsOf(category)), [category, at]);
  useEffect(() => void source.reload(), [source]);
  return (
    <div class="junk-inside" id={id}>
      <DataView source={source} nothing={<p class="muted small">{t('junk.nowhere')}</p>}>
        {(folders) => folders.map((folder) => <JunkFolder key={folder.path} {...folder} />)}
      </DataView>
    </div>
  );
}

function JunkFolder({ path, measured, items }: Contents) {
  const bytes = bytesOf(items);
  return (
    <section class="junk-folder" aria-label={path} data-folder={path}>
      <div class="line">
        <code title={path}>{path}</code>
        {measured && <span class="tag tag-warn">{t('junk.onlyMeasured')}</span>}
        <span class="muted small">
          {items.length === 0
            ? t('junk.empty')
            : `${t('junk.entries', { n: items.length })}, ${bytes === undefined ? noValue : formatBytes(bytes)}`}
        </span>
        <Button icon="explorer" onClick={() => void openInExplorer(path)}>
          {t('junk.open')}
        </Button>
      </div>
      <ul class="small">
        {items.slice(0, named).map(({ name, size, isDirectory }) => (
          <li class="line" key={name}>
            <span title={name}>{isDirectory ? `${name}\\` : name}</span>
            <span class="muted">{isDirectory && size === 0 ? noValue : formatBytes(size)}</span>
          </li>
        ))}
        {items.length > named && <li class="muted">{t('junk.more', { n: items.length - named })}</li>}
      </ul>
    </section>
  );
}
