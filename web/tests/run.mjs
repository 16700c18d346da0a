// Bundles tests/*.test.ts(x) into a temporary folder and runs them with Node's test runner.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';
import { lucide } from '../lucide.mjs';

const tests = dirname(fileURLToPath(import.meta.url));
const out = mkdtempSync(join(tmpdir(), 'varnel-page-tests-'));
let status = 1;
try {
  const names = readdirSync(tests).filter((name) => /\.test\.tsx?$/.test(name));
  await build({
    entryPoints: names.map((name) => join(tests, name)),
    outdir: out,
    outExtension: { '.js': '.mjs' },
    bundle: true,
    platform: 'node',
    format: 'esm',
    target: 'node20',
    sourcemap: 'inline',
    jsx: 'automatic',
    jsxImportSource: 'preact',
    logLevel: 'warning',
    plugins: [lucide],
  });
  const files = names.map((name) => join(out, name.replace(/\.tsx?$/, '.mjs')));
  const options = ['--enable-source-maps', '--test', '--test-reporter=spec', ...files];
  status = spawnSync(process.execPath, options, { stdio: 'inherit', cwd: dirname(tests) }).status ?? 1;
} finally {
  rmSync(out, { recursive: true, force: true });
}
process.exit(status);
