import { createSource, type Readable, type Source } from '../base/source.ts';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';

export const telemetryPeriodMs = 3000;
export const historyMs = 120_000;

export interface Point {
  /** Milliseconds since the epoch. */
  at: number;
  value: number;
}

export type Rates = Record<'cpu' | 'ram' | 'download' | 'upload', Point[]>;

export interface Telemetry {
  sample: Message<'telemetry'>;
  /** Load and rates are differences between two samples, so a page's first sample has none. */
  rates: Rates;
}

// The host compares with its previous sample. A shorter span covers only a moment, a longer one the past.
const shortestSpanMs = telemetryPeriodMs / 2;
const longestSpanMs = 10_000;
const newSpanMs = 1000;

/** When the last sample arrived (`performance.now`), or undefined before the page's first. */
let sampledMs: number | undefined;

const source: Source<Telemetry> = createSource(takeSample);

/** Reloading does nothing as long as the last sample is recent. */
export const telemetry: Readable<Telemetry> = {
  ...source,
  reload: () => (spanMs() < shortestSpanMs ? Promise.resolve() : source.reload()),
};

function spanMs() {
  return sampledMs === undefined ? Infinity : performance.now() - sampledMs;
}

async function takeSample(): Promise<Telemetry> {
  const first = sampledMs === undefined;
  if (!first && spanMs() > longestSpanMs) {
    await host.request('getTelemetry');
    await new Promise((resolve) => setTimeout(resolve, newSpanMs));
  }
  const sample = await host.request('getTelemetry');
  sampledMs = performance.now();
  const rates: Rates = source.get().data?.rates ?? { cpu: [], ram: [], download: [], upload: [] };
  const at = Date.now();
  const extend = (points: Point[], value: number) => [
    ...points.filter((point) => at - point.at <= historyMs),
    { at, value },
  ];
  const ram = extend(rates.ram, sample.ram);
  if (first) return { sample, rates: { ...rates, ram } };
  return {
    sample,
    rates: {
      ram,
      cpu: extend(rates.cpu, sample.cpu),
      download: extend(rates.download, sample.download),
      upload: extend(rates.upload, sample.upload),
    },
  };
}
