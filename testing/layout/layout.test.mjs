// Checks the rules that keep the folders apart: the program's include lines and the page's imports.
import assert from 'node:assert/strict';
import * as fs from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';

const { existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } = fs;

const kRooms = ['system', 'clean', 'software', 'disk', 'startup', 'net', 'maint'];
const kFloors = [['base'], ['exec'], kRooms, ['app', 'service'], ['testing']];

// The floors from the lowest up. A folder uses its own files and those of the floors below.
const kProgram = {
  floors: kFloors,
  folders: kFloors.flat(),
  top: '',
  kind: /\.(cpp|h)$/,
  uses: /^[ \t]*#[ \t]*include[ \t]*"([^"]+)"/gm,
  resolve: (_, name) => name,
};
const kPage = {
  floors: [['base'], ['bridge'], ['kit'], ['shell'], kRooms, ['app']],
  folders: ['web/src'],
  top: 'web/src/',
  kind: /\.(tsx?|css)$/,
  uses: /^(?:import|export|\} from|@import)\b[^'\n]*'(\.[^']+)'/gm,
  resolve: (path, name) => join(path, '..', name),
};

const isTest = (path) => /^testing\/|_(test|fuzz)\.(cpp|h)$|\.test\.ts$/.test(path);

function breachOfUse(root, { floors, top }, path, target) {
  const [folder, other] = [path, target].map((name) => name.slice(top.length).split('/')[0]);
  const [floor, below] = [folder, other].map((one) => floors.findIndex((names) => names.includes(one)));
  if (!target.startsWith(top) || !existsSync(join(root, target))) return `"${target}" is no file of the tree`;
  if (isTest(target) && !isTest(path)) return `uses "${target}" outside a test`;
  return (
    folder !== other && other !== 'testing' && below >= floor && `${folder} may not use ${other}: "${target}"`
  );
}

// Returns the circles of uses, each from its first file in the order of `uses`.
function findCircles(uses) {
  const circles = [];
  const done = new Set();
  const visit = (path, trail) => {
    if (trail.includes(path)) return circles.push([...trail.slice(trail.indexOf(path)), path].join(' -> '));
    if (done.has(path)) return;
    for (const target of uses.get(path) ?? []) visit(target, [...trail, path]);
    done.add(path);
  };
  for (const path of uses.keys()) visit(path, []);
  return circles.map((circle) => `a circle: ${circle}`);
}

function findBreachesIn(root, tree) {
  const uses = new Map();
  const breaches = [];
  for (const folder of tree.folders.filter((name) => existsSync(join(root, name))))
    for (const name of readdirSync(join(root, folder), { recursive: true })) {
      if (!tree.kind.test(name) || name.includes('node_modules')) continue;
      const path = `${folder}/${name}`;
      const text = readFileSync(join(root, path), 'utf8');
      const targets = [...text.matchAll(tree.uses)].map(([, target]) => tree.resolve(path, target));
      uses.set(path, targets);
      const found = targets.map((target) => breachOfUse(root, tree, path, target)).filter(Boolean);
      breaches.push(...found.map((breach) => `${path}: ${breach}`));
    }
  return [...breaches, ...findCircles(uses)];
}

// Returns every breach in the tree at `root`, as "path: reason".
const findBreaches = (root) => [kProgram, kPage].flatMap((tree) => findBreachesIn(root, tree));

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
