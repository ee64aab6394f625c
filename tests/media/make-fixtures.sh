#!/usr/bin/env bash
# Generates the test media from ffmpeg's synthetic sources. Usage: make-fixtures.sh OUTDIR
# Every clip has a blue block in its top-left corner and a yellow one bottom-right, so that
# render tests can tell whether the picture is the right way up.
set -euo pipefail
out=${1:?output directory}
mkdir -p "$out"
cd "$out"

ff() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }
corners="drawbox=x=0:y=0:w=iw/5:h=ih/5:color=0x0000ff:t=fill,drawbox=x=iw*4/5:y=ih*4/5:w=iw/5:h=ih/5:color=0xffff00:t=fill"

# 10 s 640x360 H.264/AAC, a key frame every second.
ff -f lavfi -i "testsrc2=size=640x360:rate=30:duration=10" \
   -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=10" \
   -vf "$corners" -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 30 \
   -c:a aac -b:a 96k -shortest clip10.mp4

# 30 s, smaller, for seeks across a longer timeline.
ff -f lavfi -i "testsrc2=size=320x180:rate=25:duration=30" \
   -f lavfi -i "sine=frequency=330:sample_rate=48000:duration=30" \
   -vf "$corners" -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 25 \
   -c:a aac -b:a 64k -shortest clip30.mp4

# A minute, tiny, for positions past the half-minute mark.
ff -f lavfi -i "testsrc2=size=160x90:rate=10:duration=60" \
   -f lavfi -i "sine=frequency=660:sample_rate=48000:duration=60" \
   -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 10 \
   -c:a aac -b:a 32k -shortest clip60.mp4

# One video, two audio tracks with their own languages and titles, one subtitle track.
# (Named unlike the clip, so that libmpv's automatic subtitle search does not add it again.)
cat > embedded-subtitles.srt <<'SRT'
1
00:00:00,000 --> 00:00:04,000
First subtitle line

2
00:00:04,000 --> 00:00:08,000
Second subtitle line
SRT
ff -f lavfi -i "testsrc2=size=320x180:rate=25:duration=8" \
   -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=8" \
   -f lavfi -i "sine=frequency=880:sample_rate=48000:duration=8" \
   -i embedded-subtitles.srt \
   -map 0:v -map 1:a -map 2:a -map 3:s \
   -c:v libx264 -preset veryfast -pix_fmt yuv420p -c:a aac -b:a 64k -c:s srt \
   -metadata:s:a:0 language=eng -metadata:s:a:0 title="English Stereo" \
   -metadata:s:a:1 language=jpn -metadata:s:a:1 title="Commentary" \
   -metadata:s:s:0 language=eng \
   tracks.mkv

# A still image.
ff -f lavfi -i "color=c=0x2060c0:size=320x240:duration=1" -vf "$corners" -frames:v 1 still.png

# Sound only, 12 s.
ff -f lavfi -i "sine=frequency=523:sample_rate=48000:duration=12" -c:a aac -b:a 64k audio-only.m4a

# Tagged as HDR10: PQ transfer with BT.2020 primaries.
ff -f lavfi -i "testsrc2=size=320x180:rate=25:duration=3" \
   -vf "$corners" -c:v libx264 -preset veryfast -pix_fmt yuv420p10le \
   -color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc pq.mkv

# Broken input: nothing at all, and an MP4 cut off before its index.
: > empty.mp4
head -c 4096 clip10.mp4 > truncated.mp4

# A download that was cut off: 30 s with its index up front, cut at 60 % of its bytes. It
# opens and plays for about 17 s, then breaks off. (Named to sort after clip10.mp4, which
# tests expect first in this folder.)
ff -f lavfi -i "testsrc2=size=320x180:rate=25:duration=30" \
   -f lavfi -i "sine=frequency=330:sample_rate=48000:duration=30" \
   -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 25 -c:a aac -b:a 64k -shortest \
   -movflags +faststart whole.mp4
head -c $(($(stat -c %s whole.mp4) * 6 / 10)) whole.mp4 > cut-off.mp4
rm whole.mp4

# Frame sizes for the thumbnail grabber: full HD, a wide film frame, and a small frame with an
# odd height (4:4:4, since 4:2:0 needs even sizes).
ff -f lavfi -i "testsrc2=size=1920x1080:rate=5:duration=1" \
   -vf "$corners" -c:v libx264 -preset ultrafast -pix_fmt yuv420p full-hd.mp4
ff -f lavfi -i "testsrc2=size=1920x800:rate=5:duration=1" \
   -vf "$corners" -c:v libx264 -preset ultrafast -pix_fmt yuv420p wide.mp4
ff -f lavfi -i "testsrc2=size=200x151:rate=5:duration=6,format=yuv444p" \
   -vf "$corners" -c:v ffv1 -g 5 odd.mkv

# clip10's pictures with time stamps starting at 100 s, as in a broadcast recording. Times count
# from the start of the file, as the player shows them.
ff -i clip10.mp4 -map 0:v -c copy -output_ts_offset 100 late-start.mkv

# The reference tool's thumbnail of clip10's key frame at 3 s, as raw RGBA rows.
ff -ss 3 -i clip10.mp4 -frames:v 1 -vf scale=240:-2 -pix_fmt rgba -f rawvideo clip10-3s-240.rgba

# 20 s in three chapters, for the seek bar's chapter ticks and titles.
cat > chapters.ffmeta <<'META'
;FFMETADATA1
[CHAPTER]
TIMEBASE=1/1000
START=0
END=5000
title=Opening
[CHAPTER]
TIMEBASE=1/1000
START=5000
END=12500
title=Middle
[CHAPTER]
TIMEBASE=1/1000
START=12500
END=20000
title=Ending
META
ff -f lavfi -i "testsrc2=size=320x180:rate=25:duration=20" -i chapters.ffmeta \
   -map 0:v -map_metadata 1 -map_chapters 1 -vf "$corners" \
   -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 25 three-chapters.mkv
rm chapters.ffmeta
