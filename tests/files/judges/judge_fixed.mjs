// SPDX-License-Identifier: MIT
//
// judge_fixed.mjs FIXED FOLDER...: sdpoker and sdp-transform take every fixed description, without an
// exception: sdpoker with all its "should" and traffic shaping rules and with CR LF line ends, sdp-transform
// without a line that it does not understand.
import fs from 'node:fs';
import path from 'node:path';
import { modulesBelow } from './judges.mjs';

const [folder, ...folders] = process.argv.slice(2);
const modules = modulesBelow(folders);
const { checkRFC4566, checkST2110 } = modules.require('sdpoker');
const transform = modules.require('sdp-transform');
const options = { nmos: false, shaping: true, should: true, noCopy: true, checkEndings: true };

const names = fs.readdirSync(folder).filter((name) => name.endsWith('.sdp')).sort();
const failures = [];
for (const name of names) {
  const text = fs.readFileSync(path.join(folder, name), 'utf8');
  for (const error of [...checkRFC4566(text, options), ...checkST2110(text, options)])
    failures.push(`${name}: sdpoker: ${error.message ?? error}`);
  const session = transform.parse(text);
  for (const part of [session, ...session.media])
    for (const line of part.invalid ?? []) failures.push(`${name}: sdp-transform: ${line.value}`);
  if (session.media.length !== text.split('\r\n').filter((line) => line.startsWith('m=')).length)
    failures.push(`${name}: sdp-transform: ${session.media.length} media sections`);
}
for (const failure of failures) console.error(failure);
console.log(`${names.length} fixed texts judged, ${failures.length} failures`);
process.exit(failures.length || names.length < 1550 ? 1 : 0);
