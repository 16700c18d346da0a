// Builds the page: node build.mjs --version X.Y.Z [--out DIR]
// Writes index.html, css/style.css, js/app.js, app.png and app.ico. Fails if one of them exceeds its budget.
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { parseArgs } from 'node:util';
import { build } from 'esbuild';
import { lucide } from './lucide.mjs';

const web = dirname(fileURLToPath(import.meta.url));
const at = (...parts) => join(web, ...parts);
const { values: options } = parseArgs({ options: { version: { type: 'string' }, out: { type: 'string' } } });
if (!options.version) throw new Error('--version is missing');
const out = resolve(options.out ?? at('dist'));

const budgets = { 'index.html': 4_000, 'css/style.css': 40_000, 'js/app.js': 230_000 };

// The compiled page includes the licences of its libraries.
const notice = (name) =>
  `/*! ${name}\n${readFileSync(at('node_modules', name, 'LICENSE'), 'utf8').trim()}\n*/`;

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
  'css/style.css': await bundle('src/app/style.css', { footer: { css: notice('lucide-static') } }),
  'js/app.js': await bundle('src/app/main.tsx', {
    format: 'iife',
    // Arguments take less space than a list named `children`. An empty tsconfig overrides the project's
    // own JSX setting.
    tsconfigRaw: '{}',
    jsx: 'transform',
    jsxFactory: 'h',
    jsxFragment: 'Fragment',
    inject: [at('jsx.mjs')],
    footer: { js: notice('preact') },
    define: { VARNEL_VERSION: JSON.stringify(options.version) },
    plugins: [lucide],
  }),
  'app.png': readFileSync(at('icons/app.png')),
  'app.ico': readFileSync(at('icons/app.ico')),
};

let tooBig = false;
for (const [name, bytes] of Object.entries(files)) {
  const budget = budgets[name];
  const over = budget !== undefined && bytes.length > budget;
  tooBig ||= over;
  console.log(
    `${name.padEnd(14)} ${String(bytes.length).padStart(7)} B${budget ? ` of ${budget}` : ''}${over ? '  OVER BUDGET' : ''}`,
  );
}
if (tooBig) process.exit(1);

for (const [name, bytes] of Object.entries(files)) {
  const path = join(out, name);
  mkdirSync(dirname(path), { recursive: true });
  writeFileSync(path, bytes);
}
