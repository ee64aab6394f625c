#!/usr/bin/env bash
# The player view under a window manager (its own openbox, on the suite's X display and session
# bus): a screen reader finds its parts over AT-SPI, a click toggles the controls, a double click
# switches to full screen, the wheel sets the volume the desktop's media controls report, and the
# side panel's tabs open from the keyboard with what the file and the playlist hold.
# The control bar: its play/pause button pauses, a drag on the seek bar seeks, hovering it shows
# the picture at the time under the pointer, and the bar hides with the other controls.
#   player_view.sh PLAYER FIXTURE_DIR
set -euo pipefail
player=$1
fixtures=$(cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)

work=$(mktemp -d) pid= wm=
trap 'for p in $pid $wm; do kill "$p" 2>/dev/null || true; wait "$p" 2>/dev/null || true; done
      rm -rf "$work"' EXIT
# In the sanitizer build the player's exit unloads Qt's platform plugin, the OpenGL driver and
# the audio back-ends libmpv probed; their one-off allocations can no longer be attributed then.
# Leaks in the player's own code are checked by the unit tests, which end players mid-work.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
export HOME=$work XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
log=$work/player.log

fail() { echo "FAIL: $*"; echo "--- player log"; cat "$log"; exit 1; }

# Retries a command for up to 10 s.
eventually() { for _ in $(seq 100); do "$@" >/dev/null 2>&1 && return 0; sleep 0.1; done; return 1; }

# What a screen reader sees of the player: "role<TAB>name<TAB>showing|hidden" lines.
tree() { /usr/bin/python3 "$here/accessible_tree.py" VelmarPlayer | sed 's/^ *//'; }
has_object() { tree | grep -qxF -- "$1"; }
expect_object() { eventually has_object "$1" || { tree; fail "no accessible \"$1\""; }; echo "ok: $1"; }

# A desktop session starts the accessibility bus before its applications; so does this test.
dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress \
  >/dev/null || fail "no accessibility bus"
openbox --sm-disable >/dev/null 2>&1 & wm=$!
"$player" >"$log" 2>&1 & pid=$!
window=$(timeout 20 xdotool search --sync --onlyvisible --name "VelmarPlayer" | head -1) ||
  fail "no player window"

# Idle: the screen's buttons, by name.
for name in "Open File" "Playlist" "Keyboard Shortcuts"; do
  expect_object "push button	$name	showing"
done

# A file handed over by the desktop's media controls plays. Paused, the controls that a
# movement brings up stay.
eventually playerctl -p velmarplayer open "file://$fixtures/clip30.mp4" || fail "MPRIS open failed"
status_is() { test "$(playerctl -p velmarplayer status 2>/dev/null)" = "$1"; }
eventually status_is Playing || fail "clip30 does not play"
playerctl -p velmarplayer pause
expect_object "animation	Video player	showing"
xdotool mousemove --window "$window" 400 300
expect_object "text	clip30	showing"

# One click hides the controls, the next brings them back.
xdotool click 1
expect_object "text	clip30	hidden"
xdotool click 1
expect_object "text	clip30	showing"

# A double click switches to full screen.
fullscreen() { xprop -id "$window" _NET_WM_STATE | grep -q _NET_WM_STATE_FULLSCREEN; }
fullscreen && fail "full screen before the double click"
xdotool click --repeat 2 --delay 80 1
eventually fullscreen || fail "a double click did not switch to full screen"
echo "ok: double click -> full screen"

# The wheel: one notch is 5 % of the volume, as the desktop's media controls see it.
volume() { playerctl -p velmarplayer volume; }
volume_is() { awk -v v="$(volume)" -v want="$1" 'BEGIN { exit !(v - want < 0.001 && want - v < 0.001) }'; }
xdotool click 5
eventually volume_is 0.95 || fail "a notch down: volume $(volume), not 0.95"
xdotool click 5 click 5
eventually volume_is 0.85 || fail "two notches down: volume $(volume), not 0.85"
xdotool click 4
eventually volume_is 0.9 || fail "a notch up: volume $(volume), not 0.9"
echo "ok: wheel -> volume $(volume)"

# The side panel, from the keyboard. Ctrl+3: the file's technical summary.
shows_text() { tree | grep "	showing$" | grep -qF -- "$1"; }
expect_text() { eventually shows_text "$1" || { tree; fail "no \"$1\" on screen"; }; echo "ok: $1"; }
xdotool windowactivate --sync "$window" 2>/dev/null || xdotool windowfocus --sync "$window"
xdotool key ctrl+3
expect_text "h264"
expect_text "320 × 180"

# B bookmarks the moment; Ctrl+4 lists it with the picture taken of it.
xdotool key b
xdotool key ctrl+4
expect_text "1 bookmarks"
expect_text "Bookmark picture"

