import { useLayoutEffect, useRef } from 'preact/hooks';
import type { Line } from '../base/lines.ts';
import { t } from '../base/text.ts';
import { IconButton } from './button.tsx';
import { copyText } from './clipboard.ts';

/**
 * The number of silent seconds after which the page says so. A large installer can be silent for longer
 * without a fault.
 */
export const silentSeconds = 60;

export function CopyLines({ lines }: { lines: readonly Line[] }) {
  return (
    <IconButton
      icon="copy"
      label={t('terminal.copy')}
      disabled={lines.length === 0}
      onClick={() => void copyText(lines.map(({ text }) => text).join('\r\n'))}
    />
  );
}

interface OutputProps {
  label: string;
  lines: readonly Line[];
  class?: string;
  /** Shown if there are no lines. */
  empty?: string;
  /** Whether it scrolls with new lines; by default, until the user scrolls up. */
  follow?: boolean;
  /** Called when the output was scrolled to its end or away from it. */
  onScrolled?(atEnd: boolean): void;
}

/** Shows lines as they arrived. */
export function Output({ label, lines, class: name, empty, follow, onScrolled }: OutputProps) {
  const box = useRef<HTMLDivElement>(null);
  const atEnd = useRef(true);
  useLayoutEffect(() => {
    if (follow ?? atEnd.current) box.current!.scrollTop = box.current!.scrollHeight;
  }, [lines]);
  return (
    <div
      ref={box}
      class={name}
      role="log"
      aria-live="off"
      aria-label={label}
      tabIndex={0}
      onScroll={({ currentTarget: { scrollTop, clientHeight, scrollHeight } }) => {
        atEnd.current = scrollTop + clientHeight >= scrollHeight - 8;
        onScrolled?.(atEnd.current);
      }}
    >
      {lines.length === 0 && empty && <p class="muted">{empty}</p>}
      {lines.map(({ id, text, style }) => (
        <div key={id} class={style || undefined}>
          {text}
        </div>
      ))}
    </div>
  );
}

/** Shows a tool's output, with a button that copies it. */
export function ToolLog({ label, lines }: { label: string; lines: readonly Line[] }) {
  return (
    <div class="tool-log">
      <Output label={label} lines={lines} />
      <CopyLines lines={lines} />
    </div>
  );
}
