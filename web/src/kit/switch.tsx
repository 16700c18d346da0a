interface Props {
  /** Accessible name; what stands beside the switch says the same. */
  label: string;
  on: boolean;
  onToggle(on: boolean): void;
  /** Also while a change is on its way. */
  disabled?: boolean | undefined;
  /** In a row of a table, which is one stop of the Tab key: the table's keys reach it. */
  inRow?: boolean;
}

export function Switch({ label, on, onToggle, disabled, inRow }: Props) {
  // Not the attribute "disabled": that would take the focus away.
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
