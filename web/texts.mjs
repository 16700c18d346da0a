// esbuild plugin: packs the texts. Their keys are carried once, by group ("app:nav retry|group:overview"), and each language
// as one string: a line a text, the forms of a plural divided by "|".
import { readFile } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { transform } from 'esbuild';

async function textsOf(path, name) {
  const { code } = await transform(await readFile(path, 'utf8'), { loader: 'ts', format: 'esm' });
  return (await import(`data:text/javascript,${encodeURIComponent(code)}`))[name];
}

const kForms = ['one', 'few', 'many', 'other'];

function packEntry(entry) {
  const forms =
    typeof entry === 'string' ? [entry] : kForms.filter((form) => form in entry).map((form) => entry[form]);
  const unfit = forms.find((text) => /[|\n]/.test(text));
  if (unfit !== undefined) throw new Error(`a text with "|" or a line end cannot be packed: ${unfit}`);
  return forms.join('|');
}

function packKeys(keys) {
  const groups = [];
  for (const key of keys) {
    if (!/^\w+\.[\w.-]+$/.test(key)) throw new Error(`a key of this form cannot be packed: ${key}`);
    const at = key.indexOf('.');
    const [group, rest] = [key.slice(0, at), key.slice(at + 1)];
    if (groups.at(-1)?.[0] === group) groups.at(-1)[1] += ` ${rest}`;
    else groups.push([group, rest]);
  }
  return groups.map((group) => group.join(':')).join('|');
}

export const texts = {
  name: 'texts',
  setup(build) {
    build.onLoad({ filter: /[/\\]text[/\\](cs|en)\.ts$/ }, async ({ path }) => {
      const cs_path = join(dirname(path), 'cs.ts');
      const keys = Object.keys(await textsOf(cs_path, 'cs'));
      const language = path === cs_path ? 'cs' : 'en';
      const table = await textsOf(path, language);
      const values = JSON.stringify(keys.map((key) => packEntry(table[key])).join('\n'));
      const unpack = `
        const keys = ${JSON.stringify(packKeys(keys))}.split('|').flatMap((packed) => {
          const [group, rest] = packed.split(':');
          return rest.split(' ').map((key) => group + '.' + key);
        });
        export const unpack = (values) => Object.fromEntries(values.split('\\n').map((line, i) => {
          const forms = line.split('|');
          return [keys[i], forms[1] === undefined ? line : { one: forms[0], few: forms[1], many: forms[2], other: forms.at(-1) }];
        }));`;
      const contents = `${language === 'cs' ? unpack : `import { unpack } from './cs.ts';`}
        export const ${language} = unpack(${values});`;
      return { contents, loader: 'js' };
    });
  },
};
