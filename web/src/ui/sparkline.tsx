import { sparkline, stats, type Point } from '../lib/series.ts';
import { kNothing } from '../text/format.ts';
import { t } from '../text/text.ts';

interface Props {
  name: string;
  points: readonly Point[];
  window_ms: number;
  /** Two points further apart are not joined. */
  gap_ms: number;
  /** The value at the top edge. */
  top: number;
  top_text: string;
  format(value: number): string;
}

const kWidth = 300;
const kHeight = 64;

/** The course of one figure, with what it is now, on average and at most. */
export function Sparkline({ name, points, window_ms, gap_ms, top, top_text, format }: Props) {
  const figures = stats(points);
  const now = points.at(-1)?.at ?? 0;
  const { line, area } = sparkline(points, { width: kWidth, height: kHeight, now, window_ms, top, gap_ms });
  const shown = (value: number | undefined) => (value === undefined ? kNothing : format(value));
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
        <span class="spark-top muted">{top_text}</span>
      </div>
      <svg
        class="spark-plot"
        viewBox={`0 0 ${kWidth} ${kHeight}`}
        preserveAspectRatio="none"
        role="img"
        aria-label={label}
      >
        <path
          class="spark-grid"
          d={`M0 .5H${kWidth}M0 ${kHeight / 2}H${kWidth}M0 ${kHeight - 0.5}H${kWidth}`}
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
