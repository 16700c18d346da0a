import { useEffect, useLayoutEffect, useRef } from 'preact/hooks';
import { Icon, type IconName } from './icon.tsx';

export interface MenuItem {
  label: string;
  run(): void;
  icon?: IconName;
  danger?: boolean;
}

interface Props {
  label: string;
  /** The place where it opens, in window pixels. */
  x: number;
  y: number;
  items: MenuItem[];
  onClose(): void;
}

export function Menu({ label, x, y, items, onClose }: Props) {
  const menu = useRef<HTMLDivElement>(null);

  useLayoutEffect(() => {
    const box = menu.current!;
    box.style.left = `${Math.max(0, Math.min(x, innerWidth - box.offsetWidth - 8))}px`;
    box.style.top = `${Math.max(0, Math.min(y, innerHeight - box.offsetHeight - 8))}px`;
    box.querySelector('button')?.focus();
  }, []);

  useEffect(() => {
    const outside = (event: Event) => {
      if (!menu.current?.contains(event.target as Node)) onClose();
    };
    addEventListener('pointerdown', outside);
    addEventListener('blur', onClose);
    return () => {
      removeEventListener('pointerdown', outside);
      removeEventListener('blur', onClose);
    };
  }, [onClose]);

  function onKeyDown(event: KeyboardEvent) {
    const buttons = [...menu.current!.querySelectorAll('button')];
    const at = buttons.indexOf(document.activeElement as HTMLButtonElement);
    const step = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: -1 }[event.key];
    if (step !== undefined) buttons.at(step % buttons.length)?.focus();
    else if (event.key === 'Escape' || event.key === 'Tab') onClose();
    else return;
    event.preventDefault();
    event.stopPropagation();
  }

  return (
    <div ref={menu} class="menu" role="menu" aria-label={label} onKeyDown={onKeyDown}>
      {items.map((item) => (
        <button
          type="button"
          role="menuitem"
          tabIndex={-1}
          class={item.danger ? 'line danger' : 'line'}
          onClick={() => {
            onClose();
            item.run();
          }}
        >
          {item.icon && <Icon name={item.icon} />}
          {item.label}
        </button>
      ))}
    </div>
  );
}
