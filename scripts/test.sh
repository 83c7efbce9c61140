#!/usr/bin/env bash
# Builds Tavix and runs the whole test suite, then the fast tests again under the sanitizers.
set -uo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh || { echo "test.sh: installing the dependencies failed"; exit 1; }

total_passed=0
total_failed=0
problems=()
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# Runs ctest in a build directory and adds its counts to the totals: run_ctest <dir> [ctest args...]
run_ctest() {
  local dir=$1
  shift
  ctest --test-dir "$dir" --output-on-failure -j2 --timeout 900 --no-tests=error "$@" 2>&1 | tee "$log"
  local status=${PIPESTATUS[0]}
  local counts
  counts=$(sed -nE 's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of ([0-9]+).*/\1 \2/p' "$log" | tail -n 1)
  if [[ -n $counts ]]; then
    local failed=${counts% *} total=${counts#* }
    total_failed=$((total_failed + failed))
    total_passed=$((total_passed + total - failed))
  fi
  if ((status != 0)); then
    # A run that fails without a count (no tests, a crash of ctest) still counts as one failure.
    [[ -n $counts ]] || total_failed=$((total_failed + 1))
    problems+=("tests failed in $dir")
  fi
}

echo "=== Release build in build/"
if bash scripts/build.sh build; then
  echo "=== All tests (build/)"
  run_ctest build

  echo "=== Sanitizer build in build-sanitize/"
  # The window is tested in the Release build; the sanitizer build leaves it out to save time.
  if bash scripts/build.sh build-sanitize -DTAVIX_SANITIZE=ON -DTAVIX_BUILD_GUI=OFF -DTAVIX_BUILD_BENCH=OFF; then
    echo "=== Unit, fuzz and script tests under the sanitizers (build-sanitize/)"
    # A distinct exit code, so a sanitizer report never passes for a script's own error status.
    export ASAN_OPTIONS=${ASAN_OPTIONS:-exitcode=99:detect_leaks=1}
    export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/lsan.supp:print_suppressions=0}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-exitcode=99:print_stacktrace=1:halt_on_error=1}
    run_ctest build-sanitize -L '^(unit|fuzz|scripts|stat)$'
  else
    total_failed=$((total_failed + 1))
    problems+=("the sanitizer build failed")
  fi
else
  total_failed=$((total_failed + 1))
  problems+=("the build failed; the tests did not run")
fi

echo
for problem in "${problems[@]}"; do
  echo "test.sh: $problem"
done
echo "$total_passed passed, $total_failed failed"
((${#problems[@]} == 0))
