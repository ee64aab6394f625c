#!/bin/bash
# What playing a video costs: VelmarPlayer against the mpv command-line player, in the same run,
# on the same 1080p30 H.264 file shown in a 1280x720 window.
#
#   bench/playback_cost.sh BUILD_DIR [--rounds N] [--pointer over|outside|moving]
#                          [--window main|pip]
#
# (default: 3 rounds, the pointer resting over the middle of the window)
#
# Each round starts each player once (the order alternates between rounds), lets it play for
# 20 s and reports:
#   cpu      CPU time of the whole process, all threads, from second 3 to second 20 after the
#            start, as % of one core (so up to 200 on two cores)
#   peak     peak resident memory (VmHWM) at second 20
#   xserver  what the X server spent meanwhile (it copies every presented frame), % of a core
#   others   everything else the machine ran meanwhile; more than a few % means the players
#            competed for the CPU and the round should be repeated
#   pos      playback position at second 20, to show the player really played
#   scene frames/s  (VelmarPlayer) Qt Quick frames drawn over the same seconds, from
#            QSG_RENDER_TIMING=1: about the video's 30 when only the video changes
# then the medians and the ratios VelmarPlayer / mpv.
#
# Both players draw with OpenGL on Mesa's software renderer (mpv: --vo=gpu --gpu-sw), decode in
# software and have no sound device (see bench_session.sh). The pointer is moved over the middle
# of the window as soon as it is mapped and then left alone (--pointer outside: it stays in the
# screen's corner; --pointer moving: it keeps nudging, so both players keep their controls up).
# With --window pip, VelmarPlayer plays in its picture-in-picture window (Ctrl+P as soon as its
# main window is up; a quarter of the screen wide) while mpv keeps its 1280x720 window.
# The test file is made once in BUILD_DIR/bench/media.
set -euo pipefail
source "$(dirname "$0")/bench_session.sh"

ROUNDS=3
WINDOW=main

# Options come after BUILD_DIR; they are checked before anything starts.
parse_options()
{
    while (($#)); do
        (($# >= 2)) || bench_die "$1 needs a value"
        case $1 in
        --rounds) ROUNDS=${2:-}; shift 2 ;;
        --pointer) bench_pointer_option "${2:-}"; shift 2 ;;
        --window) WINDOW=${2:-}; shift 2 ;;
        *) bench_die "unknown option $1" ;;
        esac
    done
}
parse_options "${@:2}"
[[ $ROUNDS =~ ^[1-9][0-9]*$ ]] || bench_die "--rounds takes a positive number"
[[ $WINDOW == main || $WINDOW == pip ]] || bench_die "--window takes 'main' or 'pip'"

bench_setup "$@"
bench_require playerctl:playerctl python3:python3

WARMUP_S=3
MEASURED_UNTIL_S=20

bench_media bench-1080p30-h264.mp4 \
    -f lavfi -i "testsrc2=size=1920x1080:rate=30:duration=30" \
    -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=30" \
    -ac 2 -c:v libx264 -preset fast -crf 20 -pix_fmt yuv420p -g 60 \
    -c:a aac -b:a 128k -movflags +faststart

# mpv_property SOCKET NAME: one property over mpv's JSON IPC.
mpv_property()
{
    python3 - "$1" "$2" <<'EOF'
import json, socket, sys
sock = socket.socket(socket.AF_UNIX)
sock.settimeout(2)
sock.connect(sys.argv[1])
sock.sendall((json.dumps({"command": ["get_property", sys.argv[2]], "request_id": 1}) + "\n").encode())
buffer = b""
while True:
    chunk = sock.recv(65536)
    if not chunk:
        break
    buffer += chunk
    for line in buffer.split(b"\n"):
        if not line.strip():
            continue
        reply = json.loads(line)
        if reply.get("request_id") == 1:
            print(reply.get("data") if reply.get("error") == "success" else "?")
            sys.exit(0)
EOF
}

