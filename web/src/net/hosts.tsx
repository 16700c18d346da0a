import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { useSize, useStore } from '../kit/hooks.ts';
import { useKey } from '../kit/keyboard.ts';
import { draft, editHosts, hosts, reloadHosts, saveHosts, savingHosts } from './hosts.ts';
import { checkHosts, type Problem } from './hosts_text.ts';

const shownProblems = 200;
const checkDelayMs = 250;

export function Hosts() {
  return (
    <DataView source={hosts} reload={() => void reloadHosts()}>
      {({ text }) => <Editor text={text} />}
    </DataView>
  );
}

const isSaveKey = ({ ctrlKey, key }: KeyboardEvent) => ctrlKey && key.toLowerCase() === 's';

const problemText = ({ kind, word, first = 0 }: Problem) => t(`hosts.${kind}`, { word, first });

/** The text area belongs to the browser: a file of a hundred thousand lines is not drawn anew at every key. */
function Editor({ text }: { text: string }) {
  const edited = useStore(draft);
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
  useSize(area, measure);

  // Wherever the focus is: a toast or a dialog may have taken it.
  useKey(isSaveKey, () => void saveHosts());

  function goTo(line: number) {
    const lines = shown.split('\n');
    const start = lines.slice(0, line - 1).reduce((sum, { length }) => sum + length + 1, 0);
    area.current!.focus();
    area.current!.setSelectionRange(start, start + lines[line - 1]!.length);
    area.current!.scrollTop = (line - 1) * box.line - box.height / 2;
  }

  return (
    <div class="hosts">
      <HostsBar edited={edited !== undefined} />
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
        <Problems problems={checked.problems} goTo={goTo} />
      </div>
    </div>
  );
}

function HostsBar({ edited }: { edited: boolean }) {
  const saving = useStore(savingHosts);
  const idle = !edited || saving;
  return (
    <div class="table-bar line">
      <Button kind="primary" disabled={idle} onClick={() => void saveHosts()}>
        {t('hosts.save')}
      </Button>
      <Button disabled={idle} onClick={() => void reloadHosts()}>
        {t('hosts.discard')}
      </Button>
      <span class="muted" role="status">
        {t(edited ? 'hosts.dirty' : 'hosts.clean')}
      </span>
      <span class="table-tools line muted small">{t('hosts.path')}</span>
    </div>
  );
}

function Problems({ problems, goTo }: { problems: Problem[]; goTo(line: number): void }) {
  return (
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
