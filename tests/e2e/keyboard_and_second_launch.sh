#!/usr/bin/env bash
# The player as a user meets it: started on a file, driven with real X key presses, then handed
# another file by a second launch. Needs an X display and a session bus (the suite provides both).
#   keyboard_and_second_launch.sh PLAYER FIXTURE_DIR
set -euo pipefail
player=$1
fixtures=$2

work=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
log=$work/player.log

fail() { echo "FAIL: $*"; echo "--- player log"; cat "$log"; exit 1; }

# Waits up to 20 s for a line in the player's log.
expect_line() {
  for _ in $(seq 200); do
    grep -qF -- "$1" "$log" && return 0
    sleep 0.1
  done
  fail "no log line \"$1\""
}

# How many on-screen messages so far contained the text.
shown() { grep -F -- "[OSDManager] " "$log" | grep -cF -- "$1" || true; }

# Presses a key and waits for the message the player shows for it.
press() {
  local key=$1 message=$2
  local before
  before=$(shown "$message")
  xdotool key --clearmodifiers "$key"
  for _ in $(seq 100); do
    [ "$(shown "$message")" -gt "$before" ] && { echo "ok: $key -> $message"; return 0; }
    sleep 0.1
  done
  fail "pressing $key did not show \"$message\""
}

"$player" "$fixtures/clip30.mp4" >"$log" 2>&1 &
pid=$!

window=$(timeout 20 xdotool search --sync --name "clip30")  || fail "no player window"
window=$(echo "$window" | head -1)
expect_line "[MPVDecoder] Render context created successfully"
sleep 1.5 # the file is playing
xdotool windowfocus --sync "$window"

# The desktop's media controls see the same state over MPRIS.
status() { playerctl -p velmarplayer status 2>/dev/null || true; }
expect_status() {
  for _ in $(seq 50); do [ "$(status)" = "$1" ] && return 0; sleep 0.1; done
  fail "MPRIS status is \"$(status)\", not $1"
}

press space "Paused"
expect_status Paused
press space "Playing"
expect_status Playing
press Right " / 00:30"
press Down "Volume: 95%"
press Up "Volume: 100%"
press m "Muted"
press m "Unmuted"
press r "1.2x"
press ctrl+k "Rotation: 90°"

# A second launch hands its file over and leaves.
HOME=$work "$player" "$fixtures/clip10.mp4" >"$work/second.log" 2>&1 || fail "second launch exited $?"
timeout 20 xdotool search --sync --name "clip10" >/dev/null || fail "the first player did not switch to clip10"
kill -0 "$pid" || fail "the first player is gone"
echo "ok: second launch handed clip10.mp4 over and exited 0"
