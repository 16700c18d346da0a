import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { isDialogOpen } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { draft, editHosts, hosts, reloadHosts, saveHosts, savingHosts } from './hosts.ts';
import { checkHosts, type Problem } from './hosts_text.ts';

const shownProblems = 200;
const checkDelayMs = 250;

export function Hosts() {
  const file = useStore(hosts);
  return (
    <DataView source={file} reload={() => void reloadHosts()}>
      {({ text }) => <Editor text={text} />}
    </DataView>
  );
}

const problemText = ({ kind, word, first = 0 }: Problem) => t(`hosts.${kind}`, { word, first });

/** The text area belongs to the browser: a file of a hundred thousand lines is not drawn anew at every key. */
function Editor({ text }: { text: string }) {
  const edited = useStore(draft);
  const saving = useStore(savingHosts);
  const area = useRef<HTMLTextAreaElement>(null);
  const held = useRef(''); // what the area holds: reading it anew costs as much as the file is long
  const shown = edited ?? text;
  const [checked, setChecked] = useState<{ lines: number; problems: Problem[] }>({ lines: 0, problems: [] });
  const [box, setBox] = useState({ top: 0, height: 0, line: 20 });

  useLayoutEffect(() => {
    if (held.current !== shown) area.current!.value = held.current = shown;
  }, [shown]);
  useEffect(() => {
    const timer = setTimeout(
      () => {
        const lines = shown.split('\n');
        setChecked({ lines: lines.length, problems: checkHosts(lines) });
      },
      checked.lines === 0 ? 0 : checkDelayMs,
    );
    return () => clearTimeout(timer);
  }, [shown]);

  function measure() {
    if (!area.current) return; // a last scroll event of a view that is gone
    const { scrollTop: top, clientHeight: height } = area.current;
    setBox({ top, height, line: parseFloat(getComputedStyle(area.current).lineHeight) });
  }
  useEffect(() => {
    const observer = new ResizeObserver(measure);
    observer.observe(area.current!);
    return () => observer.disconnect();
  }, []);

  // Wherever the focus is: a toast or a dialog may have taken it.
  useEffect(() => {
    const onKeyDown = (event: KeyboardEvent) => {
      if (!event.ctrlKey || event.key.toLowerCase() !== 's') return;
      event.preventDefault();
      if (!isDialogOpen()) void saveHosts();
    };
    document.addEventListener('keydown', onKeyDown);
    return () => document.removeEventListener('keydown', onKeyDown);
  }, []);

  function goTo(line: number) {
    const lines = shown.split('\n');
    const start = lines.slice(0, line - 1).reduce((sum, { length }) => sum + length + 1, 0);
    area.current!.focus();
    area.current!.setSelectionRange(start, start + lines[line - 1]!.length);
    area.current!.scrollTop = (line - 1) * box.line - box.height / 2;
  }

  const { problems } = checked;
  return (
    <div class="hosts">
      <div class="table-bar">
        <Button kind="primary" disabled={edited === undefined || saving} onClick={() => void saveHosts()}>
          {t('hosts.save')}
        </Button>
        <Button disabled={edited === undefined || saving} onClick={() => void reloadHosts()}>
          {t('hosts.discard')}
        </Button>
        <span class="muted" role="status">
          {t(edited === undefined ? 'hosts.clean' : 'hosts.dirty')}
        </span>
        <span class="table-tools muted small">{t('hosts.path')}</span>
      </div>
      <div class="hosts-body">
        <div class="editor">
          <Gutter {...box} {...checked} />
          <textarea
            ref={area}
            wrap="off"
            spellcheck={false}
            aria-label={t('hosts.text')}
            onInput={(event) => editHosts((held.current = event.currentTarget.value))}
            onScroll={measure}
          />
        </div>
        <section class="hosts-problems" aria-label={t('hosts.problems')}>
          <h2>
            {problems.length === 0 ? t('hosts.noProblems') : t('hosts.problemCount', { n: problems.length })}
          </h2>
          <ul>
            {problems.slice(0, shownProblems).map((problem) => (
              <li key={`${problem.line} ${problem.word}`} data-problem={problem.kind}>
                <button type="button" onClick={() => goTo(problem.line)}>
                  <strong>{t('hosts.line', { line: problem.line })}</strong> {problemText(problem)}
                </button>
              </li>
            ))}
          </ul>
          {problems.length > shownProblems && (
            <p class="muted small">{t('confirm.more', { n: problems.length - shownProblems })}</p>
          )}
        </section>
      </div>
    </div>
  );
}

interface GutterProps {
  top: number;
  height: number;
  line: number;
  lines: number;
  problems: Problem[];
}

/** Numbers and marks of the lines in sight. The list beside it says the same. */
function Gutter({ top, height, line, lines, problems }: GutterProps) {
  const first = Math.floor(top / line);
  const count = Math.max(0, Math.min(Math.ceil(height / line) + 1, lines - first));
  const marks = new Map(
    problems.filter((one) => one.line > first && one.line <= first + count).map((one) => [one.line, one]),
  );
  return (
    <div class="gutter" aria-hidden="true">
      <div style={{ transform: `translateY(${first * line - top}px)` }}>
        {[...Array(count).keys()].map((i) => {
          const problem = marks.get(first + i + 1);
          return (
            <div
              key={i}
              class={problem && (problem.kind === 'twice' ? 'twice' : 'bad')}
              title={problem && problemText(problem)}
            >
              {first + i + 1}
            </div>
          );
        })}
      </div>
    </div>
  );
}
