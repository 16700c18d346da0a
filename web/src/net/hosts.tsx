import type { ComponentChildren, RefObject } from 'preact';
import { useEffect, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { useSize, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { useKey } from '../kit/keyboard.ts';
import { ServiceMark } from '../shell/service_mark.tsx';
import { draft, editHosts, hosts, reloadHosts, saveHosts, savingHosts } from './hosts.ts';
import { findAll, nextMatch, toggleComment } from './hosts_edit.ts';
import { checkSlices, type Problem } from './hosts_text.ts';

const shownProblems = 200;
const checkDelayMs = 250;
/**
 * The number of characters of a long file to show immediately. The rest follows after the first frame,
 * because its layout is slow.
 */
const firstLetters = 40_000;

export function Hosts() {
  return (
    <DataView source={hosts} reload={() => void reloadHosts()}>
      {({ text }) => <Editor text={text} />}
    </DataView>
  );
}

const isSaveKey = ({ ctrlKey, key }: KeyboardEvent) => ctrlKey && key.toLowerCase() === 's';
const isCommentKey = ({ ctrlKey, key }: KeyboardEvent) => ctrlKey && key === '/';
const isNextKey = ({ key, shiftKey }: KeyboardEvent) => key === 'F3' && !shiftKey;
const isPreviousKey = ({ key, shiftKey }: KeyboardEvent) => key === 'F3' && shiftKey;

const problemText = ({ kind, word, first = 0 }: Problem) => t(`hosts.${kind}`, { word, first });

/**
 * The text area is uncontrolled, so that a file of a hundred thousand lines is not redrawn at every
 * keystroke.
 */
function Editor({ text }: { text: string }) {
  const edited = useStore(draft);
  const area = useRef<HTMLTextAreaElement>(null);
  const held = useRef(''); // the area's content: reading it back is slow for a long file
  const shown = edited ?? text;
  const lines = useMemo(() => countLines(shown), [shown]);
  const checked = useCheck(shown);
  const [box, setBox] = useState({ top: 0, height: 0, line: 20 });

  useLayoutEffect(() => {
    if (held.current === shown) return;
    const first = held.current === '' && shown.length > firstLetters;
    held.current = shown;
    area.current!.value = first ? shown.slice(0, firstLetters) : shown;
    if (!first) return;
    area.current!.readOnly = true;
    requestAnimationFrame(() =>
      setTimeout(() => {
        if (!area.current) return;
        area.current.value = held.current;
        area.current.readOnly = false;
      }),
    );
  }, [shown]);

  function measure() {
    if (!area.current) return; // a late scroll event of a closed view
    const { scrollTop: top, clientHeight: height } = area.current;
    setBox({ top, height, line: parseFloat(getComputedStyle(area.current).lineHeight) });
  }
  useSize(area, measure);

  // Works wherever the focus is: a toast or a dialog may have taken it.
  useKey(isSaveKey, () => void saveHosts());

  /** Selects a range, brings it into view and returns its line. */
  function select(start: number, end: number): number {
    const line = countLines(shown.slice(0, start));
    area.current!.setSelectionRange(start, end);
    area.current!.scrollTop = (line - 1) * box.line - box.height / 2;
    return line;
  }
  function goTo(line: number) {
    const [start, end] = rangeOf(shown, line);
    area.current!.focus();
    select(start, end);
  }
  function comment(start: number, end: number) {
    const lines = toggleComment(shown, start, end);
    area.current!.focus();
    area.current!.setSelectionRange(lines.start, lines.end);
    document.execCommand('insertText', false, lines.text); // the only way that Ctrl+Z undoes
    area.current!.setSelectionRange(lines.start, lines.start + lines.text.length);
  }
  const find = useFind(shown, area, select);

  return (
    <div class="hosts">
      <HostsBar edited={edited !== undefined}>
        <FindBar {...find} onLeave={() => area.current!.focus()} />
      </HostsBar>
      <div class="hosts-body">
        <div class="editor">
          {find.line !== undefined && (
            <div
              class="found"
              style={{ transform: `translateY(${(find.line - 1) * box.line - box.top}px)` }}
            />
          )}
          <Gutter {...box} lines={lines} problems={checked.problems} />
          <textarea
            ref={area}
            wrap="off"
            spellcheck={false}
            aria-label={t('hosts.text')}
            onInput={(event) => editHosts((held.current = event.currentTarget.value))}
            onKeyDown={(event) => {
              if (!isCommentKey(event)) return;
              event.preventDefault();
              comment(event.currentTarget.selectionStart, event.currentTarget.selectionEnd);
            }}
            onScroll={measure}
          />
        </div>
        <Problems
          problems={checked.problems}
          goTo={goTo}
          comment={checked.text === shown ? (line) => comment(...rangeOf(shown, line)) : undefined}
        />
      </div>
    </div>
  );
}

function countLines(text: string): number {
  let lines = 1;
  for (let at = text.indexOf('\n'); at >= 0; at = text.indexOf('\n', at + 1)) lines++;
  return lines;
}

/** Returns the start and end of a line (from 1). */
function rangeOf(text: string, line: number): [start: number, end: number] {
  const lines = text.split('\n');
  const start = lines.slice(0, line - 1).reduce((sum, { length }) => sum + length + 1, 0);
  return [start, start + lines[line - 1]!.length];
}

/**
 * Finds what is wrong in a text: immediately after the view opens, then after each pause in typing. Works
 * in slices, so that typing is not delayed.
 */
function useCheck(text: string): { text?: string; problems: Problem[] } {
  const [checked, setChecked] = useState<{ text?: string; problems: Problem[] }>({ problems: [] });
  useEffect(() => {
    let check: ReturnType<typeof checkSlices> | undefined;
    let timer = setTimeout(step, checked.text === undefined ? 0 : checkDelayMs);
    function step() {
      check ??= checkSlices(text.split('\n'));
      const { done, value } = check.next();
      if (done) setChecked({ text, problems: value });
      else timer = setTimeout(step);
    }
    return () => clearTimeout(timer);
  }, [text]);
  return checked;
}

interface Find {
  query: string;
  count: number;
  /** Number of the selected match from 1; 0 if none is selected. */
  nth: number;
  /** Line of the selected match. */
  line?: number;
  setQuery(query: string): void;
  step(back: boolean): void;
}

/** Finds in the text area. F3 continues from the cursor, wherever the focus is. */
function useFind(
  text: string,
  area: RefObject<HTMLTextAreaElement | null>,
  select: (start: number, end: number) => number,
): Find {
  const [query, setQuery] = useState('');
  const [found, setFound] = useState<{ at: number; line: number }>();
  const matches = useMemo(() => findAll(text, query), [text, query]);
  function show(all: readonly number[], place: number, length: number, back = false) {
    const at = all[nextMatch(all, place, back)];
    setFound(at === undefined ? undefined : { at, line: select(at, at + length) });
  }
  function step(back: boolean) {
    const { selectionStart, selectionEnd } = area.current!;
    show(matches, back ? selectionStart : selectionEnd, query.length, back);
  }
  const latest = useRef(step);
  latest.current = step;
  useKey(isNextKey, () => latest.current(false));
  useKey(isPreviousKey, () => latest.current(true));
  const nth = found ? matches.indexOf(found.at) + 1 : 0;
  return {
    query,
    count: matches.length,
    nth,
    ...(found && nth > 0 && { line: found.line }),
    setQuery(wanted) {
      setQuery(wanted);
      show(findAll(text, wanted), area.current!.selectionStart, wanted.length);
    },
    step,
  };
}

/** The bar that the shortcut for filters leads to. */
function FindBar({ query, count, nth, setQuery, step, onLeave }: Find & { onLeave(): void }) {
  return (
    <div class="find line">
      <div class="filter">
        <Icon name="search" />
        <input
          type="text"
          data-filter
          aria-label={t('hosts.find')}
          placeholder={t('hosts.findHint')}
          value={query}
          onInput={(event) => setQuery(event.currentTarget.value)}
          onKeyDown={(event) => {
            if (event.key === 'Enter') step(event.shiftKey);
            else if (event.key === 'Escape') {
              setQuery('');
              onLeave();
            } else return;
            event.preventDefault();
          }}
        />
      </div>
      {query !== '' && (
        <>
          <span class="muted" role="status">
            {t('table.count', { shown: nth, total: count })}
          </span>
          <IconButton icon="arrowUp" label={t('hosts.previous')} onClick={() => step(true)} />
          <IconButton icon="arrowDown" label={t('hosts.next')} onClick={() => step(false)} />
        </>
      )}
    </div>
  );
}

function HostsBar({ edited, children }: { edited: boolean; children: ComponentChildren }) {
  const saving = useStore(savingHosts);
  const idle = !edited || saving;
  return (
    <div class="table-bar line">
      <Button kind="primary" disabled={idle} onClick={() => void saveHosts()}>
        {t('hosts.save')}
      </Button>
      <ServiceMark />
      <Button disabled={idle} onClick={() => void reloadHosts()}>
        {t('hosts.discard')}
      </Button>
      <span class="muted" role="status" title={t('hosts.path')}>
        {t(edited ? 'hosts.dirty' : 'hosts.clean')}
      </span>
      <span class="table-tools line">{children}</span>
    </div>
  );
}

interface ProblemsProps {
  problems: Problem[];
  goTo(line: number): void;
  /** Comments a line out; absent while the text is newer than the problems. */
  comment: ((line: number) => void) | undefined;
}

function Problems({ problems, goTo, comment }: ProblemsProps) {
  return (
    <section class="hosts-problems" aria-label={t('hosts.problems')}>
      <h2>
        {problems.length === 0 ? t('hosts.noProblems') : t('hosts.problemCount', { n: problems.length })}
      </h2>
      <ul>
        {problems.slice(0, shownProblems).map((problem) => (
          <li key={`${problem.line} ${problem.word}`}>
            <button
              type="button"
              class="problem"
              data-problem={problem.kind}
              onClick={() => goTo(problem.line)}
            >
              <strong>{t('hosts.line', { line: problem.line })}</strong> {problemText(problem)}
            </button>
            <button
              type="button"
              class="link small"
              aria-label={t('hosts.commentLine', { line: problem.line })}
              disabled={!comment}
              onClick={() => comment?.(problem.line)}
            >
              {t('hosts.comment')}
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

/** Draws the numbers and marks of the visible lines. The list beside it says the same. */
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
