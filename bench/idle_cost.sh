#!/bin/bash
# What the player costs while nothing moves: idle without a file, and with a file loaded and
# paused. VelmarPlayer, with the mpv command-line player in the same states for reference.
#
#   bench/idle_cost.sh BUILD_DIR [--rounds N]      (default 1 round)
#
# For each state the player is started fresh, left to settle, and measured for 10 s twice: first
# with the pointer resting outside the window, then resting (not moving) over its middle, since
# hover effects may keep a scene drawing. Reported per state:
#   cpu       CPU time of the whole process, all threads, as % of one core
#   frames/s  Qt Quick scene frames VelmarPlayer rendered, counted from the per-frame lines Qt
#             prints with QSG_RENDER_TIMING=1 (its render thread's "frame rendered in ... ms");
#             a still window should draw none
#   xserver   what the X server spent meanwhile, % of a core
#   others    everything else the machine ran meanwhile; more than a few % means the
#             measurement competed for the CPU and should be repeated
# The paused state is reached the way a desktop would do it: playback starts, then
# `playerctl pause` over MPRIS (mpv: started with --pause).
set -euo pipefail
source "$(dirname "$0")/bench_session.sh"

ROUNDS=1

# Options come after BUILD_DIR; they are checked before anything starts.
parse_options()
{
    while (($#)); do
        (($# >= 2)) || bench_die "$1 needs a value"
        case $1 in
        --rounds) ROUNDS=${2:-}; shift 2 ;;
        *) bench_die "unknown option $1" ;;
        esac
    done
}
parse_options "${@:2}"
[[ $ROUNDS =~ ^[1-9][0-9]*$ ]] || bench_die "--rounds takes a positive number"

bench_setup "$@"
bench_require playerctl:playerctl

SETTLE_S=5
MEASURE_S=10

bench_media bench-1080p30-h264.mp4 \
    -f lavfi -i "testsrc2=size=1920x1080:rate=30:duration=30" \
    -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=30" \
    -ac 2 -c:v libx264 -preset fast -crf 20 -pix_fmt yuv420p -g 60 \
    -c:a aac -b:a 128k -movflags +faststart

wait_for_status()
{
    local want=$1
    for _ in {1..100}; do
        [[ $(playerctl -p velmarplayer status 2>/dev/null) == "$want" ]] && return 0
        sleep 0.1
    done
    bench_die "VelmarPlayer did not reach '$want' over MPRIS: $(tail -5 "$BENCH_TMP/velmar.log")"
}

declare -A RESULT
# measure NAME STATE PID LOG: settles, measures, records "cpu frames_per_s xserver others".
measure()
{
    local name=$1 state=$2 pid=$3 log=$4 before after frames_before=0 frames_after=0
    sleep "$SETTLE_S"
    [[ $name == velmar ]] && frames_before=$(bench_frame_count "$log")
    before=$(bench_sample "$pid") || bench_die "$name exited: $(tail -5 "$log")"
    sleep "$MEASURE_S"
    after=$(bench_sample "$pid") || bench_die "$name exited: $(tail -5 "$log")"
    [[ $name == velmar ]] && frames_after=$(bench_frame_count "$log")
    local cpu xserver others fps=-
    read -r cpu xserver others <<<"$(bench_usage "$before" "$after")"
    if [[ $name == velmar ]]; then
        fps=$(awk -v f="$((frames_after - frames_before))" -v a="$before" -v b="$after" \
            'BEGIN { split(a, x, " "); split(b, y, " "); printf "%.1f", f / (y[1] - x[1]) }')
    fi
    RESULT["$state/$name"]+="$cpu:$fps:$xserver:$others "
}

# run_state NAME STATE: starts NAME in STATE (idle or paused), measures with the pointer outside
# and then over the window.
run_state()
{
    local name=$1 state=$2 log="$BENCH_TMP/$1.log" pid centre
    bench_fresh_home "$name"
    bench_pointer_to 0 0
    case $name/$state in
    velmar/idle) QSG_RENDER_TIMING=1 bench_launch "$log" "$PLAYER" ;;
    velmar/paused)
        QSG_RENDER_TIMING=1 bench_launch "$log" "$PLAYER" "$MEDIA"
        wait_for_status Playing
        playerctl -p velmarplayer pause || bench_die "playerctl could not pause VelmarPlayer"
        wait_for_status Paused
        ;;
    mpv/idle)
        bench_launch "$log" mpv --no-config --vo=gpu --gpu-sw --geometry=1280x720 \
            --idle=yes --force-window=yes
        ;;
    mpv/paused)
        bench_launch "$log" mpv --no-config --vo=gpu --gpu-sw --geometry=1280x720 --pause "$MEDIA"
        ;;
    esac
    pid=$LAUNCHED_PID
    bench_window_centre "$pid" >/dev/null || bench_die "no window from $name: $(tail -5 "$log")"
    if [[ $name == velmar ]] && (($(bench_frame_count "$log") == 0)); then
        sleep 2
        (($(bench_frame_count "$log") > 0)) ||
            bench_die "VelmarPlayer printed no QSG_RENDER_TIMING frame lines; cannot count frames"
    fi
    measure "$name" "$state, pointer outside" "$pid" "$log"
    centre=$(bench_window_centre "$pid") || bench_die "$name lost its window: $(tail -5 "$log")"
    # shellcheck disable=SC2086 # "X Y"
    bench_pointer_to $centre
    measure "$name" "$state, pointer over window" "$pid" "$log"
    if [[ $name == velmar && $state == paused ]]; then
        [[ $(playerctl -p velmarplayer status 2>/dev/null) == Paused ]] ||
            bench_die "VelmarPlayer left the paused state during the measurement"
    fi
    bench_stop "$pid"
}

