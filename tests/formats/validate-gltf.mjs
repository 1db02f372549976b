// Checks .gltf and .glb files together with the files that they name, by gltf-validator.
//
//     npm install --prefix FOLDER gltf-validator
//     node tests/formats/validate-gltf.mjs --modules FOLDER/node_modules FILE...
//
// Without --modules the folder is taken from the variable GLTF_VALIDATOR_MODULES. Resources are
// looked for from the file's own folder. One line per file tells the number of errors and warnings
// and which resources are missing; errors follow, one per line. The exit code is 1 when a resource
// is missing or a file has an error or cannot be read, 2 for wrong usage, 0 otherwise.

import { createRequire } from 'node:module';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const args = process.argv.slice(2);
let modules = process.env.GLTF_VALIDATOR_MODULES;
if (args[0] === '--modules') {
  modules = args[1];
  args.splice(0, 2);
}
if (!modules || args.length === 0) {
  console.error('usage: validate-gltf.mjs --modules FOLDER/node_modules FILE...');
  process.exit(2);
}
const validator = createRequire(path.resolve(modules, 'anchor.js'))('gltf-validator');

function fileOf(uri, folder) {
  return uri.startsWith('file:') ? fileURLToPath(uri)
                                 : path.resolve(folder, decodeURIComponent(uri));
}

function shortened(uri) {
  return uri.length > 120 ? uri.slice(0, 117) + '...' : uri;
}

async function validate(file) {
  const folder = path.dirname(path.resolve(file));
  const missing = [];
  const load = async (uri) => {
    try {
      return new Uint8Array(await readFile(fileOf(uri, folder)));
    } catch (error) {
      missing.push(uri);
      throw error;
    }
  };
  const report = await validator.validateBytes(new Uint8Array(await readFile(file)), {
    uri: path.basename(file),
    maxIssues: 0,
    externalResourceFunction: load,
  });
  // A missing resource is an issue of its own; it is told apart from errors in what is there.
  const errors = report.issues.messages.filter((m) => m.severity === 0 && m.code !== 'IO_ERROR');
  const resources = (report.info?.resources ?? []).filter((r) => r.storage === 'external').length;
  console.log(`${file}: ${errors.length} errors, ${report.issues.numWarnings} warnings, `
              + `${resources} external resources, ${missing.length} missing`
              + (missing.length ? `: ${missing.map(shortened).join(', ')}` : ''));
  for (const message of errors) {
    console.log(`  ${message.code} at ${message.pointer || `byte ${message.offset}`}: `
                + message.message);
  }
  return errors.length === 0 && missing.length === 0;
}

let good = true;
for (const file of args) {
  try {
    good = await validate(file) && good;
  } catch (error) {
    console.log(`${file}: ${error.message ?? error}`);
    good = false;
  }
}
process.exit(good ? 0 : 1);
