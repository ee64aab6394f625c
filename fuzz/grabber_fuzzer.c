/* libFuzzer harness for the frame grabber: every input is put in an in-memory file and grabbed
 * from as a video file would be. Built and run by fuzz/run.sh. */
#define _GNU_SOURCE
#include "features/thumbnail/FFmpegFrameExtractor.h"

#include <libavutil/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    (void)argc;
    (void)argv;
    av_log_set_level(AV_LOG_QUIET); /* FFmpeg's complaints about broken input are expected */
    return 0;
}

/* Reads the last byte of a picture, so that AddressSanitizer checks its full extent. */
static void consume(VelmarFrame frame)
{
    if (frame.data) {
        volatile uint8_t last = frame.data[(size_t)frame.width * (size_t)frame.height * 4 - 1];
        (void)last;
    }
    free(frame.data);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const int fd = memfd_create("grabber-input", 0);
    if (fd < 0)
        return 0;
    size_t written = 0;
    while (written < size) {
        const ssize_t n = write(fd, data + written, size - written);
        if (n <= 0)
            break;
        written += (size_t)n;
    }
    char path[64];
    snprintf(path, sizeof path, "/proc/self/fd/%d", fd);

    /* Two grabs through one session, the second after the decoder has been used and flushed,
     * at another size, then the one-shot call. */
    VelmarFrameGrabber* grabber = velmar_grabber_open(path, 2000);
    consume(velmar_grabber_grab(grabber, 240, 0.0));
    consume(velmar_grabber_grab(grabber, 0, 3.5));
    velmar_grabber_close(grabber);
    consume(velmar_extract_frame(path, 64, 1.0));

    close(fd);
    return 0;
}
