#!/usr/bin/env bash
# Builds VoBase and runs its main program, its tests or its benchmarks.
#
#   ./vobase.sh demo     build (release) and run the demo program
#   ./vobase.sh examples build (release) and run the example of each subsystem
#   ./vobase.sh test     build (release) and run every test
#   ./vobase.sh docs     the API reference (Doxygen) in build/docs/html; --strict fails on any warning
#   ./vobase.sh package  build (release) and make the Debian packages in build/release/packages
#   ./vobase.sh bench    build (release) and run the benchmarks
#   ./vobase.sh report   build (release), run the benchmarks and write bench/REPORT.md
#   ./vobase.sh timeline build (release), trace the demo and draw docs/trace-demo.png
#   ./vobase.sh fuzz [seconds] [target...]
#                        build the libFuzzer programs (clang) and run each target
#                        (all when none is named) for seconds (default 60);
#                        corpora, crashes and logs stay under build/fuzz/;
#                        VOBASE_FUZZ_JOBS sets how many run at once (default: cores),
#                        build/fuzz/history.txt keeps every finished run's totals
#
# Missing Debian packages are installed with apt-get when running as root;
# otherwise the exact apt-get line is printed and the script stops.
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake ninja-build g++ pkg-config zlib1g-dev liblzma-dev nlohmann-json3-dev libgtest-dev libgmock-dev
          libbenchmark-dev libboost-graph-dev libtbb-dev libasio-dev libzstd-dev xz-utils python3)

ensure_packages() {
    local missing=()
    for p in "${PACKAGES[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -eq 0 ]; then
        echo "Installing: ${missing[*]}"
        apt-get update -qq
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
    else
        echo "Missing packages. Run:"
        echo "  sudo apt-get install -y ${missing[*]}"
        exit 1
    fi
}

build() {
    cmake --preset release >/dev/null
    cmake --build --preset release
}

# Runs every named fuzz target (all when none is named) for a fixed time, as
# many at once as there are cores. New corpus entries go to
# build/fuzz/corpus/<target>, findings to build/fuzz/crashes/<target>,
# libFuzzer's output to build/fuzz/logs/<target>.log. A finding fails the run
# and is printed as a hex dump.
fuzz_target() {
    local target=$1 seconds=$2 out=build/fuzz
    mkdir -p "$out/corpus/$target" "$out/crashes/$target" "$out/logs"
    "$out/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=512 \
        -print_final_stats=1 -artifact_prefix="$out/crashes/$target/" \
        "$out/corpus/$target" "$out/seeds/$target" >"$out/logs/$target.log" 2>&1
}

fuzz() {
    local seconds=60
    if [[ "${1:-}" =~ ^[0-9]+$ ]]; then seconds=$1; shift; fi
    cmake --preset fuzz >/dev/null
    cmake --build --preset fuzz
    local out=build/fuzz
    local targets=("$@")
    if [ ${#targets[@]} -eq 0 ]; then
        for program in "$out"/fuzz/fuzz_*; do
            name=${program##*/fuzz_}
            [ "$name" = seeds ] || targets+=("$name")
        done
    fi
    rm -rf "$out/seeds" "$out/status"
    mkdir -p "$out/status"
    "$out/fuzz/fuzz_seeds" "$out/seeds" "${targets[@]}" >/dev/null
    local jobs
    jobs=${VOBASE_FUZZ_JOBS:-$(nproc)}
    echo "Fuzzing ${#targets[@]} targets for $seconds s each, $jobs at a time"
    for target in "${targets[@]}"; do
        while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n || true; done
        ( if fuzz_target "$target" "$seconds"; then echo 0; else echo 1; fi >"$out/status/$target" ) &
    done
    wait
    local failed=0
    for target in "${targets[@]}"; do
        local log="$out/logs/$target.log"
        if [ "$(cat "$out/status/$target")" = 0 ]; then
            local done_line
            done_line=$(grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -1)
            echo "$target: $done_line"
            echo "$(date -u +%FT%TZ) $target ${seconds}s $done_line" >>"$out/history.txt"
            continue
        fi
        failed=1
        echo "$target: FINDING (see $log)"
        grep -E 'ERROR|SUMMARY|terminate|what\(\)' "$log" | head -5 || true
        for artifact in "$out/crashes/$target"/*; do
            [ -f "$artifact" ] || continue
            echo "--- $artifact ($(stat -c %s "$artifact") bytes)"
            od -An -tx1 -v "$artifact" | head -64
        done
    done
    return $failed
}

case "${1:-}" in
    demo)
        ensure_packages
        build
        ./build/release/apps/vobase-demo/vobase-demo --dot build/release/vobase-demo-tasks.dot
        ;;
    examples)
        ensure_packages
        cmake --preset release >/dev/null
        mapfile -t targets < <(sed -n 's/^  \([a-z_]*\) .*"$/example_\1/p' examples/CMakeLists.txt)
        cmake --build --preset release --target "${targets[@]}"
        for target in "${targets[@]}"; do
            echo "=== $target"
            "./build/release/examples/$target"
        done
        ;;
    docs)
        ensure_packages doxygen graphviz
        out=build/docs
        rm -rf "$out" && mkdir -p "$out"
        VOBASE_DOCS_OUTPUT="$out" VOBASE_VERSION="$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' CMakeLists.txt)" \
            doxygen docs/Doxyfile
        # Every warning counts, an undocumented public class or member first of all.
        warnings=$(sed -E "s|^$PWD/||; s|:[0-9]+: warning: | |" "$out/warnings.log" | LC_ALL=C sort -u)
        echo "API reference: $out/html/index.html"
        if [ -n "$warnings" ]; then
            echo "$(grep -c . <<<"$warnings") warnings (document every public class and member):"
            head -100 <<<"$warnings"
            if [ "${2:-}" = "--strict" ]; then exit 1; fi
        fi
        ;;
    package)
        ensure_packages dpkg-dev
        build
        rm -rf build/release/packages
        (cd build/release && cpack -G DEB)
        ;;
    test)
        ensure_packages
        build
        ctest --preset release -j "$(nproc)"
        ;;
    bench)
        ensure_packages
        build
        shift
        for b in build/release/bench/bench_*; do
            [ -x "$b" ] && "$b" --benchmark_enable_random_interleaving=true --benchmark_repetitions=3 \
                --benchmark_report_aggregates_only=true "$@"
        done
        ;;
    report)
        ensure_packages python3-matplotlib
        build
        # Not in the default build: the trace benchmark built without hook points, its peer.
        cmake --build --preset release --target bench_trace_nohooks
        # Debian's interpreter: python3-matplotlib is installed for it.
        /usr/bin/python3 bench/report.py --build build/release "${@:2}"
        ;;
    timeline)
        ensure_packages python3-matplotlib
        cmake --preset release >/dev/null
        cmake --build --preset release --target vobase-demo
        trace=build/release/vobase-demo-trace.json
        ./build/release/apps/vobase-demo/vobase-demo --dot build/release/vobase-demo-tasks.dot --trace "$trace"
        python3 tools/trace_check.py "$trace"
        # Debian's interpreter: python3-matplotlib is installed for it.
        /usr/bin/python3 tools/trace_timeline.py "$trace" docs/trace-demo.png
        ;;
    fuzz)
        ensure_packages clang libclang-rt-14-dev
        shift
        fuzz "$@"
        ;;
    *)
        sed -n '2,18p' "$0"
        exit 2
        ;;
esac
