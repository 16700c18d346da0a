import { createSource, type Source } from '../base/source.ts';
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

// The host compares with its previous sample, which may be from any time before this page.
let first = true;

export const telemetry: Source<Telemetry> = createSource(takeSample);

async function takeSample(): Promise<Telemetry> {
  const sample = await host.request('getTelemetry');
  const rates: Rates = telemetry.get().data?.rates ?? { cpu: [], ram: [], download: [], upload: [] };
  const at = Date.now();
  const extend = (points: Point[], value: number) => [
    ...points.filter((point) => at - point.at <= historyMs),
    { at, value },
  ];
  const ram = extend(rates.ram, sample.ram);
  if (first) {
    first = false;
    return { sample, rates: { ...rates, ram } };
  }
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
