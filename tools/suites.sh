# Building and running the suites, for tools/test.sh, windows/ and portable/. Sourced in the root of the sources.

totals=${TESSARN_TEST_TOTALS:-}  # the counts of every suite so far, a file

start_counting() {
  if [ -n "$totals" ]; then return; fi
  mkdir -p build
  totals=$PWD/build/test-totals
  : >"$totals"
}

# failure NAME REASON: one failure, for what could not be run at all.
failure() {
  tools/suite.py fail "$1" "$2" --totals "$totals"
  true
}

# build PRESET [OPTION...]: configures and builds as much as can be built. What is missing fails in its suite; without
# a configured folder there is no suite, and build returns false.
build() {
  local preset=$1 log started=$SECONDS
  log=$(mktemp)
  if ! cmake --preset "$preset" "${@:2}" >"$log" 2>&1; then
    tail -40 "$log"
    rm -f "$log"
    failure "$preset" "configuration failed"
    return 1
  fi
  cmake --build --preset "$preset" -- -k 0 >"$log" 2>&1 || { grep -A20 '^FAILED' "$log" | sed -n 1,60p; failure "$preset" "build failed"; }
  rm -f "$log"
  echo "== $preset built in $((SECONDS - started)) s"
}

# suite NAME FOLDER [OPTION...]: runs the tests of a folder and adds their counts.
suite() {
  local started=$SECONDS
  tools/suite.py run "$@" --totals "$totals"
  echo "== $1: $((SECONDS - started)) s"
}

# The total, once all suites have run; as a status whether nothing failed. --other-processors: none of them was this one.
close_counting() {
  tools/suite.py close --totals "$totals" "$@"
}

# Runs a command quietly; shows the end of its output when it fails.
quietly() {
  local log
  log=$(mktemp)
  "$@" >"$log" 2>&1 && rm "$log" && return
  tail -40 "$log"
  rm -f "$log"
  echo "failed: $*"
  return 1
}

# The path of the program tessarn of this machine, built here unless the tests have it; nothing where it cannot be built.
native_program() {
  local folder=build/release
  if [ ! -x "$folder/programs/tessarn" ]; then
    folder=build/replay
    quietly cmake -S . -B "$folder" -G Ninja -DTESSARN_TESTS=OFF -DTESSARN_REPLAY=ON -DTESSARN_EXAMPLES=OFF >&2 || return
  fi
  quietly cmake --build "$folder" --target tessarn-program >&2 && echo "$PWD/$folder/programs/tessarn"
}

# Writes the operations with the native build: the one of the tests when it is there.
write_replay_file() {
  local folder=build/release
  if [ ! -x "$folder/tests/replay/replay" ]; then
    folder=build/replay
    quietly cmake -S . -B "$folder" -G Ninja -DTESSARN_TESTS=OFF -DTESSARN_REPLAY=ON -DTESSARN_EXAMPLES=OFF -DTESSARN_PROGRAMS=OFF || return
  fi
  quietly cmake --build "$folder" --target replay && mkdir -p build && "$folder/tests/replay/replay" write build/operations.bin
}