# run_one NAME: plays the file once in NAME (velmar or mpv); appends "cpu peak" to the results.
declare -A CPU PEAK
run_one()
{
    local name=$1 log="$BENCH_TMP/$1.log" socket="$BENCH_TMP/mpv.sock" before after
    local pid pos extra=""
    bench_fresh_home "$name"
    bench_pointer_to 0 0
    case $name in
    velmar) QSG_RENDER_TIMING=1 bench_launch "$log" "$PLAYER" "$MEDIA" ;;
    mpv)
        rm -f "$socket"
        bench_launch "$log" mpv --no-config --vo=gpu --gpu-sw --geometry=1280x720 \
            --input-ipc-server="$socket" "$MEDIA"
        ;;
    esac
    pid=$LAUNCHED_PID
    if [[ $BENCH_POINTER != outside ]]; then
        local centre
        centre=$(bench_window_centre "$pid") || bench_die "no window from $name: $(tail -5 "$log")"
        # shellcheck disable=SC2086 # "X Y"
        bench_pointer_to $centre
        [[ $BENCH_POINTER == moving ]] && bench_pointer_wander
    fi
    if [[ $name == velmar && $WINDOW == pip ]]; then
        bench_window_centre "$pid" >/dev/null || bench_die "no window from $name: $(tail -5 "$log")"
        local window
        window=$(xdotool search --onlyvisible --pid "$pid" | tail -1)
        { xdotool windowactivate --sync "$window" && xdotool key ctrl+p; } 2>/dev/null ||
            bench_die "could not press Ctrl+P in VelmarPlayer's window"
        timeout 5 xdotool search --sync --onlyvisible --name "Picture in Picture" >/dev/null ||
            bench_die "Ctrl+P opened no floating window: $(tail -5 "$log")"
    fi
    bench_sleep_until "$(bench_add "$LAUNCHED_AT" "$WARMUP_S")"
    before=$(bench_sample "$pid") || bench_die "$name exited early: $(tail -5 "$log")"
    local frames_before frames_after
    frames_before=$(bench_frame_count "$log")
    bench_sleep_until "$(bench_add "$LAUNCHED_AT" "$MEASURED_UNTIL_S")"
    after=$(bench_sample "$pid") || bench_die "$name exited early: $(tail -5 "$log")"
    frames_after=$(bench_frame_count "$log")
    local peak
    peak=$(bench_hwm_mb "$pid")
    bench_pointer_rest
    case $name in
    velmar)
        [[ $(playerctl -p velmarplayer status 2>/dev/null) == Playing ]] ||
            bench_die "VelmarPlayer is not playing at second $MEASURED_UNTIL_S: $(tail -5 "$log")"
        pos=$(playerctl -p velmarplayer position 2>/dev/null || echo "?")
        extra=$(awk -v f="$((frames_after - frames_before))" -v s="$((MEASURED_UNTIL_S - WARMUP_S))" \
            'BEGIN { printf "  scene frames/s %.1f", f / s }')
        ;;
    mpv)
        pos=$(mpv_property "$socket" time-pos || echo "?")
        local dropped_vo dropped_decoder
        dropped_vo=$(mpv_property "$socket" frame-drop-count || echo "?")
        dropped_decoder=$(mpv_property "$socket" decoder-frame-drop-count || echo "?")
        extra="  dropped $dropped_vo+$dropped_decoder"
        ;;
    esac
    bench_stop "$pid"
    [[ $pos =~ ^[0-9]+(\.[0-9]+)?$ ]] || pos=-1
    read -r cpu xserver others <<<"$(bench_usage "$before" "$after")"
    if awk -v p="$pos" -v t="$MEASURED_UNTIL_S" 'BEGIN { exit !(p + 0 < t - 4) }'; then
        echo "  warning: $name was only at ${pos} s after $MEASURED_UNTIL_S s: it stalled or started slowly" >&2
    fi
    printf '  %-12s cpu %6.1f%%  peak %7.1f MB  xserver %5.1f%%  others %5.1f%%  pos %5.1f s%s\n' \
        "$(label "$name")" "$cpu" "$peak" "$xserver" "$others" "$pos" "$extra"
    CPU[$name]+="$cpu "
    PEAK[$name]+="$peak "
}

label()
{
    case $1 in velmar) echo VelmarPlayer ;; *) echo "$1" ;; esac
}

echo "Playback cost: $(basename "$MEDIA"), 1280x720 window (VelmarPlayer: $WINDOW window), CPU over seconds $WARMUP_S-$MEASURED_UNTIL_S, pointer $BENCH_POINTER"
echo "machine: $(nproc) cores, load average $(bench_load) at start"
for ((round = 1; round <= ROUNDS; round++)); do
    echo "round $round (load average $(bench_load))"
    if ((round % 2)); then order=(velmar mpv); else order=(mpv velmar); fi
    for name in "${order[@]}"; do
        run_one "$name"
    done
done

# shellcheck disable=SC2086 # the lists are space-separated numbers
{
    v_cpu=$(bench_median ${CPU[velmar]}) m_cpu=$(bench_median ${CPU[mpv]})
    v_peak=$(bench_median ${PEAK[velmar]}) m_peak=$(bench_median ${PEAK[mpv]})
}
echo "median of $ROUNDS rounds"
printf '  %-12s cpu %6.1f%%  peak %7.1f MB\n' VelmarPlayer "$v_cpu" "$v_peak"
printf '  %-12s cpu %6.1f%%  peak %7.1f MB\n' mpv "$m_cpu" "$m_peak"
printf '  VelmarPlayer/mpv: cpu x%s, memory %+.1f MB (x%s)\n' \
    "$(bench_ratio "$v_cpu" "$m_cpu")" "$(awk -v a="$v_peak" -v b="$m_peak" 'BEGIN { print a - b }')" \
    "$(bench_ratio "$v_peak" "$m_peak")"
echo "load average $(bench_load) at end"
