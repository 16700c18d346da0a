import assert from 'node:assert/strict';
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

import { findBreaches } from './layout.mjs';

test('the tree follows its rules', () => {
  assert.deepEqual(findBreaches(fileURLToPath(new URL('../..', import.meta.url))), []);
});

test('each kind of breach is found', () => {
  const samples = [
    ['base/handle_win.h', '#pragma once\n#include <windows.h>\n', ''],
    ['exec/run_win.cpp', '#include <windows.h>\n#include "base/handle_win.h"\n', ''],
    ['disk/aside_win_test.cpp', '#  include "net/tool.h"\n', 'disk may not use net: "net/tool.h"'],
    ['exec/up.cpp', '#include "net/tool.h"\n', 'exec may not use net: "net/tool.h"'],
    ['net/product.cpp', '#include "testing/page.h"\n', 'uses "testing/page.h" outside a test'],
    ['net/tool.cpp', '#include "base/handle_win.h"\n', 'portable, but includes "base/handle_win.h"'],
    ['net/tool.h', '#pragma once\n#include <winsock2.h>\n', 'portable, but includes <winsock2.h>'],
    ['web/src/kit/list.tsx', "import type { Key } from '../base/text.ts';\nimport './list.css';\n", ''],
    [
      'web/src/kit/list.css',
      "@import '../gone.css';\n",
      'imports "web/src/gone.css", which is no file of the page',
    ],
    ['web/src/base/text.ts', "export * from '../disk/a.ts';\n", 'base may not use disk: "web/src/disk/a.ts"'],
    ['web/src/disk/a.test.ts', "import './a.ts';\n", ''],
    [
      'web/src/disk/a.ts',
      "import {\n  b,\n} from './a.test.ts';\n",
      'uses the test "web/src/disk/a.test.ts"',
    ],
    ['testing/page.h', '#include "base/text.h"\n#pragma once\n', '"base/text.h" is not named from the root'],
  ];
  const root = mkdtempSync(join(tmpdir(), 'varnel-layout-'));
  try {
    for (const [path, text] of samples) {
      mkdirSync(dirname(join(root, path)), { recursive: true });
      writeFileSync(join(root, path), text);
    }
    const wanted = samples.filter(([, , breach]) => breach).map(([path, , breach]) => `${path}: ${breach}`);
    wanted.push('testing/page.h: does not start with #pragma once');
    wanted.push('a circle: ');
    const found = findBreaches(root).map((breach) => breach.replace(/(?<=^a circle: )web.src.disk.a.*/, ''));
    assert.deepEqual(found.sort(), wanted.sort());
  } finally {
    rmSync(root, { recursive: true });
  }
});
