#!/usr/bin/env bash
# The player as a user meets it, under a window manager: started on a file, driven with real X
# key presses, ended by the desktop (SIGTERM, SIGINT, SIGHUP, MPRIS Quit), by a crash and by
# closing its window, each time keeping its place, floating its video in picture in picture,
# and handed a file named in bytes that are not UTF-8 by a later launch.
# Needs an X display and a session bus (the suite provides both).
#   desktop_session.sh PLAYER FIXTURE_DIR
set -euo pipefail
player=$1
fixtures=$2

work=$(mktemp -d)
pid=
wm=
trap 'kill $pid $wm 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
# In the sanitizer build the player's exit unloads Qt's platform plugin, the OpenGL driver and
# the audio back-ends libmpv probed; their one-off allocations can no longer be attributed then.
# Leaks in the player's own code are checked by the unit tests, which end players mid-work.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
library=$XDG_DATA_HOME/VelmarPlayer/velmarplayer.db
log=$work/player.log

fail() { echo "FAIL: $*"; echo "--- player log"; cat "$log"; exit 1; }

# Waits up to 20 s for a line in the player's log.
expect_line() {
  for _ in $(seq 200); do grep -qF -- "$1" "$log" && return 0; sleep 0.1; done
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

# The desktop's media controls see the same state over MPRIS.
status() { playerctl -p velmarplayer status 2>/dev/null || true; }
expect_status() {
  for _ in $(seq 50); do [ "$(status)" = "$1" ] && return 0; sleep 0.1; done
  fail "MPRIS status is \"$(status)\", not $1"
}

# Starts the player on a file and waits until the file plays in a focused window.
start() {
  : >"$log"
  "$player" "$1" >"$log" 2>&1 &
  pid=$!
  window=$(timeout 20 xdotool search --sync --name "$2" | head -1) || fail "no player window for $1"
  expect_status Playing
  xdotool windowactivate --sync "$window" 2>/dev/null || xdotool windowfocus --sync "$window"
}

# Waits for the player to end by itself within 3 s, with success.
expect_exit() {
  for _ in $(seq 30); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
  kill -0 "$pid" 2>/dev/null && fail "the player did not quit within 3 s after $1"
  wait "$pid" || fail "the player exited with status $? after $1"
  echo "ok: $1 ended the player cleanly"
}

# The place and a per-file setting stored for a file, as another tool reads the library.
stored_position() {
  sqlite3 "$library" "SELECT CAST(last_position AS INTEGER) FROM playback_history WHERE video_url LIKE '%/$1'"
}
stored_settings() { sqlite3 "$library" "SELECT settings_json FROM per_file_settings WHERE file_path LIKE '%/$1'"; }

openbox >/dev/null 2>&1 &
wm=$!

start "$fixtures/clip30.mp4" "clip30"
press space "Paused"
expect_status Paused
press space "Playing"
expect_status Playing
press Right " / 00:30"
press Down "Volume: 95%"
press m "Muted"
press ctrl+k "Rotation: 90°"

# The desktop logging out (SIGTERM), Ctrl+C in a terminal (SIGINT), a closed terminal (SIGHUP)
# and the desktop's media controls (MPRIS Quit) all quit in order, keeping the place, and the
# rotation set above.
expect_stored_between() {
  position=$(stored_position clip30.mp4)
  [ -n "$position" ] && [ "$position" -ge "$1" ] && [ "$position" -le "$2" ] ||
    fail "clip30.mp4 was stored at \"$position\" s, not within $1 to $2 s"
}
for quit in TERM:20 INT:14 QUIT:11 HUP:8; do
  [ "${quit%:*}" = TERM ] || start "$fixtures/clip30.mp4" "clip30"
  playerctl -p velmarplayer position "${quit#*:}"
  if [ "${quit%:*}" = QUIT ]; then
    dbus-send --session --print-reply --dest=org.mpris.MediaPlayer2.velmarplayer \
      /org/mpris/MediaPlayer2 org.mpris.MediaPlayer2.Quit >/dev/null
  else
    kill -"${quit%:*}" "$pid"
  fi
  expect_exit "${quit%:*}"
  expect_stored_between "${quit#*:}" $((${quit#*:} + 2))
done
stored_settings clip30.mp4 | grep -q '"rotation":90' || fail "the rotation was not kept: $(stored_settings clip30.mp4)"

# A crash loses no more than the last few seconds: the place is saved while playing.
start "$fixtures/clip30.mp4" "clip30"
expect_line "[OSDManager] Resumed at 00:08"
playerctl -p velmarplayer position 16
for _ in $(seq 100); do [ "$(stored_position clip30.mp4)" -ge 16 ] && break; sleep 0.1; done
kill -KILL "$pid"
wait "$pid" 2>/dev/null || true
expect_stored_between 16 22
start "$fixtures/clip30.mp4" "clip30"
expect_line "[OSDManager] Resumed at 00:$position"
echo "ok: after a crash the next start resumed at 00:$position"

# Picture in picture: Ctrl+P floats the video in a window above the others, where it keeps
# moving; Ctrl+P there brings it back and leaves one window.
xdotool key --clearmodifiers ctrl+p
pip=$(timeout 10 xdotool search --sync --name "Picture in Picture" | head -1) || fail "Ctrl+P opened no floating window"
xprop -id "$pip" _NET_WM_STATE | grep -q _NET_WM_STATE_ABOVE || fail "the floating window is not above the others"
# Moving means the picture changes twice: once may only be its first frame arriving, which
# takes a while in the sanitizer build.
changes=0 last=$(import -window "$pip" png:- | md5sum)
for _ in $(seq 40); do
  sleep 0.25
  now=$(import -window "$pip" png:- | md5sum)
  [ "$now" != "$last" ] && changes=$((changes + 1)) && last=$now
  [ "$changes" -ge 2 ] && break
done
[ "$changes" -ge 2 ] || fail "the video does not move in the floating window"
# The player's keys work in the floating window as in the main one.
xdotool windowactivate --sync "$pip" 2>/dev/null || xdotool windowfocus --sync "$pip"
press space "Paused"
expect_status Paused
press space "Playing"
expect_status Playing
press Right " / 00:30"
xdotool key --clearmodifiers ctrl+p
for _ in $(seq 50); do xdotool search --name "Picture in Picture" >/dev/null || break; sleep 0.1; done
xdotool search --name "Picture in Picture" >/dev/null && fail "Ctrl+P in the floating window did not bring the video back"
expect_status Playing
echo "ok: Ctrl+P floats the video above the other windows, its keys work there, and it comes back"

# A later launch hands over a file named in bytes that are not UTF-8, and leaves.
odd=$work/$'caf\xe9'.mp4
cp "$fixtures/clip60.mp4" "$odd"
"$player" "$odd" >"$work/second.log" 2>&1 || fail "the second launch exited $?"
length() { playerctl -p velmarplayer metadata mpris:length 2>/dev/null || echo 0; }
for _ in $(seq 100); do [ "$(length)" -ge 59000000 ] && break; sleep 0.1; done
[ "$(length)" -ge 59000000 ] || fail "the file with the odd name did not play"
expect_status Playing
echo "ok: a file named in non-UTF-8 bytes plays"

# Closing the window (through the window manager) keeps the place and the settings too.
playerctl -p velmarplayer position 33
press ctrl+k "Rotation: 90°"
xdotool key --clearmodifiers alt+F4
expect_exit "closing the window"
position=$(sqlite3 "$library" "SELECT CAST(last_position AS INTEGER) FROM playback_history WHERE video_url = 'file://$work/caf%E9.mp4'")
[ -n "$position" ] && [ "$position" -ge 32 ] && [ "$position" -le 35 ] ||
  fail "the closed file was stored at \"$position\" s, not about 33"
stored_settings 'caf%.mp4' | grep -q '"rotation":90' || fail "the closed file's rotation was not kept"
echo "ok: closing the window kept the place and the rotation"
