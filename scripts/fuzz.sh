#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer into build-fuzz/, and runs each for SECONDS (default
# 60) from a seed corpus made of the project's test inputs and fuzz/corpus/.
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]   e.g. scripts/fuzz.sh 600 assembler_fuzz
# A target that crashes, leaks, hangs or breaks one of its checks fails the run;
# the input that did it is kept in build-fuzz/findings/. Without clang and its
# libFuzzer runtime the script says so and does nothing.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
shift || true
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  echo "fuzz: SECONDS must be a whole number above 0, not '$seconds'" >&2
  exit 2
fi

cxx=""
for c in clang++ clang++-{20..14}; do
  if command -v "$c" >/dev/null; then cxx=$c; break; fi
done
if [ -z "$cxx" ]; then
  echo "fuzz: clang++ not found; the fuzz targets are skipped."
  exit 0
fi
probe=$(mktemp -d)
trap 'rm -rf "$probe"' EXIT
printf '#include <cstddef>\n#include <cstdint>\nextern "C" int LLVMFuzzerTestOneInput(const uint8_t*, size_t) { return 0; }\n' \
  >"$probe/probe.cpp"
if ! "$cxx" -fsanitize=fuzzer,address,undefined "$probe/probe.cpp" -o "$probe/probe" 2>/dev/null; then
  echo "fuzz: $cxx can not link libFuzzer (Debian: libclang-rt-dev); the fuzz targets are skipped."
  exit 0
fi

build=build-fuzz
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DMB_BUILD_GUI=OFF -DMB_BUILD_TESTS=OFF -DMB_BUILD_FUZZERS=ON "${launcher[@]}" >/dev/null
cmake --build "$build" --target fuzzers

# Seeds from the test inputs of each target, and the longest input it is given.
seeds_of() {
  case $1 in
    intel_hex_fuzz) echo examples/*.hex ;;
    object_image_fuzz | disassembler_fuzz) echo examples/*.obj tests/disasm/golden/*.obj ;;
    assembler_fuzz) echo examples/*.asm tests/assembler/corpus/*.asm ;;
    compile_fuzz) echo examples/basic/*.bas ;;
  esac
}
max_len_of() {
  case $1 in
    assembler_fuzz) echo 4096 ;;  # deeply nested expressions in longer sources run slowly
    *) echo 8192 ;;
  esac
}

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for source in fuzz/*_fuzz.cpp; do targets+=("$(basename "$source" .cpp)"); done
fi

failed=()
for name in "${targets[@]}"; do
  program=$build/fuzz/$name
  if [ ! -x "$program" ]; then
    echo "fuzz: no target $name" >&2
    failed+=("$name")
    continue
  fi
  corpus=$build/corpus/$name seeds=$build/seeds/$name log=$build/logs/$name.log
  scratch=$PWD/$build/tmp/$name
  rm -rf "$seeds" "$scratch"
  mkdir -p "$corpus" "$seeds" "$build/logs" "$build/findings" "$scratch"
  # shellcheck disable=SC2046
  cp $(seeds_of "$name") "$seeds/"
  # New inputs go to the first folder; the seeds and the kept findings are read only.
  folders=("$corpus" "$seeds")
  [ -d "fuzz/corpus/$name" ] && folders+=("fuzz/corpus/$name")
  dict=()
  [ -f "fuzz/$name.dict" ] && dict=(-dict="fuzz/$name.dict")
  status=0
  TMPDIR=$scratch "$program" -max_total_time="$seconds" -timeout=10 \
    -max_len="$(max_len_of "$name")" -print_final_stats=1 \
    -artifact_prefix="$build/findings/$name-" "${dict[@]}" "${folders[@]}" >"$log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  units=$(find "$corpus" -type f | wc -l)
  # Inputs that were replaced by smaller ones stay in the folder; once it holds
  # far more than the fuzzer kept, it is merged down, so that loading stays short.
  kept=$(grep -o 'corp: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2 || true)
  if [ "$status" -eq 0 ] && [ -n "$kept" ] && [ "$units" -gt $((2 * kept + 200)) ]; then
    rm -rf "$corpus.merged"
    mkdir -p "$corpus.merged"
    if TMPDIR=$scratch "$program" -merge=1 -timeout=10 -max_len="$(max_len_of "$name")" \
      "$corpus.merged" "$corpus" >"$build/logs/$name.merge.log" 2>&1; then
      rm -rf "$corpus"
      mv "$corpus.merged" "$corpus"
      units=$(find "$corpus" -type f | wc -l)
    fi
  fi
  rm -rf "$scratch"
  if [ "$status" -eq 0 ]; then
    printf 'fuzz: %-18s %4ss  %9s runs  %6s/s  corpus %s\n' "$name" "$seconds" "${runs:-?}" \
      "${rate:-?}" "$units"
  else
    echo "fuzz: $name FAILED (exit $status); full log in $log"
    tail -n 50 "$log"
    failed+=("$name")
  fi
done

if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: failed: ${failed[*]}; the inputs are in $build/findings/"
  exit 1
fi
