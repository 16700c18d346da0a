// Checks the rules that keep the folders apart: the program's include lines and the page's imports.
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';

const kRooms = ['system', 'clean', 'software', 'disk', 'startup', 'net', 'maint'];

// The floors from the lowest up. A folder uses its own files and those of the floors below.
const kFloors = [['base'], ['exec'], kRooms, ['app', 'service'], ['testing']];
const kPageFloors = [['base'], ['bridge'], ['kit'], ['shell'], kRooms, ['app']];

const mayUse = (floors) =>
  Object.fromEntries(floors.flatMap((names, i) => names.map((name) => [name, floors.slice(0, i).flat()])));
const kMayUse = mayUse(kFloors);
const kPageMayUse = mayUse(kPageFloors);

// Headers that need Windows although their fixed names do not say so.
const kWindowsHeaders = new Set(['app/webview2.h']);
const kPortableLibraries = /^(gtest|gmock)\//;

const isTest = (path) =>
  path.startsWith('testing/') || /_(test|fuzz|bench|fixture|fixture_win)\.(cpp|h)$/.test(path);
const isWindows = (path) => /_win(_test|_bench)?\.(cpp|h)$/.test(path) || kWindowsHeaders.has(path);

function sourcesBelow(root, folder, kind) {
  if (!existsSync(join(root, folder))) return [];
  const names = readdirSync(join(root, folder), { recursive: true });
  return names
    .filter((name) => kind.test(name) && !/node_modules/.test(name))
    .map((name) => `${folder}/${name}`);
}

function breachOfInclude(root, path, quoted, included) {
  const folder = path.split('/')[0];
  if (!quoted) {
    const needsWindows = included.endsWith('.h') && !kPortableLibraries.test(included);
    return needsWindows && !isWindows(path) && `portable, but includes <${included}>`;
  }
  if (!existsSync(join(root, included))) return `"${included}" is not named from the root`;
  const target = included.split('/')[0];
  if (isTest(included) && !isTest(path)) return `uses "${included}" outside a test`;
  if (target !== folder && target !== 'testing' && !kMayUse[folder].includes(target))
    return `${folder} may not use ${target}: "${included}"`;
  return isWindows(included) && !isWindows(path) && `portable, but includes "${included}"`;
}

function findProgramBreaches(root) {
  const breaches = [];
  for (const folder of Object.keys(kMayUse)) {
    for (const path of sourcesBelow(root, folder, /\.(cpp|h)$/)) {
      const text = readFileSync(join(root, path), 'utf8');
      if (path.endsWith('.h') && !/^(\/\/.*\n|\n)*#pragma once\n/.test(text))
        breaches.push(`${path}: does not start with #pragma once`);
      for (const [, open, included] of text.matchAll(/^[ \t]*#[ \t]*include[ \t]*(["<])([^">]+)[">]/gm)) {
        const breach = breachOfInclude(root, path, open === '"', included);
        if (breach) breaches.push(`${path}: ${breach}`);
      }
    }
  }
  return breaches;
}

// Returns the circles of imports, each from its first file in the order of `imports`.
function findCircles(imports) {
  const circles = [];
  const done = new Set();
  const trail = [];
  const visit = (path) => {
    if (trail.includes(path)) return circles.push([...trail.slice(trail.indexOf(path)), path].join(' -> '));
    if (done.has(path)) return;
    trail.push(path);
    for (const target of imports.get(path) ?? []) visit(target);
    done.add(trail.pop());
  };
  for (const path of imports.keys()) visit(path);
  return circles;
}

const kPage = 'web/src';

function findPageBreaches(root) {
  const breaches = [];
  const imports = new Map();
  for (const path of sourcesBelow(root, kPage, /\.(tsx?|css)$/)) {
    const folder = path.split('/')[2];
    const text = readFileSync(join(root, path), 'utf8');
    const targets = [...text.matchAll(/^(?:import|export|\} from|@import)\b[^'\n]*'(\.[^']+)'/gm)].map(
      ([, target]) => join(path, '..', target),
    );
    imports.set(path, targets);
    for (const target of targets) {
      const below = target.split('/')[2];
      if (!target.startsWith(`${kPage}/`) || !existsSync(join(root, target)))
        breaches.push(`${path}: imports "${target}", which is no file of the page`);
      else if (/\.test\.ts$/.test(target)) breaches.push(`${path}: uses the test "${target}"`);
      else if (below !== folder && !kPageMayUse[folder]?.includes(below))
        breaches.push(`${path}: ${folder} may not use ${below}: "${target}"`);
    }
  }
  return [...breaches, ...findCircles(imports).map((circle) => `a circle: ${circle}`)];
}

// Returns every breach in the tree at `root`, as "path: reason".
export function findBreaches(root) {
  return [...findProgramBreaches(root), ...findPageBreaches(root)];
}
