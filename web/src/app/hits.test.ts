import assert from 'node:assert/strict';
import { test } from 'node:test';
import { bestHits, findable } from './hits.ts';

test('hits contain every word, ignoring accents; at most eight, matching beginnings first', () => {
  const titles = [
    'Vyprázdnit mezipaměť DNS',
    'Síť',
    'dnsmasq.exe (PID 80)',
    '8080 node.exe',
    'x8080',
    'Adns (DNS)',
  ];
  const things = [...titles, ...Array.from({ length: 5000 }, (_, i) => `soubor ${i}`)].map((title) =>
    findable({ title }),
  );
  const cases: Record<string, string[]> = {
    dns: [titles[2]!, titles[0]!, titles[5]!],
    'mezipamet VYPRAZDNIT': [titles[0]!],
    '80': [titles[3]!, titles[2]!],
    sit: ['Síť'],
    '  ': [],
  };
  for (const [query, want] of Object.entries(cases)) {
    const found = bestHits(things, query).map(({ title }) => title);
    assert.deepEqual(found.slice(0, want.length || 1), want, query);
  }
  assert.equal(bestHits(things, 'soubor').length, 8);
});
