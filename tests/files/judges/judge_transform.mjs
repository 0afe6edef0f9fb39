// SPDX-License-Identifier: MIT
//
// judge_transform.mjs SAMPLES FOLDER...: sdp-transform must understand every line, and find the same
// sections, ports, addresses and directions that stand in the text.
import { modulesBelow, readSamples, Verdict } from './judges.mjs';

const [samplesFolder, ...folders] = process.argv.slice(2);
const transform = modulesBelow(folders).require('sdp-transform');
const verdict = new Verdict('sdp-transform');

const lines = (text, start) =>
  text.split('\n').filter((line) => line.startsWith(start)).map((line) => line.slice(start.length));

for (const sample of readSamples(samplesFolder)) {
  const session = transform.parse(sample.text);
  const media = session.media;
  const notUnderstood = [session, ...media].flatMap((part) => (part.invalid ?? []).map((line) => line.value));
  verdict.sample(sample, notUnderstood);

  const same = (what, found, expected) =>
    verdict.check(JSON.stringify(found) === JSON.stringify(expected), `${sample.file}: ${what} ${found}`);
  same('media', media.map((part) => `${part.type} ${part.port} ${part.protocol} ${part.payloads}`), lines(sample.text, 'm='));
  same('addresses', media.map((part) => part.connection.ip), lines(sample.text, 'c=IN IP4 '));
  same('directions', media.map((part) => part.direction),
    lines(sample.text, 'a=').filter((line) => /^(recv|send)only$/.test(line)));
  same('filters', media.flatMap((part) => part.sourceFilter ?? []).map((f) => `${f.destAddress} ${f.srcList}`),
    lines(sample.text, 'a=source-filter: incl IN IP4 '));
  same('clocks', media.flatMap((part) => part.tsRefClocks ?? []).length, lines(sample.text, 'a=ts-refclk:').length);
  same('origin', session.origin.address, '192.168.10.2');
}
verdict.end();
