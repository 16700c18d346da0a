// Bundles src/**/*.test.ts into a temporary folder and runs them with Node's test runner.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';
import { lucide } from './lucide.mjs';

const web = dirname(fileURLToPath(import.meta.url));
const out = mkdtempSync(join(tmpdir(), 'varnel-page-tests-'));
let status = 1;
try {
  const names = readdirSync(join(web, 'src'), { recursive: true }).filter((name) => /\.test\.ts$/.test(name));
  await build({
    entryPoints: names.map((name) => join(web, 'src', name)),
    outdir: out,
    outbase: join(web, 'src'),
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
  const files = names.map((name) => join(out, name.replace(/\.ts$/, '.mjs')));
  const options = ['--enable-source-maps', '--test', '--test-reporter=spec', ...files];
  status = spawnSync(process.execPath, options, { stdio: 'inherit', cwd: web }).status ?? 1;
} finally {
  rmSync(out, { recursive: true, force: true });
}
process.exit(status);
