// Runs a model in ONNX Runtime, as worker.py describes it: node onnxruntime_worker.js MODULES THREADS
'use strict';
const fs = require('fs');
const path = require('path');
const readline = require('readline');

const ort = require(path.join(path.resolve(process.argv[2]), 'onnxruntime-node'));
const threads = Number(process.argv[3]);
let session = null;

const microseconds = (start) => Number(process.hrtime.bigint() - start) / 1000;

async function load(file) {
    const start = process.hrtime.bigint();
    session = await ort.InferenceSession.create(file, { intraOpNumThreads: threads, interOpNumThreads: 1 });
    return [microseconds(start)];
}

async function run(input, channels, height, width, repeats, output) {
    const bytes = fs.readFileSync(input);
    const values = new Float32Array(bytes.buffer, bytes.byteOffset, bytes.length / 4);
    const feeds = { [session.inputNames[0]]: new ort.Tensor('float32', values, [1, channels, height, width]) };
    const times = [];
    let result = null;
    for (let i = 0; i < repeats; ++i) {
        const start = process.hrtime.bigint();
        result = await session.run(feeds);
        times.push(microseconds(start));
    }
    const scores = result[session.outputNames[0]].data;
    fs.writeFileSync(output, new Uint8Array(scores.buffer, scores.byteOffset, scores.byteLength));
    return times;
}

async function answer(line) {
    const [command, ...rest] = line.split('\t');
    const times = command === 'load'
        ? await load(rest[0])
        : await run(rest[0], ...rest.slice(1, 5).map(Number), rest[5]);
    process.stdout.write(`${times.join(' ')}\n`);
}

(async () => {
    for await (const line of readline.createInterface({ input: process.stdin })) {
        await answer(line);
    }
})();
