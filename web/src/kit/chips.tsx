import { formatNumber } from '../base/text.ts';

interface Props<Id extends string> {
  label: string;
  chips: { id: Id; title: string; count: number }[];
  active: Id;
  onChoose(id: Id): void;
}

/** Chips that narrow a list to one kind of row. Each shows its count. */
export function Chips<Id extends string>({ label, chips, active, onChoose }: Props<Id>) {
  return (
    <div class="chips line" role="group" aria-label={label}>
      {chips.map(({ id, title, count }) => (
        <button key={id} type="button" class="chip" aria-pressed={id === active} onClick={() => onChoose(id)}>
          {title} <span class="muted">{formatNumber(count)}</span>
        </button>
      ))}
    </div>
  );
}
