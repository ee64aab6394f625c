#!/usr/bin/env bash
# Files handed to a running player the way a desktop hands them: 200 later launches in quick
# succession, two at once, each with one to three files (some broken, one an image), while the
# desktop's media controls seek. The player must outlive them all and end on the file handed
# over last, playing it with its own length and from where it was left. Needs an X display and
# a session bus.
#   handover_storm.sh PLAYER FIXTURE_DIR [HAND_OVERS]
set -euo pipefail
player=$1
fixtures=$(cd "$2" && pwd)
hand_overs=${3:-200}

work=$(mktemp -d) pid=
trap 'kill $pid 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0" # see desktop_session.sh
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
log=$work/player.log

fail() { echo "FAIL: $*"; echo "--- last lines of the player log"; tail -30 "$log"; exit 1; }
mpris() { playerctl -p velmarplayer "$@" 2>/dev/null || true; }
eventually() { for _ in $(seq 200); do [ "$("${@:2}")" = "$1" ] && return 0; sleep 0.1; done; return 1; }
# A launch that finds no player to hand over to becomes one: bounded, so the test ends.
launch() { timeout 15 "$player" "$@" >>"$work/launches.log" 2>&1; }

# Ends the test when the player is gone, saying how it ended.
expect_alive() {
  kill -0 "$pid" 2>/dev/null && return 0
  local status=0
  wait "$pid" || status=$?; pid=
  [ "$status" -gt 128 ] && fail "the player died of signal $((status - 128)) after $1 hand-overs"
  fail "the player exited with status $status after $1 hand-overs"
}

files=(clip10.mp4 clip30.mp4 clip60.mp4 tracks.mkv audio-only.m4a truncated.mp4 still.png)
RANDOM=1123 # the same storm every run
"$player" "$fixtures/clip10.mp4" >"$log" 2>&1 & pid=$!
eventually Playing mpris status || fail "the player did not start playing clip10"

started=$SECONDS count=0
while [ "$count" -lt "$hand_overs" ]; do
  launches=()
  for _ in 1 2; do
    batch=()
    for _ in $(seq $((1 + RANDOM % 3))); do batch+=("$fixtures/${files[RANDOM % ${#files[@]}]}"); done
    launch "${batch[@]}" &
    launches+=($!)
  done
  mpris position $((RANDOM % 8)) # the desktop seeks to a place, and by an offset
  mpris position "$((RANDOM % 5)).5+"
  for each in "${launches[@]}"; do
    wait "$each" || { expect_alive "$count"; fail "a later launch exited with status $?"; }
    count=$((count + 1))
  done
  expect_alive "$count"
done
echo "ok: $count hand-overs in $((SECONDS - started)) s, the player is still up"

launch "$fixtures/clip60.mp4" || fail "the last launch exited $?"
eventually clip60 mpris metadata title || fail "the player ended on \"$(mpris metadata title)\""
eventually Playing mpris status || fail "clip60 is \"$(mpris status)\", not playing"
length=$(mpris metadata mpris:length)
[ "$length" -ge 59500000 ] && [ "$length" -le 60500000 ] || fail "clip60 has the length $length"
echo "ok: the player ends on the last file handed over"

# Left at 33 s, it comes back there after other files came between, a broken one among them.
mpris position 33
launch "$fixtures/truncated.mp4" "$fixtures/tracks.mkv"
eventually tracks mpris metadata title || fail "the playlist did not go on past the broken file"
launch "$fixtures/clip60.mp4" || fail "the last launch exited $?"
eventually clip60 mpris metadata title || fail "clip60 did not come back"
awk -v at="$(mpris position)" 'BEGIN { exit !(at >= 32.5 && at < 40) }' ||
  fail "clip60 resumed at $(mpris position) s, not at 33 s"
echo "ok: clip60 resumed where it was left"

# What names no file absolutely is dropped, not guessed at: clip60 plays on.
dbus-send --session --print-reply --dest=org.velmar.VelmarPlayer /org/velmar/VelmarPlayer \
  org.velmar.VelmarPlayer.Open array:string:"clip10.mp4","relative/clip30.mp4" >/dev/null ||
  fail "the player did not answer Open"
sleep 1
[ "$(mpris metadata title)" = clip60 ] && [ "$(mpris status)" = Playing ] ||
  fail "relative names were opened: $(mpris metadata title) is $(mpris status)"
expect_alive "$((count + 1))"
echo "ok: relative names are ignored"
