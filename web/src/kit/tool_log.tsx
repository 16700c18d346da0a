import { useLayoutEffect, useRef } from 'preact/hooks';
import type { Line } from '../base/lines.ts';
import { t } from '../base/text.ts';
import { IconButton } from './button.tsx';
import { copyText } from './clipboard.ts';

/** What a tool has printed, as it came. It follows its end unless the user has scrolled up. */
export function ToolLog({ label, lines }: { label: string; lines: readonly Line[] }) {
  const box = useRef<HTMLDivElement>(null);
  const atEnd = useRef(true);
  useLayoutEffect(() => {
    if (atEnd.current) box.current!.scrollTop = box.current!.scrollHeight;
  }, [lines]);
  return (
    <div class="tool-log">
      <div
        ref={box}
        role="log"
        aria-live="off"
        aria-label={label}
        tabIndex={0}
        onScroll={({ currentTarget: { scrollTop, clientHeight, scrollHeight } }) => {
          atEnd.current = scrollTop + clientHeight >= scrollHeight - 8;
        }}
      >
        {lines.map(({ id, text }) => (
          <div key={id}>{text}</div>
        ))}
      </div>
      <IconButton
        icon="copy"
        label={t('terminal.copy')}
        disabled={lines.length === 0}
        onClick={() => void copyText(lines.map(({ text }) => text).join('\r\n'))}
      />
    </div>
  );
}
