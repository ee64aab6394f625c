#!/usr/bin/env bash
# Fuzzes the frame grabber with libFuzzer, starting from the test media and a few tiny clips in
# other containers. Needs clang and libclang-rt-14-dev. Findings land in build-fuzz/.
#   fuzz/run.sh [SECONDS]      (default 600; run it niced on a shared machine)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build-fuzz
seconds=${1:-600}

command -v clang >/dev/null || { echo "fuzz/run.sh needs clang and libclang-rt-14-dev" >&2; exit 1; }
mkdir -p "$out/seeds" "$out/corpus"

if [ ! -f "$out/seeds/clip10.mp4" ]; then
  "$root/tests/media/make-fixtures.sh" "$out/fixtures"
  find "$out/fixtures" -type f \( -name '*.mp4' -o -name '*.mkv' -o -name '*.m4a' -o -name '*.png' \) \
    -exec cp {} "$out/seeds/" \;
  ff() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }
  tiny=(-f lavfi -i "testsrc2=size=64x36:rate=10:duration=0.4")
  ff "${tiny[@]}" -c:v libx264 -g 2 "$out/seeds/tiny-h264.mp4"
  ff "${tiny[@]}" -c:v mpeg4 "$out/seeds/tiny-mpeg4.avi"
  ff "${tiny[@]}" -c:v mjpeg "$out/seeds/tiny-mjpeg.mov"
  ff "${tiny[@]}" -c:v libvpx -b:v 100k "$out/seeds/tiny-vp8.webm"
  ff "${tiny[@]}" -c:v mpeg2video "$out/seeds/tiny-mpeg2.ts"
  ff "${tiny[@]}" -c:v flv1 "$out/seeds/tiny.flv"
  ff "${tiny[@]}" "$out/seeds/tiny.gif"
fi

clang -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all -I"$root/src" \
  "$root/fuzz/grabber_fuzzer.c" "$root/src/features/thumbnail/FFmpegFrameExtractor.c" \
  $(pkg-config --cflags --libs libavformat libavcodec libswscale libavutil) \
  -o "$out/grabber_fuzzer"

cd "$out"
exec ./grabber_fuzzer -max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 \
  -max_len=1300000 -print_final_stats=1 corpus seeds
