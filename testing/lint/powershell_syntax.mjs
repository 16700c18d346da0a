// Fails if a PowerShell file given on the command line does not parse, or if Windows PowerShell 5.1
// would misread it. (5.1 reads a file without a byte order mark in the ANSI code page.)
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { Language, Parser } from 'web-tree-sitter';

await Parser.init();
const parser = new Parser();
parser.setLanguage(
  await Language.load(
    fileURLToPath(import.meta.resolve('tree-sitter-powershell/tree-sitter-powershell.wasm')),
  ),
);

function* faults(node) {
  if (node.isError || node.isMissing) yield node;
  else if (node.hasError) for (const child of node.children) yield* faults(child);
}

let count = 0;
function report(file, line, text) {
  console.error(`${file}:${line}: ${text}`);
  ++count;
}
for (const file of process.argv.slice(2)) {
  const text = readFileSync(file, 'utf8');
  if (!text.startsWith('\uFEFF') && /[^\x00-\x7F]/.test(text))
    report(file, 1, 'text beyond ASCII needs a UTF-8 mark');
  for (const node of faults(parser.parse(text).rootNode)) {
    report(
      file,
      node.startPosition.row + 1,
      node.isMissing ? `missing ${node.type}` : `syntax error at ${node.text.slice(0, 60)}`,
    );
  }
}
process.exit(count > 0 ? 1 : 0);
