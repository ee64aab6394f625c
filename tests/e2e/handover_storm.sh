#!/usr/bin/env bash
# Files handed to a running player the way a desktop hands them: later launches of the player
# in quick succession, two at once, each with one to three files (some broken, one an image),
# while the desktop's media controls seek. The player must stay up through every hand-over and
# end on the file handed over last, playing it with its own length.
# Needs an X display and a session bus (the suite provides both).
#   handover_storm.sh PLAYER FIXTURE_DIR [HAND_OVERS]
set -euo pipefail
player=$1
fixtures=$(cd "$2" && pwd)
hand_overs=${3:-200}

work=$(mktemp -d)
pid=
trap 'kill $pid 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
# See desktop_session.sh: leaks are the unit tests' to find.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
log=$work/player.log

fail() { echo "FAIL: $*"; echo "--- last lines of the player log"; tail -30 "$log"; exit 1; }

mpris() { playerctl -p velmarplayer "$@" 2>/dev/null || true; }
eventually() {
  for _ in $(seq 200); do [ "$("${@:2}")" = "$1" ] && return 0; sleep 0.1; done
  return 1
}

# Ends the test when the player is gone, saying how it ended.
expect_alive() {
  kill -0 "$pid" 2>/dev/null && return 0
  local status=0
  wait "$pid" || status=$?
  pid=
  [ "$status" -gt 128 ] && fail "the player died of signal $((status - 128)) after $1 hand-overs"
  fail "the player exited with status $status after $1 hand-overs"
}

files=(clip10.mp4 clip30.mp4 clip60.mp4 tracks.mkv audio-only.m4a truncated.mp4 still.png)
pick() { echo "$fixtures/${files[RANDOM % ${#files[@]}]}"; }
RANDOM=1123 # the same storm every run

"$player" "$fixtures/clip10.mp4" >"$log" 2>&1 &
pid=$!
eventually Playing mpris status || fail "the player did not start playing clip10"

started=$SECONDS
done_count=0
while [ "$done_count" -lt "$hand_overs" ]; do
  launches=()
  for _ in 1 2; do
    batch=()
    for _ in $(seq $((1 + RANDOM % 3))); do batch+=("$(pick)"); done
    # A launch that finds no player to hand over to becomes one: bounded, so the test ends.
    timeout 15 "$player" "${batch[@]}" >>"$work/launches.log" 2>&1 &
    launches+=($!)
  done
  # The desktop seeks while the files arrive: to a place, and by an offset.
  mpris position $((RANDOM % 8))
  mpris position "$((RANDOM % 5)).5+"
  for launch in "${launches[@]}"; do
    wait "$launch" || { expect_alive "$done_count"; fail "a later launch exited with status $?"; }
    done_count=$((done_count + 1))
  done
  expect_alive "$done_count"
done
echo "ok: $done_count hand-overs in $((SECONDS - started)) s, the player is still up"

# The last hand-over wins: its file plays, with its own length.
timeout 15 "$player" "$fixtures/clip60.mp4" >>"$work/launches.log" 2>&1 ||
  fail "the last launch exited $?"
eventually clip60 mpris metadata title || fail "the player ended on \"$(mpris metadata title)\""
eventually Playing mpris status || fail "clip60 is \"$(mpris status)\", not playing"
length=$(mpris metadata mpris:length)
[ "$length" -ge 59500000 ] && [ "$length" -le 60500000 ] || fail "clip60 has the length $length"
expect_alive "$((done_count + 1))"
echo "ok: the player ends on the last file handed over"
