// SPDX-License-Identifier: MIT
//
// judge_ffprobe.mjs SAMPLES: ffprobe opens the texts as a receiver would and must see the video format
// and the audio encoding. It listens for a second on the addresses it finds, so it runs in a network
// namespace of its own where the machine allows one; no traffic is sent either way.
import { spawn, spawnSync } from 'node:child_process';
import { readSamples, Verdict } from './judges.mjs';

const video = { codec_type: 'video', width: 1920, height: 1080, avg_frame_rate: '60000/1001' };
const audio = { codec_type: 'audio', codec_name: 'pcm_s24be', sample_rate: '48000' };
const expected = {
  'element-video-rx': [video],
  'element-video-tx': [video],
  'element-audio': [audio, audio, audio, audio],
  'file-rx': [video, audio, audio],
  'file-tx': [video, audio, audio],
};

const probe = ['ffprobe', '-v', 'error', '-protocol_whitelist', 'file,udp,rtp', '-listen_timeout', '1',
  '-show_streams', '-of', 'json'];
const inside = 'ip link set lo up && ip route add 224.0.0.0/4 dev lo && exec "$@"';
const canIsolate = spawnSync('unshare', ['-Urn', 'sh', '-c', inside, 'sh', 'true']).status === 0;
if (!canIsolate) console.log('no network namespace on this machine: listening on its own interfaces');

function streamsOf(sample) {
  const command = canIsolate ? ['unshare', '-Urn', 'sh', '-c', inside, 'sh', ...probe] : probe;
  return new Promise((resolve) => {
    const child = spawn(command[0], [...command.slice(1), sample.file], { timeout: 30000 });
    let out = '';
    child.stdout.on('data', (data) => { out += data; });
    child.on('error', () => resolve(null));
    child.on('close', () => {
      try { resolve(JSON.parse(out).streams); } catch { resolve(null); }
    });
  });
}

const sees = (stream, wanted) => Object.entries(wanted).every(([key, value]) => stream?.[key] === value);

const verdict = new Verdict('ffprobe');
const samples = readSamples(process.argv[2]);
for (const [kind, streams] of Object.entries(expected)) {
  const sample = samples.find((one) => one.kind === kind && one.flows === 2 && one.boxes === '1111' && one.clock === 'ptp');
  const found = await streamsOf(sample);
  const known = (found ?? []).filter((stream) => ['video', 'audio'].includes(stream.codec_type));
  const complaints = [];
  if (!found) complaints.push('not opened');
  else if (known.length !== streams.length) complaints.push(`${known.length} streams instead of ${streams.length}`);
  else streams.forEach((wanted, n) => {
    if (!sees(known[n], wanted)) complaints.push(`stream ${n}: ${JSON.stringify(known[n])}`);
  });
  verdict.sample(sample, complaints);
}
verdict.end();