# field N "a:b:c:d a:b:c:d ...": the Nth field of every entry, one a line.
field()
{
    local entry
    # shellcheck disable=SC2086 # the entries are space-separated on purpose
    for entry in $2; do
        cut -d: -f"$1" <<<"$entry"
    done
}

echo "Idle and paused cost, $MEASURE_S s windows after $SETTLE_S s to settle, 1280x720 windows"
echo "machine: $(nproc) cores, load average $(bench_load) at start"
for ((round = 1; round <= ROUNDS; round++)); do
    echo "round $round (load average $(bench_load))"
    for state in idle paused; do
        for name in velmar mpv; do
            run_state "$name" "$state"
        done
        for where in "pointer outside" "pointer over window"; do
            # This round's entry is the last one in each list.
            v=${RESULT["$state, $where/velmar"]% } m=${RESULT["$state, $where/mpv"]% }
            v=${v##* } m=${m##* }
            IFS=: read -r vc vf vx vo <<<"$v"
            IFS=: read -r mc _ mx mo <<<"$m"
            printf '  %-28s VelmarPlayer cpu %5.1f%%  frames/s %5.1f  xserver %4.1f%%  others %5.1f%%   |  mpv cpu %5.1f%%  xserver %4.1f%%  others %5.1f%%\n' \
                "$state, $where" "$vc" "$vf" "$vx" "$vo" "$mc" "$mx" "$mo"
        done
    done
done

if ((ROUNDS > 1)); then
    echo "median of $ROUNDS rounds"
    for state in idle paused; do
        for where in "pointer outside" "pointer over window"; do
            key="$state, $where"
            # shellcheck disable=SC2046 # lists of numbers
            printf '  %-28s VelmarPlayer cpu %5.1f%%  frames/s %5.1f   |  mpv cpu %5.1f%%\n' "$key" \
                "$(bench_median $(field 1 "${RESULT["$key/velmar"]}"))" \
                "$(bench_median $(field 2 "${RESULT["$key/velmar"]}"))" \
                "$(bench_median $(field 1 "${RESULT["$key/mpv"]}"))"
        done
    done
fi
echo "load average $(bench_load) at end"
