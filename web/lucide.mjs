// esbuild plugin: `import gauge from 'lucide:gauge'` returns the outline of that icon as the data of one
// path, so the script contains only the icons that it shows.
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

const source = fileURLToPath(new URL('node_modules/lucide-static/icon-nodes.json', import.meta.url));

// A path that begins with "m" would go on from where the one before it has ended; a second pair of it draws a line.
const number = '(-?(?:\\d+\\.?\\d*|\\.\\d+))';
const start = new RegExp(`^m *${number}[ ,]*${number}[ ,]*(?=([-.\\d])?)`);
const absolute = (d) => d.replace(start, (_, x, y, more) => `M${x} ${y}${more ? 'l' : ''}`);

const ring = (cx, cy, rx, ry) =>
  `M${cx - rx} ${cy}a${rx} ${ry} 0 1 0 ${2 * rx} 0a${rx} ${ry} 0 1 0 ${-2 * rx} 0`;

function box({ x = 0, y = 0, width, height, rx, ry }) {
  const [w, h, r] = [width, height, rx ?? ry ?? 0].map(Number);
  const corner = (dx, dy) => `a${r} ${r} 0 0 1 ${dx} ${dy}`;
  return (
    `M${Number(x) + r} ${y}h${w - 2 * r}${corner(r, r)}v${h - 2 * r}${corner(-r, r)}` +
    `h${2 * r - w}${corner(-r, -r)}v${2 * r - h}${corner(r, -r)}`
  );
}

const outlines = {
  path: ({ d }) => absolute(d),
  line: ({ x1, y1, x2, y2 }) => `M${x1} ${y1}L${x2} ${y2}`,
  polyline: ({ points }) => `M${points}`,
  polygon: ({ points }) => `M${points}z`,
  circle: ({ cx, cy, r }) => ring(Number(cx), Number(cy), Number(r), Number(r)),
  ellipse: ({ cx, cy, rx, ry }) => ring(Number(cx), Number(cy), Number(rx), Number(ry)),
  rect: box,
};

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
      return { contents: icons[path].map(([tag, shape]) => outlines[tag](shape)).join(''), loader: 'text' };
    });
  },
};
