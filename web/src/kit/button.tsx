import type { ComponentChildren } from 'preact';
import { Icon, type IconName } from './icon.tsx';

interface Props {
  onClick(): void;
  children: ComponentChildren;
  icon?: IconName | undefined;
  /** "primary": the one main act of a view. "danger": it destroys something. "quiet": without a frame. */
  kind?: 'primary' | 'danger' | 'quiet' | undefined;
  disabled?: boolean | undefined;
}

export function Button({ onClick, children, icon, kind, disabled }: Props) {
  return (
    <button type="button" class={kind ? `button ${kind}` : 'button'} onClick={onClick} disabled={disabled}>
      {icon && <Icon name={icon} />}
      {children}
    </button>
  );
}

/** Only an icon; `label` is its accessible name and its tool tip. */
export function IconButton({
  icon,
  label,
  onClick,
  disabled,
  inRow,
}: {
  icon: IconName;
  label: string;
  onClick(): void;
  disabled?: boolean;
  /** In a row of a table, which is one stop of the Tab key: its menu says the same. */
  inRow?: boolean;
}) {
  return (
    <button
      type="button"
      class="icon-button"
      tabIndex={inRow ? -1 : undefined}
      aria-label={label}
      title={label}
      onClick={onClick}
      disabled={disabled}
    >
      <Icon name={icon} />
    </button>
  );
}
