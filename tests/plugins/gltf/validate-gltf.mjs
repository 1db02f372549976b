// SPDX-License-Identifier: Apache-2.0

// Checks .gltf and .glb files together with the files that they name, by gltf-validator.
//
//     npm install --prefix FOLDER gltf-validator
//     node tests/plugins/gltf/validate-gltf.mjs --modules FOLDER/node_modules [--json] FILE...
//
// Without --modules the folder is taken from the variable GLTF_VALIDATOR_MODULES. Resources are
// looked for from the file's own folder. One line per file tells the number of errors and warnings
// and which resources are missing; errors follow, one per line. The exit code is 1 when a resource
// is missing or a file has an error or cannot be read, 2 for wrong usage, 0 otherwise. With --json
// one line per file tells every resource: the JSON pointer of what names it, the file that was read
// for it (null when it is missing), and what the validator found there.

import { createRequire } from 'node:module';
import { createHash } from 'node:crypto';
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const args = process.argv.slice(2);
let modules = process.env.GLTF_VALIDATOR_MODULES;
if (args[0] === '--modules') {
  modules = args[1];
  args.splice(0, 2);
}
const asJson = args[0] === '--json';
if (asJson) {
  args.shift();
}
if (!modules || args.length === 0) {
  console.error('usage: validate-gltf.mjs --modules FOLDER/node_modules [--json] FILE...');
  process.exit(2);
}
const validator = createRequire(path.resolve(modules, 'anchor.js'))('gltf-validator');

function decoded(uri) {
  try {
    return decodeURIComponent(uri);
  } catch {
    return uri; // a "%" that stands for itself
  }
}

function fileOf(uri, folder) {
  return uri.startsWith('file:') ? fileURLToPath(uri) : path.resolve(folder, decoded(uri));
}

function shortened(uri) {
  return uri.length > 120 ? uri.slice(0, 117) + '...' : uri;
}

async function validate(file) {
  const folder = path.dirname(path.resolve(file));
  const missing = [];
  const loaded = new Map();
  const load = async (uri) => {
    try {
      const bytes = await readFile(fileOf(uri, folder));
      loaded.set(uri, { path: fileOf(uri, folder),
                        digest: createHash('sha256').update(bytes).digest('hex').slice(0, 16) });
      return new Uint8Array(bytes);
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
  return { file, report, missing, loaded,
           // A missing resource is an issue of its own; it is told apart from errors in what is there.
           errors: report.issues.messages.filter((m) => m.severity === 0 && m.code !== 'IO_ERROR'),
           resources: (report.info?.resources ?? []).filter((r) => r.storage === 'external') };
}

function contentOf(resource, loaded) {
  const size = resource.image ? `${resource.image.width}x${resource.image.height}`
                              : `${resource.byteLength} bytes`;
  return `${resource.mimeType} ${size} ${loaded.digest}`;
}

function printJson({ file, errors, resources, loaded }) {
  console.log(JSON.stringify({
    file,
    errors: errors.map((m) => `${m.code} at ${m.pointer || `byte ${m.offset}`}: ${m.message}`),
    resources: resources.map((resource) => {
      const found = loaded.get(resource.uri);
      return { pointer: resource.pointer, path: found?.path ?? null,
               content: found ? contentOf(resource, found) : null };
    }),
  }));
}

function printText({ file, report, errors, resources, missing }) {
  console.log(`${file}: ${errors.length} errors, ${report.issues.numWarnings} warnings, `
              + `${resources.length} external resources, ${missing.length} missing`
              + (missing.length ? `: ${missing.map(shortened).join(', ')}` : ''));
  for (const message of errors) {
    console.log(`  ${message.code} at ${message.pointer || `byte ${message.offset}`}: `
                + message.message);
  }
}

let good = true;
for (const file of args) {
  try {
    const result = await validate(file);
    (asJson ? printJson : printText)(result);
    good = result.errors.length === 0 && result.missing.length === 0 && good;
  } catch (error) {
    console.log(`${file}: ${error.message ?? error}`);
    good = false;
  }
}
process.exit(good ? 0 : 1);
