// Loads a trace with Chrome DevTools' trace engine (npm @paulirish/trace_engine),
// the model behind the DevTools Performance panel, and prints what it found:
// each thread with its number of entries, and the number of flows. Exits 1
// when the engine cannot load the trace or finds no thread.
//
//   node tools/trace_engine_check.mjs TRACE.json     (run where the package is installed)
import {analyzeTrace} from '@paulirish/trace_engine/analyze-trace.mjs';

const file = process.argv[2];
const {parsedTrace} = await analyzeTrace(file);
const data = parsedTrace.data;
let threads = 0;
for (const proc of data.Renderer.processes.values()) {
    for (const thread of proc.threads.values()) {
        ++threads;
        console.log(`thread ${thread.name ?? thread.tid}: ${thread.entries.length} entries`);
    }
}
console.log(`flows: ${data.Flows.flows.length}, time range ${(data.Meta.traceBounds.range / 1000).toFixed(1)} ms`);
if (threads === 0) {
    console.error(`${file}: the trace engine found no thread`);
    process.exit(1);
}
