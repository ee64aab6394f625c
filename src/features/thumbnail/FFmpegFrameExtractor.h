#ifndef VELMAR_FFMPEG_FRAME_EXTRACTOR_H
#define VELMAR_FFMPEG_FRAME_EXTRACTOR_H

/* Single-frame grabber for seek-bar thumbnails, in plain C over FFmpeg.
 *
 * A grab seeks backward to the key frame at or before the requested time and returns the first
 * frame that decodes from there, scaled to RGBA. It is deliberately fast rather than exact to the
 * frame: the picture is normally that key frame.
 *
 * Hostile input: only regular local files are read (never pipes or devices, which could block
 * forever), every blocking step runs against a deadline, and frames larger than
 * VELMAR_GRAB_MAX_PIXELS are refused before they are scaled. */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Frames with more pixels than this (a little over 8K UHD) are refused. */
#define VELMAR_GRAB_MAX_PIXELS (8192 * 8192)

/* Time allowed for opening a file, and for each grab, when the caller does not choose one. */
#define VELMAR_GRAB_DEFAULT_TIMEOUT_MS 5000

/* A grabbed picture: tightly packed RGBA rows of width * 4 bytes, top row first.
 * data comes from malloc and belongs to the caller, who frees it with free(). On failure data is
 * NULL; width and height are then 0, except when only the final copy could not be allocated. */
typedef struct VelmarFrame
{
    uint8_t* data;
    int32_t width;
    int32_t height;
} VelmarFrame;

/* Grabs one frame of the file at path near timeSeconds (counted from the file's first time stamp,
 * as the player counts), at most maxWidth pixels wide (values below 1 mean no limit). A scaled
 * frame keeps its aspect ratio with an even height.
 * Stateless: opens and closes the file on every call, and may be called from any number of
 * threads at once. */
VelmarFrame velmar_extract_frame(const char* path, int32_t maxWidth, double timeSeconds);

/* A grabber session keeps one file open for many grabs, so the cost of opening it (reading the
 * index of a long file) is paid once.
 *
 * Threads: a session is used by one thread at a time; it may move to another thread between
 * calls if the hand-over orders memory (a mutex, a queued call, a finished future). Different
 * sessions are independent, even on the same file. */
typedef struct VelmarFrameGrabber VelmarFrameGrabber;

/* Opens path for grabbing. timeoutMs bounds the opening and each later grab (below 1: the
 * default). Returns NULL when the file cannot be read or has no decodable video stream. */
VelmarFrameGrabber* velmar_grabber_open(const char* path, int32_t timeoutMs);

/* Grabs one frame near timeSeconds, as velmar_extract_frame does. A NULL session gives a
 * failed frame. */
VelmarFrame velmar_grabber_grab(VelmarFrameGrabber* grabber, int32_t maxWidth, double timeSeconds);

/* Closes the file and frees the session. Accepts NULL. */
void velmar_grabber_close(VelmarFrameGrabber* grabber);

#ifdef __cplusplus
}
#endif

#endif
