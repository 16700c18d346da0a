// esbuild plugin: shortens the keys of the texts in the script. A key whose beginning is put together with
// something else (`view.${id}`) keeps its name.
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';

function idsOf(source) {
  const names = readdirSync(source, { recursive: true }).filter((name) => /(?<!\.test)\.tsx?$/.test(name));
  const read = (name) => readFileSync(join(source, name), 'utf8');
  const composed = [
    ...names
      .map(read)
      .join('\n')
      .matchAll(/`([\w.-]+)\$\{/g),
  ].map(([, start]) => start);
  const tables = names.filter((name) => name.endsWith('texts.ts')).map(read);
  const keys = [...tables.join('\n').matchAll(/^  '([\w.-]+)':/gm)].map(([, key]) => key);
  const whole = keys.filter((key) => !composed.some((start) => key.startsWith(start)));
  return new Map(whole.map((key, i) => [key, i.toString(36)]));
}

export const shortKeys = (source) => ({
  name: 'short keys',
  setup(build) {
    const ids = idsOf(source);
    build.onLoad({ filter: /\.tsx?$/ }, ({ path }) => ({
      contents: readFileSync(path, 'utf8').replace(/'([\w.-]+)'/g, (text, key) => `'${ids.get(key) ?? key}'`),
      loader: path.endsWith('x') ? 'tsx' : 'ts',
    }));
  },
});
