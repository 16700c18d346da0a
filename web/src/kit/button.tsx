import type { ComponentChildren } from 'preact';
import { Icon, type IconName } from './icon.tsx';

interface Props {
  onClick(): void;
  children: ComponentChildren;
  icon?: IconName | undefined;
  /** "primary": the main action of a view. "danger": it destroys something. "quiet": no frame. */
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

/** An icon without text. `label` is its accessible name and its tool tip. */
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
  /** Set in a row of a table, which is a single stop of the Tab key: the row's menu offers the same. */
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
