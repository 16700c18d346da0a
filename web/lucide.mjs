// esbuild plugin: `import gauge from 'lucide:gauge'` returns the shapes of that icon as [tag,
// attributes] pairs, so the script contains only the icons that it shows.
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

const source = fileURLToPath(new URL('node_modules/lucide-static/icon-nodes.json', import.meta.url));

export const lucide = {
  name: 'lucide',
  setup(build) {
    let icons;
    build.onResolve({ filter: /^lucide:/ }, ({ path }) => ({
      path: path.slice('lucide:'.length),
      namespace: 'lucide',
    }));
    build.onLoad({ filter: /.*/, namespace: 'lucide' }, ({ path }) => {
      icons ??= JSON.parse(readFileSync(source, 'utf8'));
      if (!icons[path]) return { errors: [{ text: `no icon is called "${path}"` }] };
      return { contents: JSON.stringify(icons[path]), loader: 'json' };
    });
  },
};
