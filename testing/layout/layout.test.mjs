import assert from 'node:assert/strict';
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';

import { findBreaches } from './layout.mjs';

test('the tree follows its rules', () =>
  assert.deepEqual(findBreaches(join(import.meta.dirname, '../..')), []));

const kSamples = [
  ['disk/aside_win_test.cpp', '#  include "net/tool.h"\n', 'disk may not use net: "net/tool.h"'],
  ['exec/up.cpp', '#include "net/tool.h"\n', 'exec may not use net: "net/tool.h"'],
  ['net/product.cpp', '#include "testing/page.h"\n', 'uses "testing/page.h" outside a test'],
  ['net/tool.h', ''],
  ['testing/page.h', ''],
  ['web/src/kit/list.tsx', "import type { Key } from '../base/text.ts';\nimport './list.css';\n"],
  ['web/src/kit/list.css', "@import '../gone.css';\n", '"web/src/gone.css" is no file of the tree'],
  ['web/src/base/text.ts', "export * from '../disk/a.ts';\n", 'base may not use disk: "web/src/disk/a.ts"'],
  ['web/src/disk/a.test.ts', "import './a.ts';\n"],
  ['web/src/disk/a.ts', "} from './a.test.ts';\n", 'uses "web/src/disk/a.test.ts" outside a test'],
];

test('each kind of breach is found', () => {
  const root = mkdtempSync(join(tmpdir(), 'varnel-layout-'));
  for (const [path, text] of kSamples) {
    mkdirSync(dirname(join(root, path)), { recursive: true });
    writeFileSync(join(root, path), text);
  }
  const wanted = kSamples.flatMap(([path, , breach]) => (breach ? `${path}: ${breach}` : []));
  const found = findBreaches(root).map((breach) => breach.replace(/^a circle: .*disk.*/, 'a circle'));
  rmSync(root, { recursive: true });
  assert.deepEqual(found.sort(), [...wanted, 'a circle'].sort());
});