# A folder handed over becomes the playlist, in natural order, on Ctrl+1.
mkdir "$work/shows"
for name in ep10 ep2 ep1; do cp "$fixtures/clip10.mp4" "$work/shows/$name.mp4"; done
"$player" "$work/shows" >>"$log" 2>&1
title_is() { test "$(playerctl -p velmarplayer metadata xesam:title 2>/dev/null)" = "$1"; }
eventually title_is ep1 || fail "the folder's first video does not play"
xdotool key ctrl+1
expect_text "3 items"
order=$(tree | awk -F'\t' '$1 == "list item" && $3 == "showing" { printf "%s ", $2 }')
test "$order" = "ep1 ep2 ep10 " || { tree; fail "playlist order \"$order\""; }
echo "ok: playlist $order"

# Esc closes the panel.
xdotool key Escape
panel_closed() { ! shows_text "3 items"; }
eventually panel_closed || fail "Esc left the panel open"
echo "ok: Esc closes the panel"
# The control bar, on a minute-long clip.
where() { /usr/bin/python3 "$here/accessible_tree.py" VelmarPlayer --where "$1"; }
# The screen rectangle "x y width height" of a showing object, waiting up to 10 s for it.
locate() { for _ in $(seq 100); do where "$1" 2>/dev/null && return 0; sleep 0.1; done; return 1; }
eventually playerctl -p velmarplayer open "file://$fixtures/clip60.mp4" || fail "MPRIS open failed"
eventually status_is Playing || fail "clip60 does not play"
xdotool mousemove --window "$window" 400 300 mousemove --window "$window" 410 300
read -r x y w h < <(locate Pause) || { tree; fail "no Pause button on the bar"; }
xdotool mousemove $((x + w / 2)) $((y + h / 2)) click 1
eventually status_is Paused || fail "the Pause button did not pause: $(playerctl -p velmarplayer status)"
echo "ok: the bar's Pause button pauses"

# A drag from near the start to the middle of the bar lands near the middle of the clip.
read -r x y w h < <(locate "Seek bar") || { tree; fail "no seek bar"; }
row=$((y + h / 2))
xdotool mousemove $((x + 4)) $row mousedown 1
for step in 1 2 3 4; do xdotool mousemove $((x + 4 + (w / 2 - 4) * step / 4)) $row; sleep 0.05; done
xdotool mouseup 1
position_near() {
  awk -v p="$(playerctl -p velmarplayer position)" -v want="$1" 'BEGIN { exit !(p - want < 1 && want - p < 1) }'
}
eventually position_near 30 || fail "the drag to the middle landed at $(playerctl -p velmarplayer position) s"
echo "ok: drag to the middle -> $(playerctl -p velmarplayer position) s"

# Hovering at 14.4 s shows a picture of its 2 s bucket: the key frame at 14 s, or the one at 15 s
# when a drag passing 15.x s asked for the bucket first. Not some other picture.
xdotool mousemove $((x + w * 144 / 600)) $row
read -r px py pw ph < <(locate "Preview 00:14") || { tree; fail "no preview at 00:14"; }
frame() { ffmpeg -nostdin -loglevel error -ss "$1" -i "$fixtures/clip60.mp4" -frames:v 1 \
            -vf "scale=$pw:$ph" -f rawvideo -pix_fmt rgb24 "$work/at$1.rgb"; }
for t in 14 15 40; do frame $t; done
# Mean difference per colour sample against the bucket's frames, and against a wrong one.
differences() {
  ffmpeg -nostdin -loglevel error -y -f x11grab -draw_mouse 0 -video_size "${pw}x$ph" \
    -i "$DISPLAY+$px,$py" -frames:v 1 -f rawvideo -pix_fmt rgb24 "$work/shown.rgb"
  /usr/bin/python3 - "$work/shown.rgb" "$work"/at{14,15,40}.rgb <<'PY'
import sys
shown, *references = (open(path, "rb").read() for path in sys.argv[1:])
at14, at15, at40 = (sum(abs(a - b) for a, b in zip(shown, r)) / len(shown) for r in references)
print(min(at14, at15), at40)
PY
}
preview_matches() {
  read -r right wrong < <(differences)
  echo "preview differs by $right from its bucket's frames and by $wrong from 40 s"
  awk -v r="$right" -v w="$wrong" 'BEGIN { exit !(r < 16 && r * 3 < w) }'
}
for _ in $(seq 50); do preview_matches >/dev/null && break; sleep 0.2; done
preview_matches || fail "the preview does not show a picture of 14 s"
echo "ok: hover -> a picture of 14 s"

# Playing, the bar goes with the rest of the controls.
playerctl -p velmarplayer play
expect_object "push button	Pause	hidden"
expect_object "slider	Seek bar	hidden"
