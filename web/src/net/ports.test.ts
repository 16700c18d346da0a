import assert from 'node:assert/strict';
import { test } from 'node:test';
import { reachOf } from './ports.ts';

test('the address says from where a port can be reached', () => {
  const cases: Record<string, string> = {
    '0.0.0.0:135': 'all',
    '[::]:445': 'all',
    '127.8.0.1:80': 'machine',
    '[::1]:8080': 'machine',
    '[::ffff:127.0.0.1]:80': 'machine',
    '[::ffff:0.0.0.0]:80': 'all',
    '[fe80::1c2d:3e4f:5a6b:7c8d%12]:5357': 'address',
    '[127::1]:80': 'address',
    '1270.0.0.1': 'address',
  };
  for (const [local, want] of Object.entries(cases)) assert.equal(reachOf(local), want, local);
});
