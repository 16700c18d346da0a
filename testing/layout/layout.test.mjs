import assert from 'node:assert/strict';
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

import { findBreaches } from './layout.mjs';

test('the tree keeps its rules', () => {
  assert.deepEqual(findBreaches(fileURLToPath(new URL('../..', import.meta.url))), []);
});

const kSound = {
  'base/text.h': '#pragma once\n#include <string>\n',
  'base/handle_win.h': '// Owning handles.\n#pragma once\n#include <windows.h>\n',
  'exec/run.h': '#pragma once\n#include "base/text.h"\n',
  'exec/run_win.cpp': '#include <windows.h>\n#include "exec/run.h"\n#include "base/handle_win.h"\n',
  'net/ports.cpp': '#include "exec/run.h"\n#include <nlohmann/json.hpp>\n',
  'net/ports.h': '#pragma once\n',
  'net/ports_test.cpp': '#include <gtest/gtest.h>\n#include "net/ports_fixture.h"\n#include "net/ports.h"\n',
  'net/ports_fixture.h': '#pragma once\n#include "testing/page.h"\n',
  'app/webview2.h': '#pragma once\n#include <windows.h>\n',
  'app/main_win.cpp': '#include "app/webview2.h"\n#include "net/ports.h"\n',
  'testing/page.h': '#pragma once\n#include "app/frame.h"\n',
  'app/frame.h': '#pragma once\n',
  'web/src/base/text.ts': "import { something } from 'library';\n",
  'web/src/kit/button.tsx': "import type { Key } from '../base/text.ts';\nimport './button.css';\n",
  'web/src/kit/button.css': '',
  'web/src/net/ports.ts': "import {\n  Button,\n} from '../kit/button.tsx';\n",
  'web/src/net/ports.test.ts': "import { ports } from './ports.ts';\n",
};

function breachesWith(changes) {
  const root = mkdtempSync(join(tmpdir(), 'varnel-layout-'));
  try {
    for (const [path, text] of Object.entries({ ...kSound, ...changes })) {
      mkdirSync(dirname(join(root, path)), { recursive: true });
      writeFileSync(join(root, path), text);
    }
    return findBreaches(root);
  } finally {
    rmSync(root, { recursive: true });
  }
}

test('a sound tree has no breach', () => assert.deepEqual(breachesWith({}), []));

for (const [path, text, want] of [
  ['base/up.cpp', '#include "exec/run.h"\n', 'base may not use exec: "exec/run.h"'],
  ['exec/up.cpp', '#include "net/ports.h"\n', 'exec may not use net: "net/ports.h"'],
  ['disk/aside.cpp', '#  include "net/ports.h"\n', 'disk may not use net: "net/ports.h"'],
  ['net/up_win.cpp', '#include "app/webview2.h"\n', 'net may not use app: "app/webview2.h"'],
  ['net/up_win_test.cpp', '#include "app/webview2.h"\n', 'net may not use app: "app/webview2.h"'],
  ['net/tool.cpp', '#include <windows.h>\n', 'portable, but includes <windows.h>'],
  ['net/tool.h', '#pragma once\n#include <winsock2.h>\n', 'portable, but includes <winsock2.h>'],
  ['net/tool_test.cpp', '#include "base/handle_win.h"\n', 'portable, but includes "base/handle_win.h"'],
  ['app/frame.cpp', '#include "app/webview2.h"\n', 'portable, but includes "app/webview2.h"'],
  ['net/near.cpp', '#include "ports.h"\n', '"ports.h" is not named from the root'],
  ['net/product.cpp', '#include "testing/page.h"\n', 'uses "testing/page.h" outside a test'],
  ['net/product.cpp', '#include "net/ports_fixture.h"\n', 'uses "net/ports_fixture.h" outside a test'],
  ['web/src/base/up.ts', "import '../kit/button.tsx';\n", 'base may not use kit: "web/src/kit/button.tsx"'],
  [
    'web/src/kit/up.css',
    "@import '../net/x.css';\n",
    'imports "web/src/net/x.css", which is no file of the page',
  ],
  [
    'web/src/disk/aside.ts',
    "export * from '../net/ports.ts';\n",
    'disk may not use net: "web/src/net/ports.ts"',
  ],
  ['web/src/net/product.ts', "import './ports.test.ts';\n", 'uses the test "web/src/net/ports.test.ts"'],
  ['net/late.h', '#include <string>\n#pragma once\n', 'does not start with #pragma once'],
]) {
  test(`found: ${path} ${want}`, () =>
    assert.deepEqual(breachesWith({ [path]: text }), [`${path}: ${want}`]));
}

test('found: a circle of the page', () => {
  const changes = {
    'web/src/net/a.ts': "import type { B } from './b.ts';\n",
    'web/src/net/b.ts': "import {\n  a,\n} from './a.ts';\n",
  };
  assert.deepEqual(breachesWith(changes), [
    'a circle: web/src/net/a.ts -> web/src/net/b.ts -> web/src/net/a.ts',
  ]);
});
