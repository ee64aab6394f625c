#!/bin/bash
# Time to the first video frame on screen: VelmarPlayer against the mpv command-line player, in
# the same run, measured the same way.
#
#   bench/first_frame.sh BUILD_DIR [--runs N] [--pointer over|outside]
#
# (default: 5 runs of each player, the pointer resting where the window will appear)
#
# first_frame_probe (built here from bench/first_frame_probe.c with the build's CMake) starts the
# player itself, so the clock starts at the fork, then reads a small square in the middle of the
# player's window off the screen every 5 ms until it shows the test video's colour. The video
# is one flat colour (with a little grain, so the decoder has real work), bright orange, a
# colour neither player shows of its own accord. Each run also reports when the window was
# first seen mapped.
#
# Every start has fresh settings; caches are kept, as on a user's machine, and one start of each
# player before the timed ones warms them and the page cache. The order alternates from run to
# run. "busy" is how much of the machine other work took in the second before a run; more than
# a few % means the runs competed for the CPU.
set -euo pipefail
source "$(dirname "$0")/bench_session.sh"

RUNS=5

# Options come after BUILD_DIR; they are checked before anything starts.
parse_options()
{
    while (($#)); do
        (($# >= 2)) || bench_die "$1 needs a value"
        case $1 in
        --runs) RUNS=${2:-}; shift 2 ;;
        --pointer) bench_pointer_option "${2:-}"; shift 2 ;;
        *) bench_die "unknown option $1" ;;
        esac
    done
}
parse_options "${@:2}"
[[ $RUNS =~ ^[1-9][0-9]*$ ]] || bench_die "--runs takes a positive number"

bench_setup "$@"
bench_require cmake:cmake

PROBE="$BUILD/bench/first_frame_probe"
if ! cmake --build "$BUILD" --target first_frame_probe >"$BENCH_TMP/probe-build.log" 2>&1; then
    cat "$BENCH_TMP/probe-build.log" >&2
    bench_die "could not build first_frame_probe in $BUILD (needs libx11-dev and a build configured with VELMAR_BUILD_BENCH=ON)"
fi
[[ -x $PROBE ]] || bench_die "$PROBE missing after building it"

COLOUR=f09020
bench_media bench-first-frame-$COLOUR.mp4 \
    -f lavfi -i "color=c=0x$COLOUR:size=1920x1080:rate=30:duration=10,noise=alls=8:allf=u,format=yuv420p" \
    -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=10" \
    -ac 2 -c:v libx264 -preset fast -crf 20 -g 60 -c:a aac -b:a 128k -movflags +faststart

# Share of the whole machine (all cores) that was busy over the next second, in %.
machine_busy_pct()
{
    local before after
    before=$(bench_system_ticks)
    sleep 1
    after=$(bench_system_ticks)
    awk -v t="$((after - before))" -v hz="$BENCH_TICKS_PER_S" -v n="$(nproc)" \
        'BEGIN { printf "%.0f", t / hz / n * 100 }'
}

# time_one NAME: one timed start; sets FRAME_S and WINDOW_S.
time_one()
{
    local name=$1 out
    local command=(mpv --no-config --vo=gpu --gpu-sw --geometry=1280x720 "$MEDIA")
    [[ $name == velmar ]] && command=("$PLAYER" "$MEDIA")
    bench_fresh_home "$name"
    # Both players centre their window on the screen.
    if [[ $BENCH_POINTER == over ]]; then
        local width=${BENCH_SCREEN%%x*} height=${BENCH_SCREEN#*x}
        height=${height%%x*}
        bench_pointer_to $((width / 2)) $((height / 2))
    else
        bench_pointer_to 0 0
    fi
    if ! out=$("$PROBE" --colour "$COLOUR" --timeout 20 --output "$BENCH_TMP/$name.log" \
        -- "${command[@]}"); then
        bench_die "no first frame from $name: $(tail -5 "$BENCH_TMP/$name.log")"
    fi
    FRAME_S=$(sed -n 's/.*first_frame_s=\([0-9.]*\).*/\1/p' <<<"$out")
    WINDOW_S=$(sed -n 's/.*window_s=\([0-9.-]*\).*/\1/p' <<<"$out")
}

label()
{
    case $1 in velmar) echo VelmarPlayer ;; *) echo "$1" ;; esac
}

echo "First frame: $(basename "$MEDIA") in a 1280x720 window, $RUNS runs each, pointer $BENCH_POINTER"
echo "machine: $(nproc) cores, load average $(bench_load) at start"
time_one velmar
warm=$FRAME_S
time_one mpv
printf 'warm-up (not counted): VelmarPlayer %.3f s, mpv %.3f s\n' "$warm" "$FRAME_S"

declare -A FRAMES
for ((run = 1; run <= RUNS; run++)); do
    if ((run % 2)); then order=(velmar mpv); else order=(mpv velmar); fi
    line=""
    for name in "${order[@]}"; do
        busy=$(machine_busy_pct)
        time_one "$name"
        FRAMES[$name]+="$FRAME_S "
        line+=$(printf '  %-12s %.3f s (window %.3f s, busy %2s%%)' "$(label "$name")" "$FRAME_S" "$WINDOW_S" "$busy")
    done
    echo "run $run$line"
done

# shellcheck disable=SC2086 # space-separated numbers
{
    v=$(bench_median ${FRAMES[velmar]})
    m=$(bench_median ${FRAMES[mpv]})
}
range()
{
    printf '%s\n' "$@" | sort -g | awk 'NR == 1 { lo = $1 } { hi = $1 } END { printf "%.3f-%.3f", lo, hi }'
}

echo "median of $RUNS runs"
# shellcheck disable=SC2086 # space-separated numbers
{
    printf '  %-12s %.3f s  (range %s s)\n' VelmarPlayer "$v" "$(range ${FRAMES[velmar]})"
    printf '  %-12s %.3f s  (range %s s)\n' mpv "$m" "$(range ${FRAMES[mpv]})"
}
printf '  VelmarPlayer/mpv: x%s (%+.0f ms)\n' "$(bench_ratio "$v" "$m")" \
    "$(awk -v a="$v" -v b="$m" 'BEGIN { print (a - b) * 1000 }')"
echo "load average $(bench_load) at end"
