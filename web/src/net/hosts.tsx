import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { useSize, useStore } from '../kit/hooks.ts';
import { useKey } from '../kit/keyboard.ts';
import { ServiceMark } from '../shell/service_mark.tsx';
import {
  draft,
  editHosts,
  firstHosts,
  hosts,
  reloadHosts,
  restoreHosts,
  saveHosts,
  savingHosts,
} from './hosts.ts';
import { toggleComment } from './hosts_edit.ts';
import { FindBar, useFind } from './hosts_find.tsx';
import { countLines, partAround, rangeOf } from './hosts_part.ts';
import { checkSlices, type Problem } from './hosts_text.ts';

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
const isCommentKey = ({ ctrlKey, key }: KeyboardEvent) => ctrlKey && key === '/';

const problemText = ({ kind, word, first = 0 }: Problem) => t(`hosts.${kind}`, { word, first });

/** The text area is uncontrolled and holds a part of a long file, so typing does not wait for the rest. */
function Editor({ text }: { text: string }) {
  const edited = useStore(draft);
  const area = useRef<HTMLTextAreaElement>(null);
  const shown = edited ?? text;
  const held = useRef({ text: '', value: '', ...partAround('', 0) });
  const checked = useCheck(shown);
  const [box, setBox] = useState({ top: 0, height: 0, line: 20 });

  function hold(place: number) {
    held.current = { ...held.current, text: shown, ...partAround(shown, place) };
  }
  if (held.current.text !== shown) hold(held.current.start);
  const { start, end, before, after } = held.current;
  useLayoutEffect(fill, [shown]);

  function fill() {
    const value = shown.slice(held.current.start, held.current.end);
    if (value === held.current.value) return;
    area.current!.value = held.current.value = value;
    area.current!.setSelectionRange(0, 0);
  }
  function measure() {
    if (!area.current) return; // a late scroll event of a closed view
    const { scrollTop: top, clientHeight: height } = area.current;
    setBox({ top, height, line: parseFloat(getComputedStyle(area.current).lineHeight) });
  }
  useSize(area, measure);

  // Works wherever the focus is: a toast or a dialog may have taken it.
  useKey(isSaveKey, () => void saveHosts());

  /** Selects a range of the whole text, brings it into view and returns its line. */
  function select(from: number, to: number): number {
    if (from < held.current.start || from > held.current.end) {
      hold(from);
      fill();
    }
    const { start, before } = held.current;
    const line = countLines(shown.slice(start, from));
    area.current!.setSelectionRange(from - start, to - start);
    area.current!.scrollTop = (line - 1) * box.line - box.height / 2;
    measure();
    return before + line;
  }
  function goTo(line: number) {
    area.current!.focus();
    select(...rangeOf(shown, line));
  }
  function comment() {
    const { value, selectionStart, selectionEnd } = area.current!;
    const lines = toggleComment(value, selectionStart, selectionEnd);
    area.current!.setSelectionRange(lines.start, lines.end);
    document.execCommand('insertText', false, lines.text); // the only way that Ctrl+Z undoes
    area.current!.setSelectionRange(lines.start, lines.start + lines.text.length);
  }
  /** Moves the cursor before or behind the part. Wraps around at the ends of the file. */
  function turn(back: boolean) {
    const place = back ? (before > 0 ? start - 1 : shown.length) : after > 0 ? end + 1 : 0;
    select(place, place);
  }
  /** Moves the cursor over the edge of the part. Returns false for keys that stay within it. */
  function leavesPart({ key, shiftKey, ctrlKey }: KeyboardEvent) {
    const { value, selectionStart, selectionEnd } = area.current!;
    if (shiftKey || ctrlKey) return false;
    if (/^(ArrowUp|PageUp)$/.test(key) && before > 0 && !value.slice(0, selectionStart).includes('\n'))
      turn(true);
    else if (/^(ArrowDown|PageDown)$/.test(key) && after > 0 && !value.includes('\n', selectionEnd))
      turn(false);
    else return false;
    return true;
  }
  function typed(value: string) {
    const { text, start, end } = held.current;
    const next = text.slice(0, start) + value + text.slice(end);
    held.current = { ...held.current, text: next, value, end: start + value.length };
    editHosts(next);
  }
  const find = useFind(shown, () => area.current!, start, select);
  const lines = countLines(shown.slice(start, end));

  return (
    <div class="hosts">
      <HostsBar edited={edited !== undefined}>
        <FindBar {...find} onLeave={() => area.current!.focus()} />
      </HostsBar>
      {before + after > 0 && <PartBar before={before} lines={lines} after={after} goTo={goTo} turn={turn} />}
      <div class="hosts-body">
        <div class="editor">
          {find.line !== undefined && (
            <div
              class="found"
              style={{ transform: `translateY(${(find.line - before - 1) * box.line - box.top}px)` }}
            />
          )}
          <Gutter {...box} before={before} lines={lines} problems={checked.problems} />
          <textarea
            ref={area}
            wrap="off"
            spellcheck={false}
            aria-label={t('hosts.text')}
            onInput={(event) => typed(event.currentTarget.value)}
            onKeyDown={(event) => {
              if (isCommentKey(event)) comment();
              else if (!leavesPart(event)) return;
              event.preventDefault();
            }}
            onScroll={measure}
          />
        </div>
        <Problems
          problems={checked.problems}
          goTo={goTo}
          comment={
            checked.text === shown
              ? (line) => {
                  goTo(line);
                  comment();
                }
              : undefined
          }
        />
      </div>
    </div>
  );
}

interface PartBarProps {
  /** Numbers of lines before the part, in it and after it. */
  before: number;
  lines: number;
  after: number;
  goTo(line: number): void;
  turn(back: boolean): void;
}

function PartBar({ before, lines, after, goTo, turn }: PartBarProps) {
  const to = before + lines;
  return (
    <div class="find table-bar line">
      <IconButton icon="chevronUp" label={t('hosts.partBefore')} onClick={() => turn(true)} />
      <IconButton icon="chevronDown" label={t('hosts.partAfter')} onClick={() => turn(false)} />
      <span class="muted" role="status">
        {t('hosts.part', { from: before + 1, to, total: to + after })}
      </span>
      <input
        type="text"
        inputMode="numeric"
        aria-label={t('hosts.goTo')}
        placeholder={t('hosts.goTo')}
        onKeyDown={(event) => {
          const line = Number(event.currentTarget.value.replace(/\D/g, ''));
          if (event.key !== 'Enter' || !line) return;
          event.preventDefault(); // the text now has the focus
          goTo(line);
        }}
      />
    </div>
  );
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

function HostsBar({ edited, children }: { edited: boolean; children: ComponentChildren }) {
  const saving = useStore(savingHosts);
  const first = useStore(firstHosts)!.text;
  const stored = useStore(hosts).data!.text;
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
      {first !== stored && (
        <Button disabled={saving} onClick={restoreHosts}>
          {t('hosts.restore')}
        </Button>
      )}
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
  before: number;
  lines: number;
  problems: Problem[];
}

/** Draws the numbers and marks of the visible lines. The list beside it says the same. */
function Gutter({ top, height, line, before, lines, problems }: GutterProps) {
  const above = Math.floor(top / line);
  const count = Math.max(0, Math.min(Math.ceil(height / line) + 1, lines - above));
  const first = before + above;
  const marks = new Map(
    problems.filter((one) => one.line > first && one.line <= first + count).map((one) => [one.line, one]),
  );
  return (
    <div class="gutter" aria-hidden="true">
      <div style={{ transform: `translateY(${above * line - top}px)` }}>
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
