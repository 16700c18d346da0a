import { noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { Point } from '../shell/telemetry.ts';
import { sparkline, stats } from './series.ts';

interface Props {
  name: string;
  points: readonly Point[];
  windowMs: number;
  /** Points further apart than this are not joined. */
  gapMs: number;
  /** The value at the top edge. */
  top: number;
  topText: string;
  format(value: number): string;
}

const plotWidth = 300;
const plotHeight = 64;

/** Shows the course of one figure, with its current, average and highest value. */
export function Sparkline({ name, points, windowMs, gapMs, top, topText, format }: Props) {
  const figures = stats(points);
  const now = points.at(-1)?.at ?? 0;
  const { line, area } = sparkline(points, {
    width: plotWidth,
    height: plotHeight,
    now,
    windowMs,
    top,
    gapMs,
  });
  const shown = (value: number | undefined) => (value === undefined ? noValue : format(value));
  const label = figures
    ? t('dashboard.spark', {
        name,
        current: format(figures.current),
        average: format(figures.average),
        peak: format(figures.peak),
      })
    : t('dashboard.sparkEmpty', { name });
  return (
    <div class="spark">
      <div class="spark-head">
        <span class="spark-name">{name}</span>
        <span class="spark-top muted">{topText}</span>
      </div>
      <svg
        class="spark-plot"
        viewBox={`0 0 ${plotWidth} ${plotHeight}`}
        preserveAspectRatio="none"
        role="img"
        aria-label={label}
      >
        <path
          class="spark-grid"
          d={`M0 .5H${plotWidth}M0 ${plotHeight / 2}H${plotWidth}M0 ${plotHeight - 0.5}H${plotWidth}`}
        />
        <path class="spark-area" d={area} />
        <path class="spark-line" d={line} />
      </svg>
      <dl class="spark-figures">
        {(['now', 'average', 'peak'] as const).map((which) => (
          <div>
            <dt>{t(`dashboard.${which}`)}</dt>
            <dd>{shown(figures?.[which === 'now' ? 'current' : which])}</dd>
          </div>
        ))}
      </dl>
    </div>
  );
}
