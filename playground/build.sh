#!/usr/bin/env bash
# Builds what the page of the playground loads: build.sh OUTPUT. The worker with the library becomes one text within a script, so that
# the page also works when it is opened as a file.
set -euo pipefail
cd "$(dirname "$0")/.."
out=$1
mkdir -p "$out" build/playground
cmake -S playground -B build/playground -G Ninja --toolchain "$PWD/portable/toolchain/wasm.cmake" -DCMAKE_EXE_LINKER_FLAGS=-O1 \
  -DTESSARN_TESTS=OFF -DTESSARN_EXAMPLES=OFF -DTESSARN_SELFCHECK=OFF -DTESSARN_INSTALL=OFF >/dev/null
cmake --build build/playground --target engine >build/playground/engine.log || { cat build/playground/engine.log; exit 1; }

esbuild=site/node_modules/.bin/esbuild
export NODE_PATH=$PWD/site/node_modules
$esbuild playground/main.js --bundle --format=iife --minify --target=es2020 --loader:.csv=text --log-level=warning --outfile="$out/main.js"
$esbuild playground/worker.js --minify --target=es2020 --log-level=warning --outfile=build/playground/worker.js
cat site/node_modules/uplot/dist/uPlot.min.css playground/playground.css >"$out/main.css"
node -e '
  const fs = require("fs");
  const [engine, worker, to] = process.argv.slice(1);
  fs.writeFileSync(to, `globalThis.playgroundWorker=${JSON.stringify(fs.readFileSync(engine, "utf8") + "\n" + fs.readFileSync(worker, "utf8"))};\n`);
' build/playground/engine.js build/playground/worker.js "$out/engine.js"
