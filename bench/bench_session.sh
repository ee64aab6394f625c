# Shared by the player benchmarks (playback_cost.sh, first_frame.sh, idle_cost.sh); sourced,
# not run. It gives every benchmark the same stage: a private D-Bus session bus, a private Xvfb
# screen with openbox managing the windows, no sound server and no sound card, and fresh
# settings for every start of a player. Whatever it starts is stopped when the script exits,
# however it exits.

BENCH_SCREEN="1920x1080x24"
BENCH_PIDS=()
BENCH_XVFB_PID=
BENCH_TICKS_PER_S=$(getconf CLK_TCK)

bench_die()
{
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# bench_require TOOL:PACKAGE... fails naming the Debian package of every missing tool.
bench_require()
{
    local missing=() item
    for item in "$@"; do
        command -v "${item%%:*}" >/dev/null 2>&1 ||
            missing+=("${item%%:*} (apt-get install ${item#*:})")
    done
    if ((${#missing[@]})); then
        printf '%s: missing tools:\n' "$(basename "$0")" >&2
        printf '  %s\n' "${missing[@]}" >&2
        exit 1
    fi
}

# bench_setup BUILD_DIR: checks the tools every benchmark needs, restarts the calling script
# inside its own session bus (so the player's single-instance name and its MPRIS service are
# private to the run), then starts the screen. Sets BUILD, PLAYER and BENCH_TMP.
# The caller passes its whole command line; options after BUILD_DIR are the caller's own.
bench_setup()
{
    [[ $# -ge 1 && -d $1 ]] || bench_die "usage: $0 BUILD_DIR [OPTIONS]  (e.g. $0 build; options are listed at the top of the script)"
    bench_require Xvfb:xvfb openbox:openbox xprop:x11-utils xdotool:xdotool \
        dbus-run-session:dbus-daemon mpv:mpv ffmpeg:ffmpeg awk:mawk
    if [[ -z ${VELMAR_BENCH_SESSION:-} ]]; then
        export VELMAR_BENCH_SESSION=1
        exec dbus-run-session -- bash "$(readlink -f "$0")" "$@"
    fi
    BUILD=$(cd "$1" && pwd)
    PLAYER="$BUILD/src/velmarplayer"
    [[ -x $PLAYER ]] || bench_die "$PLAYER not found: build the velmarplayer target first"
    BENCH_TMP=$(mktemp -d /tmp/velmar-bench.XXXXXX)
    trap bench_cleanup EXIT
    trap 'exit 130' INT TERM HUP
    bench_audio_off
    bench_start_display
}

bench_cleanup()
{
    local i
    # Runs on every exit, including one caused by a failed command: nothing may stop it early.
    set +e
    # Newest first: the players, then openbox, then the X server.
    for ((i = ${#BENCH_PIDS[@]} - 1; i >= 0; i--)); do
        bench_stop "${BENCH_PIDS[i]}"
    done
    [[ -n ${BENCH_TMP:-} ]] && rm -rf "$BENCH_TMP"
}

# The player has no switch for a null audio output, so neither player gets a sound device: no
# sound server to find (a private runtime folder) and an ALSA configuration without devices.
# Both then play the picture alone, which is the same work for each, here and on a machine
# that has a sound card.
bench_audio_off()
{
    unset PULSE_SERVER PULSE_RUNTIME_PATH PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR JACK_DEFAULT_SERVER
    mkdir -m 700 "$BENCH_TMP/runtime"
    export XDG_RUNTIME_DIR="$BENCH_TMP/runtime"
    : >"$BENCH_TMP/asound.conf"
    export ALSA_CONFIG_PATH="$BENCH_TMP/asound.conf"
}

# Our own Xvfb rather than xvfb-run, so the display is the one the server picked and the server
# is certainly stopped with the script. -br: a black root window, not the stipple pattern.
bench_start_display()
{
    local fifo="$BENCH_TMP/displayfd" display
    mkfifo "$fifo"
    Xvfb -displayfd 3 -screen 0 "$BENCH_SCREEN" -br -nolisten tcp -noreset 3>"$fifo" \
        >"$BENCH_TMP/xvfb.log" 2>&1 &
    BENCH_XVFB_PID=$!
    BENCH_PIDS+=("$BENCH_XVFB_PID")
    read -r -t 20 display <"$fifo" ||
        bench_die "Xvfb did not start: $(tail -3 "$BENCH_TMP/xvfb.log")"
    export DISPLAY=":$display"
    unset WAYLAND_DISPLAY
    export QT_QPA_PLATFORM=xcb

    openbox >"$BENCH_TMP/openbox.log" 2>&1 &
    BENCH_PIDS+=($!)
    for _ in {1..100}; do
        xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && return 0
        sleep 0.1
    done
    bench_die "openbox did not start: $(tail -3 "$BENCH_TMP/openbox.log")"
}

# bench_fresh_home NAME: empty settings and data folders, so no saved state (volume, window
# size, resume positions, history) carries from one start to the next. The cache folder is kept
# per NAME across starts, as on a user's machine: shader caches are warm after the first start.
bench_fresh_home()
{
    local home="$BENCH_TMP/home-$1"
    rm -rf "$home/config" "$home/data"
    mkdir -p "$home/config" "$home/data" "$home/cache"
    export XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache"
}

# bench_media NAME FFMPEG_ARGS...: makes $BUILD/bench/media/NAME once, sets MEDIA to its path.
bench_media()
{
    local name=$1 dir="$BUILD/bench/media"
    shift
    MEDIA="$dir/$name"
    [[ -s $MEDIA ]] && return 0
    mkdir -p "$dir"
    echo "making $MEDIA (once; takes a minute)..." >&2
    nice -n 10 ffmpeg -hide_banner -loglevel error -y "$@" -f mp4 "$MEDIA.part" ||
        bench_die "ffmpeg could not make $MEDIA"
    mv "$MEDIA.part" "$MEDIA"
}

# bench_launch LOG COMMAND...: starts a player in the background, stdout and stderr to LOG; sets
# LAUNCHED_PID and LAUNCHED_AT (seconds, from $EPOCHREALTIME).
bench_launch()
{
    local log=$1
    shift
    # shellcheck disable=SC2034 # read by the benchmarks
    LAUNCHED_AT=$EPOCHREALTIME
    "$@" >"$log" 2>&1 &
    LAUNCHED_PID=$!
    BENCH_PIDS+=("$LAUNCHED_PID")
}

# bench_stop PID: TERM, then KILL after 3 s; reaps it and forgets it.
bench_stop()
{
    local pid=$1 i
    if kill -TERM "$pid" 2>/dev/null; then
        for _ in {1..30}; do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$pid" 2>/dev/null || true
    fi
    wait "$pid" 2>/dev/null || true
    for i in "${!BENCH_PIDS[@]}"; do
        if [[ ${BENCH_PIDS[i]} == "$pid" ]]; then unset 'BENCH_PIDS[i]'; fi
    done
    BENCH_PIDS=("${BENCH_PIDS[@]}")
}

# bench_sleep_until T: sleeps until $EPOCHREALTIME reaches T.
bench_sleep_until()
{
    local pause
    pause=$(awk -v t="$1" -v now="$EPOCHREALTIME" 'BEGIN { d = t - now; printf "%.3f", (d > 0 ? d : 0) }')
    sleep "$pause"
}

bench_add()
{
    awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a + b }'
}

# Whole-process CPU time (all threads) in clock ticks.
bench_cpu_ticks()
{
    local stat fields
    stat=$(cat "/proc/$1/stat" 2>/dev/null) || return 1
    # The command name may hold spaces; the fields after it do not.
    stat=${stat##*) }
    read -r -a fields <<<"$stat"
    echo $((fields[11] + fields[12]))
}

# Busy time of the whole machine (all cores) in clock ticks.
bench_system_ticks()
{
    awk '/^cpu / { print $2 + $3 + $4 + $7 + $8 + $9; exit }' /proc/stat
}

# bench_sample PID: one line "time player_ticks xserver_ticks machine_ticks"; fails if PID is
# gone.
bench_sample()
{
    local player
    player=$(bench_cpu_ticks "$1") || return 1
    echo "$EPOCHREALTIME $player $(bench_cpu_ticks "$BENCH_XVFB_PID") $(bench_system_ticks)"
}

# bench_usage "SAMPLE_BEFORE" "SAMPLE_AFTER": "player_pct xserver_pct others_pct", each as % of
# one core. "others" is everything else the machine ran meanwhile: a figure well above a few %
# means the measurement competed for the two cores and should be repeated.
bench_usage()
{
    awk -v a="$1" -v b="$2" -v hz="$BENCH_TICKS_PER_S" 'BEGIN {
        split(a, x, " "); split(b, y, " ")
        s = y[1] - x[1]
        p = (y[2] - x[2]) / hz / s * 100
        v = (y[3] - x[3]) / hz / s * 100
        o = (y[4] - x[4]) / hz / s * 100 - p - v
        printf "%.1f %.1f %.1f", p, v, (o < 0 ? 0 : o) }'
}

bench_hwm_mb()
{
    awk '/^VmHWM:/ { printf "%.1f", $2 / 1024 }' "/proc/$1/status"
}

# bench_frame_count LOG: Qt Quick scene frames a player started with QSG_RENDER_TIMING=1 has
# drawn so far: one line per frame from the threaded render loop (the player's default), or
# from the single-threaded loops if QSG_RENDER_LOOP chose one.
bench_frame_count()
{
    grep -cE 'syncAndRender: frame rendered in|Frame rendered with' "$1" || true
}

bench_load()
{
    cut -d' ' -f1-3 /proc/loadavg
}

# bench_median NUMBER...
bench_median()
{
    printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END {
        if (NR == 0) exit 1
        if (NR % 2) printf "%.3f\n", v[(NR + 1) / 2]
        else printf "%.3f\n", (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# bench_ratio A B [DIGITS]
bench_ratio()
{
    awk -v a="$1" -v b="$2" -v d="${3:-2}" 'BEGIN { if (b == 0) print "n/a"; else printf "%.*f\n", d, a / b }'
}

# bench_pointer_to X Y: puts the mouse pointer at X,Y on the screen. Where the pointer rests
# changes what a player draws (hover effects, on-screen controls), so every measurement puts it
# somewhere on purpose.
bench_pointer_to()
{
    xdotool mousemove "$1" "$2" || bench_die "xdotool could not move the pointer"
}

# Where the pointer rests while a player runs, for the benchmarks that take --pointer: "over"
# the middle of its window (as in full screen, or after opening a file with the mouse),
# "outside" it, in the screen's corner, or "moving" over the middle, a pixel to and fro every
# half second, which keeps each player's on-screen controls up.
# shellcheck disable=SC2034 # read by the benchmarks
BENCH_POINTER=over
bench_pointer_option()
{
    # shellcheck disable=SC2034 # read by the benchmarks
    case $1 in
    over | outside | moving) BENCH_POINTER=$1 ;;
    *) bench_die "--pointer takes 'over', 'outside' or 'moving', not '$1'" ;;
    esac
}

# bench_pointer_wander: for --pointer moving, nudges the pointer in the background until
# bench_pointer_rest; sets BENCH_WANDER_PID.
bench_pointer_wander()
{
    (
        while true; do
            xdotool mousemove_relative -- 1 0
            sleep 0.5
            xdotool mousemove_relative -- -1 0
            sleep 0.5
        done
    ) >/dev/null 2>&1 &
    BENCH_WANDER_PID=$!
    BENCH_PIDS+=("$BENCH_WANDER_PID")
}

bench_pointer_rest()
{
    [[ -n ${BENCH_WANDER_PID:-} ]] && bench_stop "$BENCH_WANDER_PID"
    BENCH_WANDER_PID=
}

# bench_window_centre PID: "X Y" of the middle of PID's top-level window, once it is mapped and
# the window manager has stopped moving it (two equal readings in a row).
bench_window_centre()
{
    local window geometry centre last=""
    for _ in {1..100}; do
        kill -0 "$1" 2>/dev/null || return 1
        window=$(xdotool search --onlyvisible --pid "$1" 2>/dev/null | tail -1 || true)
        if [[ -n $window ]] && geometry=$(xdotool getwindowgeometry --shell "$window" 2>/dev/null); then
            eval "$geometry"
            centre="$((X + WIDTH / 2)) $((Y + HEIGHT / 2))"
            [[ $centre == "$last" ]] && echo "$centre" && return 0
            last=$centre
        fi
        sleep 0.2
    done
    return 1
}
