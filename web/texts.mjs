// esbuild plugin: a translation has the keys of the Czech texts, so the script carries only its values, in their order.
import { readFile } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { transform } from 'esbuild';

async function textsOf(path, name) {
  const { code } = await transform(await readFile(path, 'utf8'), { loader: 'ts', format: 'esm' });
  return (await import(`data:text/javascript,${encodeURIComponent(code)}`))[name];
}

export const texts = {
  name: 'texts',
  setup(build) {
    build.onLoad({ filter: /[/\\]text[/\\]en\.ts$/ }, async ({ path }) => {
      const [cs, en] = await Promise.all([textsOf(join(dirname(path), 'cs.ts'), 'cs'), textsOf(path, 'en')]);
      const values = JSON.stringify(Object.keys(cs).map((key) => en[key]));
      const contents = `import { cs } from './cs.ts';
        const values = ${values};
        export const en = Object.fromEntries(Object.keys(cs).map((key, i) => [key, values[i]]));`;
      return { contents, loader: 'js' };
    });
  },
};
