export interface SwitchProps {
  /** Accessible name. The text beside the switch says the same. */
  label: string;
  on: boolean;
  onToggle(on: boolean): void;
  /** Also set while a change is in progress. */
  disabled?: boolean | undefined;
  /** Set in a row of a table, which is a single stop of the Tab key: the table's keys operate it. */
  inRow?: boolean;
}

export function Switch({ label, on, onToggle, disabled, inRow }: SwitchProps) {
  // The attribute "disabled" would take the focus away.
  return (
    <button
      type="button"
      role="switch"
      tabIndex={inRow ? -1 : undefined}
      class="switch"
      aria-checked={on}
      aria-label={label}
      aria-disabled={disabled}
      onClick={() => disabled || onToggle(!on)}
    />
  );
}
