interface Props {
  /** Accessible name; what stands beside the switch says the same. */
  label: string;
  on: boolean;
  onToggle(on: boolean): void;
  /** Also while a change is on its way. */
  disabled?: boolean | undefined;
}

export function Switch({ label, on, onToggle, disabled }: Props) {
  // Not the attribute "disabled": that would take the focus away.
  return (
    <button
      type="button"
      role="switch"
      class="switch"
      aria-checked={on}
      aria-label={label}
      aria-disabled={disabled}
      onClick={() => disabled || onToggle(!on)}
    />
  );
}
