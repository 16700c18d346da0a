import { formatPercent, noValue } from '../base/format.ts';

const arcRadius = 52;
const arcSweep = 0.75; // of a full turn, open at the bottom
const arcLength = 2 * Math.PI * arcRadius * arcSweep;

interface Props {
  label: string;
  /** 0 to 100; undefined if unknown. */
  percent: number | undefined;
  caption: string;
}

export function Gauge({ label, percent, caption }: Props) {
  const known = percent !== undefined;
  const value = Math.min(Math.max(percent ?? 0, 0), 100);
  const arc = 'M23.23 96.77a52 52 0 1 1 73.54 0';
  return (
    <div
      class="gauge"
      role="meter"
      aria-label={label}
      aria-valuemin={0}
      aria-valuemax={100}
      aria-valuenow={Math.round(value)}
      aria-valuetext={known ? formatPercent(value) : noValue}
    >
      <svg viewBox="0 0 120 108" aria-hidden="true">
        <path class="gauge-track" d={arc} />
        <path
          class={known && value >= 0.5 ? 'gauge-value' : 'gauge-value gauge-none'}
          d={arc}
          stroke-dasharray={`${(arcLength * value) / 100} 999`}
        />
      </svg>
      <div class="gauge-text" aria-hidden="true">
        <span class="gauge-number">{known ? formatPercent(value) : noValue}</span>
        <span class="gauge-caption">{caption}</span>
      </div>
    </div>
  );
}
