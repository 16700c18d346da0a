// Builds the page: node build.mjs --version X.Y.Z [--out DIR] [--notice NAME=FILE]...
// Writes index.html, css/style.css, js/app.js, app.png and app.ico. Fails if one of them exceeds its budget.
// Also writes THIRD_PARTY_NOTICES.txt: the licences of the page's packages and of each library of the
// program that `--notice` names.
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { parseArgs } from 'node:util';
import { build } from 'esbuild';
import { lucide } from './lucide.mjs';
import { shortKeys } from './short_keys.mjs';

const web = dirname(fileURLToPath(import.meta.url));
const at = (...parts) => join(web, ...parts);
const { values: options } = parseArgs({
  options: {
    version: { type: 'string' },
    out: { type: 'string' },
    notice: { type: 'string', multiple: true, default: [] },
  },
});
if (!options.version) throw new Error('--version is missing');
const out = resolve(options.out ?? at('dist'));

const budgets = { 'index.html': 4_000, 'css/style.css': 40_000, 'js/app.js': 230_000 };

const packages = ['preact', 'lucide-static'].map((name) => [name, at('node_modules', name, 'LICENSE')]);
const libraries = options.notice.map((notice) => notice.split(/=(.*)/s));
const notices = [...packages, ...libraries].map(
  ([name, file]) => `${name}\n${'='.repeat(name.length)}\n\n${readFileSync(file, 'utf8').trim()}\n`,
);

async function bundle(entry, more = {}) {
  const result = await build({
    entryPoints: [at(entry)],
    bundle: true,
    minify: true,
    charset: 'utf8',
    write: false,
    target: 'es2022',
    legalComments: 'none',
    logLevel: 'warning',
    ...more,
  });
  return result.outputFiles[0].contents;
}

const files = {
  'index.html': readFileSync(at('src/app/index.html')),
  'css/style.css': await bundle('src/app/style.css'),
  'js/app.js': await bundle('src/app/main.tsx', {
    format: 'iife',
    // Arguments take less space than a list named `children`. An empty tsconfig overrides the project's
    // own JSX setting.
    tsconfigRaw: '{}',
    jsx: 'transform',
    jsxFactory: 'h',
    jsxFragment: 'Fragment',
    inject: [at('jsx.mjs')],
    define: { VARNEL_VERSION: JSON.stringify(options.version) },
    plugins: [lucide, shortKeys(at('src'))],
  }),
  'app.png': readFileSync(at('icons/app.png')),
  'app.ico': readFileSync(at('icons/app.ico')),
  'THIRD_PARTY_NOTICES.txt': Buffer.from(notices.join('\n\n').replace(/\r?\n/g, '\r\n')),
};

let tooBig = false;
for (const [name, bytes] of Object.entries(files)) {
  const budget = budgets[name];
  const over = budget !== undefined && bytes.length > budget;
  tooBig ||= over;
  console.log(
    `${name.padEnd(24)} ${String(bytes.length).padStart(7)} B${budget ? ` of ${budget}` : ''}${over ? '  OVER BUDGET' : ''}`,
  );
}
if (tooBig) process.exit(1);

for (const [name, bytes] of Object.entries(files)) {
  const path = join(out, name);
  mkdirSync(dirname(path), { recursive: true });
  writeFileSync(path, bytes);
}
