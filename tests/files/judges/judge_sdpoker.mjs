// SPDX-License-Identifier: MIT
//
// judge_sdpoker.mjs SAMPLES FOLDER...: sdpoker, the conformance checker for ST 2110 descriptions, run as
// "sdpoker --nmos=false --shaping --should": every text in this process with the same options, and one
// text of each kind through the command itself.
import path from 'node:path';
import { spawnSync } from 'node:child_process';
import { modulesBelow, readSamples, Verdict } from './judges.mjs';

const [samplesFolder, ...folders] = process.argv.slice(2);
const modules = modulesBelow(folders);
const { checkRFC4566, checkST2110 } = modules.require('sdpoker');
const options = { nmos: false, shaping: true, should: true, noCopy: true };

const samples = readSamples(samplesFolder);
const verdict = new Verdict('sdpoker');
for (const sample of samples) {
  const errors = [...checkRFC4566(sample.text, options), ...checkST2110(sample.text, options)];
  verdict.sample(sample, errors.map((error) => error.message));
}

// The command waits for its answer forever when a text breaks it, so give it a limit.
const command = path.join(modules.folder, 'sdpoker', 'sdpoker.js');
for (const kind of new Set(samples.map((sample) => sample.kind))) {
  const sample = samples.find((one) => one.kind === kind && one.flows === 2 && one.boxes === '1111' && one.clock === 'ptp');
  const run = spawnSync(process.execPath, [command, '--nmos=false', '--shaping', '--should', sample.file],
    { encoding: 'utf8', timeout: 30000 });
  verdict.check((run.status === 0) === (kind !== 'element-anc'), `command on ${kind}: ${run.status} ${run.stderr}`);
}
verdict.end();
