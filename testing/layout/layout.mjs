// The rules that keep the folders apart, checked on the include lines.
import { readdirSync, readFileSync, existsSync } from 'node:fs';
import { join } from 'node:path';

const kSubsystems = ['system', 'clean', 'software', 'disk', 'startup', 'net', 'maint'];

// Which folders a folder may include from, beside itself.
const kMayUse = {
  base: [],
  exec: ['base'],
  ...Object.fromEntries(kSubsystems.map((name) => [name, ['exec', 'base']])),
  app: [...kSubsystems, 'exec', 'base'],
  testing: ['app', ...kSubsystems, 'exec', 'base'],
};

// Headers that need Windows although their names, fixed by their kind, do not say so.
const kWindowsHeaders = new Set(['app/webview2.h']);
const kPortableLibraries = /^(gtest|gmock)\//;

const isTest = (path) =>
  path.startsWith('testing/') || /_(test|fuzz|bench|fixture|fixture_win)\.(cpp|h)$/.test(path);
const isWindows = (path) => /_win(_test|_bench)?\.(cpp|h)$/.test(path) || kWindowsHeaders.has(path);

function sourcesBelow(root, folder) {
  const found = [];
  for (const entry of readdirSync(join(root, folder), { withFileTypes: true })) {
    const path = `${folder}/${entry.name}`;
    if (entry.isDirectory() && entry.name !== 'node_modules') found.push(...sourcesBelow(root, path));
    else if (/\.(cpp|h)$/.test(entry.name)) found.push(path);
  }
  return found;
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

// Every breach in the tree at `root`, as "path: what".
export function findBreaches(root) {
  const breaches = [];
  for (const folder of Object.keys(kMayUse).filter((name) => existsSync(join(root, name)))) {
    for (const path of sourcesBelow(root, folder)) {
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
