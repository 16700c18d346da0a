import type { ComponentChildren } from 'preact';
import { useRef } from 'preact/hooks';

interface Props<Id extends string> {
  label: string;
  tabs: readonly { id: Id; title: ComponentChildren }[];
  active: Id;
  onChoose(id: Id): void;
}

/**
 * Tabs for a panel that the caller renders with `id={panelOf(id)}`. Arrow keys, Home and End move and
 * choose.
 */
export function Tabs<Id extends string>({ label, tabs, active, onChoose }: Props<Id>) {
  const list = useRef<HTMLDivElement>(null);
  const at = tabs.findIndex(({ id }) => id === active);
  function onKeyDown(event: KeyboardEvent) {
    const step = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: -1 }[event.key];
    const next = step === undefined ? undefined : tabs.at(step % tabs.length);
    if (!next) return;
    event.preventDefault();
    onChoose(next.id);
    list.current!.querySelector<HTMLElement>(`[data-tab="${next.id}"]`)?.focus();
  }
  return (
    <div class="tabs" role="tablist" aria-label={label} ref={list} onKeyDown={onKeyDown}>
      {tabs.map(({ id, title }) => (
        <button
          type="button"
          key={id}
          role="tab"
          data-tab={id}
          aria-selected={id === active}
          aria-controls={id === active ? panelOf(id) : undefined}
          tabIndex={id === active ? 0 : -1}
          onClick={() => onChoose(id)}
        >
          {title}
        </button>
      ))}
    </div>
  );
}

export const panelOf = (id: string) => `panel-${id}`;
