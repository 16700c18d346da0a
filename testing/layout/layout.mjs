// Checks the rules that keep the folders apart: the program's include lines and the page's imports.
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';

const kRooms = ['system', 'clean', 'software', 'disk', 'startup', 'net', 'maint'];
const kFloors = [['base'], ['exec'], kRooms, ['app', 'service'], ['testing']];

// The floors from the lowest up. A folder uses its own files and those of the floors below.
const kProgram = {
  floors: kFloors,
  folders: kFloors.flat(),
  top: '',
  kind: /\.(cpp|h)$/,
  uses: /^[ \t]*#[ \t]*include[ \t]*"([^"]+)"/gm,
  resolve: (_, name) => name,
};
const kPage = {
  floors: [['base'], ['bridge'], ['kit'], ['shell'], kRooms, ['app']],
  folders: ['web/src'],
  top: 'web/src/',
  kind: /\.(tsx?|css)$/,
  uses: /^(?:import|export|\} from|@import)\b[^'\n]*'(\.[^']+)'/gm,
  resolve: (path, name) => join(path, '..', name),
};

const isTest = (path) => /^testing\/|_(test|fuzz)\.(cpp|h)$|\.test\.ts$/.test(path);

function breachOfUse(root, { floors, top }, path, target) {
  const [folder, other] = [path, target].map((name) => name.slice(top.length).split('/')[0]);
  const [floor, below] = [folder, other].map((one) => floors.findIndex((names) => names.includes(one)));
  if (!target.startsWith(top) || !existsSync(join(root, target))) return `"${target}" is no file of the tree`;
  if (isTest(target) && !isTest(path)) return `uses "${target}" outside a test`;
  return (
    folder !== other && other !== 'testing' && below >= floor && `${folder} may not use ${other}: "${target}"`
  );
}

// Returns the circles of uses, each from its first file in the order of `uses`.
function findCircles(uses) {
  const circles = [];
  const done = new Set();
  const visit = (path, trail) => {
    if (trail.includes(path)) return circles.push([...trail.slice(trail.indexOf(path)), path].join(' -> '));
    if (done.has(path)) return;
    for (const target of uses.get(path) ?? []) visit(target, [...trail, path]);
    done.add(path);
  };
  for (const path of uses.keys()) visit(path, []);
  return circles.map((circle) => `a circle: ${circle}`);
}

function findBreachesIn(root, tree) {
  const uses = new Map();
  const breaches = [];
  for (const folder of tree.folders.filter((name) => existsSync(join(root, name))))
    for (const name of readdirSync(join(root, folder), { recursive: true })) {
      if (!tree.kind.test(name) || name.includes('node_modules')) continue;
      const path = `${folder}/${name}`;
      const text = readFileSync(join(root, path), 'utf8');
      const targets = [...text.matchAll(tree.uses)].map(([, target]) => tree.resolve(path, target));
      uses.set(path, targets);
      const found = targets.map((target) => breachOfUse(root, tree, path, target)).filter(Boolean);
      breaches.push(...found.map((breach) => `${path}: ${breach}`));
    }
  return [...breaches, ...findCircles(uses)];
}

// Returns every breach in the tree at `root`, as "path: reason".
export const findBreaches = (root) => [kProgram, kPage].flatMap((tree) => findBreachesIn(root, tree));
