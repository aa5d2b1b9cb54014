#!/usr/bin/env bash
# Runs every fuzz target built in BUILD_DIR/bin (fuzz_<name>) with its seeds
# (fuzz/seeds/<name>) and committed corpus (fuzz/corpus/<name>), either of
# which may be missing; the certificate target also reads the system's CA
# certificates.
#
#   run_fuzzers.sh long  BUILD_DIR   FUZZ_SECONDS each (default 60); new inputs
#                                    collect in BUILD_DIR/corpus/<name>
#   run_fuzzers.sh smoke BUILD_DIR   FUZZ_SECONDS each (default 5) from a fresh
#                                    corpus: every seed and corpus file runs
#   run_fuzzers.sh merge BUILD_DIR   adds what BUILD_DIR/corpus/<name> covers
#                                    beyond fuzz/corpus/<name> to the latter
#
# FUZZ_TARGETS (names, blank-separated) limits the run to those targets.
# FUZZ_JOBS targets run at once (default 1; each uses one core). Every run
# ends with one line of libFuzzer's final statistics; a failing target shows
# the end of its log and keeps the input in BUILD_DIR/artifacts. The exit
# status is non-zero when any target failed.
set -euo pipefail

mode=${1:?usage: run_fuzzers.sh long|smoke|merge BUILD_DIR}
build=$(cd "${2:?usage: run_fuzzers.sh long|smoke|merge BUILD_DIR}" && pwd)
fuzz_dir=$(cd "$(dirname "$0")" && pwd)
jobs=${FUZZ_JOBS:-1}
case $mode in
  long) seconds=${FUZZ_SECONDS:-60} ;;
  smoke) seconds=${FUZZ_SECONDS:-5} ;;
  merge) seconds=0 ;;
  *) echo "unknown mode: $mode" >&2; exit 2 ;;
esac

# The library's deliberate leaks are not findings; undefined behaviour stops.
export LSAN_OPTIONS="suppressions=$fuzz_dir/../tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
# The leak suppressions match function names, so stacks must be symbolized:
# by llvm-symbolizer where it is installed, else by binutils' addr2line,
# which the sanitizer runtime does not look for by itself.
if command -v llvm-symbolizer >/dev/null || ! command -v addr2line >/dev/null; then
  export ASAN_OPTIONS="${ASAN_OPTIONS:-allow_addr2line=1}"
else
  export ASAN_OPTIONS="${ASAN_OPTIONS:-allow_addr2line=1:external_symbolizer_path=$(command -v addr2line)}"
fi
mkdir -p "$build/artifacts" "$build/logs"

# The system's CA certificates as DER, made once per build folder: real-world
# certificates the certificate target reads beside OpenSSL on every run.
ca_certificates() {
  local folder=$build/ca-certificates pem
  if [ ! -d "$folder" ]; then
    mkdir -p "$folder.partial"
    for pem in /etc/ssl/certs/*.pem; do
      [ -f "$pem" ] || continue
      openssl x509 -in "$pem" -outform DER -out "$folder.partial/$(basename "$pem" .pem).der" 2>/dev/null || true
    done
    mv "$folder.partial" "$folder"
  fi
  echo "$folder"
}

# Input folders of a target that exist.
inputs() {
  for folder in "$fuzz_dir/seeds/$1" "$fuzz_dir/corpus/$1"; do
    [ -d "$folder" ] && echo "$folder"
  done
  if [ "$1" = certificate ] && command -v openssl >/dev/null; then
    ca_certificates
  fi
  return 0
}

run_one() {
  local binary=$1 name log corpus status
  name=$(basename "$binary")
  name=${name#fuzz_}
  log=$build/logs/$name.log
  if [ "$mode" = merge ]; then
    mkdir -p "$fuzz_dir/corpus/$name" "$build/corpus/$name"
    "$binary" -merge=1 "$fuzz_dir/corpus/$name" "$build/corpus/$name" >"$log" 2>&1 || status=$?
    echo "$name: merged, $(ls "$fuzz_dir/corpus/$name" | wc -l) files in fuzz/corpus/$name"
    return "${status:-0}"
  fi
  corpus=$build/corpus/$name
  [ "$mode" = smoke ] && corpus=$build/smoke/$name && rm -rf "$corpus"
  mkdir -p "$corpus"
  # shellcheck disable=SC2046  # one argument per input folder
  "$binary" -max_total_time="$seconds" -timeout=30 -print_final_stats=1 \
    -artifact_prefix="$build/artifacts/$name-" "$corpus" $(inputs "$name") >"$log" 2>&1 || status=$?
  local executions rate coverage
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -1 || true)
  printf '%-14s %-6s %4s s %10s runs %7s runs/s  %s, corpus %s files\n' "$name" \
    "$([ "${status:-0}" = 0 ] && echo ok || echo FAILED)" "$seconds" "${executions:-?}" "${rate:-?}" \
    "${coverage:-cov: ?}" "$(ls "$corpus" | wc -l)"
  if [ "${status:-0}" != 0 ]; then
    tail -n 40 "$log" | sed "s/^/  $name| /"
    return 1
  fi
}
export -f run_one inputs ca_certificates
export mode build fuzz_dir seconds

if [ -n "${FUZZ_TARGETS:-}" ]; then
  targets=$(for name in $FUZZ_TARGETS; do echo "$build/bin/fuzz_$name"; done)
else
  targets=$(ls "$build"/bin/fuzz_* 2>/dev/null || true)
fi
[ -n "$targets" ] || { echo "no fuzz targets in $build/bin" >&2; exit 1; }
echo "$mode run of $(echo "$targets" | wc -l) targets, ${seconds} s each, $jobs at a time"
echo "$targets" | xargs -P "$jobs" -I{} bash -c 'run_one "$1"' _ {}
