// SPDX-License-Identifier: MIT
//
// What the judges of session descriptions share: the samples, the node modules, the known refusals and
// the verdict. A judge is another program's reader; it must take what corvel writes.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';

const withoutMedia = (sample) => sample.kind === 'element-audio' && sample.flows === 0;

// Every text that a judge is known to refuse, why, and what it then says. A refusal that is not listed
// here is a failure, and so is one that is listed and no longer happens.
export const knownRefusals = [
  {
    judge: 'sdpoker',
    applies: withoutMedia,
    says: /no connection data \("c="\) field was found/,
    why: 'no audio flow leaves the four session lines, without media and so without a connection line',
  },
  {
    judge: 'sdpoker',
    applies: (sample) => sample.clock === 'none' && !withoutMedia(sample),
    says: /shall have a media-level '(mediaclk|ts-refclk)' attribute/,
    why: 'ST 2110-10 asks for clock lines; with the clock box clear none are written, on purpose',
  },
  {
    judge: 'sdpoker',
    applies: (sample) => sample.kind === 'element-anc',
    says: /does not have an 'fmtp' attribute/,
    why: 'false alarm: ancillary data announced as m=video is taken for raw video, which needs an fmtp line',
  },
  {
    judge: 'sdp-transform',
    applies: (sample) => ['element-video-tx', 'file-rx'].includes(sample.kind),
    says: /^framerate:60000\/1001$/,
    why: 'it knows whole and decimal frame rates only; the exact fraction is what ST 2110 senders mean',
  },
];

// The samples in a folder, smallest name first: { file, kind, flows, boxes, clock, text }.
export function readSamples(folder) {
  const names = fs.readdirSync(folder).filter((name) => name.endsWith('.sdp')).sort();
  if (names.length < 1440) throw new Error(`only ${names.length} samples in ${folder}`);
  return names.map((name) => {
    const [kind, flows, boxes, clock] = name.split('.');
    const file = path.join(folder, name);
    return { file, kind, flows: Number(flows), boxes, clock, text: fs.readFileSync(file, 'utf8') };
  });
}

// A require() that finds modules below the first of the folders that holds them.
export function modulesBelow(folders) {
  const folder = folders.find((candidate) => fs.existsSync(path.join(candidate, 'node_modules', 'sdpoker')));
  if (!folder) throw new Error(`run "npm ci" in tests/files/judges first (looked in ${folders.join(', ')})`);
  return { require: createRequire(path.join(folder, 'judge.js')), folder: path.join(folder, 'node_modules') };
}

// Collects complaints, sorts out the known refusals and ends the process with the verdict.
export class Verdict {
  constructor(judge) {
    this.judge = judge;
    this.known = knownRefusals.filter((refusal) => refusal.judge === judge);
    this.seen = new Set();
    this.failures = [];
    this.judged = 0;
  }

  sample(sample, complaints) {
    this.judged += 1;
    for (const complaint of complaints) {
      const refusal = this.known.find((known) => known.applies(sample) && known.says.test(complaint));
      if (refusal) this.seen.add(refusal);
      else this.failures.push(`${path.basename(sample.file)}: ${complaint}`);
    }
    for (const refusal of this.known) {
      if (refusal.applies(sample) && !complaints.some((complaint) => refusal.says.test(complaint)))
        this.failures.push(`${path.basename(sample.file)}: no longer refused (${refusal.why})`);
    }
  }

  check(condition, text) {
    if (!condition) this.failures.push(text);
  }

  end() {
    for (const refusal of this.seen) console.log(`known refusal: ${refusal.why}`);
    for (const failure of this.failures) console.error(failure);
    console.log(`${this.judge}: ${this.judged} texts judged, ${this.failures.length} failures`);
    process.exit(this.failures.length || !this.judged ? 1 : 0);
  }
}
