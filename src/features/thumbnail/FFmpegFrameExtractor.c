#include "FFmpegFrameExtractor.h"

#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/time.h>
#include <libswscale/swscale.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

struct VelmarFrameGrabber
{
    AVFormatContext* format;
    AVCodecContext* codec;
    AVFrame* frame; /* the decoded picture of the grab in progress */
    AVPacket* packet;
    struct SwsContext* scaler; /* kept between grabs: successive frames rarely change shape */
    int stream;
    int64_t timeout;  /* microseconds */
    int64_t deadline; /* av_gettime_relative() value after which blocking work gives up */
    int (*openDefault)(struct AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**);
};

static void arm_deadline(VelmarFrameGrabber* grabber)
{
    grabber->deadline = av_gettime_relative() + grabber->timeout;
}

/* libavformat polls this while it waits for or loops over input. */
static int deadline_passed(void* opaque)
{
    const VelmarFrameGrabber* grabber = opaque;
    return av_gettime_relative() > grabber->deadline;
}

/* Reading a pipe, a socket or a device could block forever where no deadline reaches, and would
 * steal the data the player itself is reading; only regular files can safely be read twice. */
static int names_regular_file(const char* url)
{
    struct stat info;
    const char* path = strncmp(url, "file:", 5) == 0 ? url + 5 : url;
    return stat(path, &info) == 0 && S_ISREG(info.st_mode);
}

/* Every input libavformat opens goes through here: the file itself, and anything a playlist or
 * a reference inside it names. */
static int open_regular_file(struct AVFormatContext* format, AVIOContext** io, const char* url,
                             int flags, AVDictionary** options)
{
    const VelmarFrameGrabber* grabber = format->opaque;
    if (!names_regular_file(url))
        return AVERROR(EPERM);
    return grabber->openDefault(format, io, url, flags, options);
}

VelmarFrameGrabber* velmar_grabber_open(const char* path, int32_t timeoutMs)
{
    VelmarFrameGrabber* grabber = calloc(1, sizeof *grabber);
    if (!grabber)
        return NULL;
    grabber->timeout =
        (int64_t)(timeoutMs >= 1 ? timeoutMs : VELMAR_GRAB_DEFAULT_TIMEOUT_MS) * 1000;
    arm_deadline(grabber);
    if (!path)
        goto fail;

    grabber->format = avformat_alloc_context();
    if (!grabber->format)
        goto fail;
    grabber->format->interrupt_callback.callback = deadline_passed;
    grabber->format->interrupt_callback.opaque = grabber;
    grabber->format->opaque = grabber;
    grabber->openDefault = grabber->format->io_open;
    grabber->format->io_open = open_regular_file;

    /* On failure avformat_open_input frees the context and clears the pointer. */
    if (avformat_open_input(&grabber->format, path, NULL, NULL) < 0)
        goto fail;
    if (avformat_find_stream_info(grabber->format, NULL) < 0)
        goto fail;

    grabber->stream = av_find_best_stream(grabber->format, AVMEDIA_TYPE_VIDEO, -1, -1, NULL, 0);
    if (grabber->stream < 0)
        goto fail;
    const AVCodecParameters* parameters = grabber->format->streams[grabber->stream]->codecpar;
    const AVCodec* decoder = avcodec_find_decoder(parameters->codec_id);
    if (!decoder)
        goto fail;
    grabber->codec = avcodec_alloc_context3(decoder);
    if (!grabber->codec)
        goto fail;
    if (avcodec_parameters_to_context(grabber->codec, parameters) < 0)
        goto fail;
    /* The decoder refuses oversized pictures before allocating them. */
    grabber->codec->max_pixels = VELMAR_GRAB_MAX_PIXELS;
    if (avcodec_open2(grabber->codec, decoder, NULL) < 0)
        goto fail;

    grabber->frame = av_frame_alloc();
    grabber->packet = av_packet_alloc();
    if (!grabber->frame || !grabber->packet)
        goto fail;
    return grabber;

fail:
    velmar_grabber_close(grabber);
    return NULL;
}

void velmar_grabber_close(VelmarFrameGrabber* grabber)
{
    if (!grabber)
        return;
    av_frame_free(&grabber->frame);
    av_packet_free(&grabber->packet);
    sws_freeContext(grabber->scaler);
    avcodec_free_context(&grabber->codec);
    avformat_close_input(&grabber->format);
    free(grabber);
}

/* Seconds to the microsecond timestamp av_seek_frame expects for stream -1, counted from the
 * file's start time as players and the ffmpeg tool count it. Times that cannot be represented
 * seek to the start or far past the end instead of overflowing. */
static int64_t seek_timestamp(const AVFormatContext* format, double timeSeconds)
{
    const double limit = 1e15; /* about 31 years, far from the 64-bit edge */
    double microseconds = timeSeconds * 1000000.0;
    if (!(microseconds > 0))
        microseconds = 0;
    else if (microseconds > limit)
        microseconds = limit;
    int64_t timestamp = (int64_t)microseconds;
    if (format->start_time != AV_NOPTS_VALUE && llabs(format->start_time) < (int64_t)limit)
        timestamp += format->start_time;
    return timestamp;
}

/* Feeds packets of the chosen stream to the decoder until it gives a frame. Packets of other
 * streams are skipped; at the end of the input the decoder is drained for a last chance. */
static int decode_first_frame(VelmarFrameGrabber* grabber)
{
    while (!deadline_passed(grabber)) {
        if (av_read_frame(grabber->format, grabber->packet) < 0)
            break;
        const int sent = grabber->packet->stream_index == grabber->stream
                             ? avcodec_send_packet(grabber->codec, grabber->packet)
                             : AVERROR(EAGAIN);
        av_packet_unref(grabber->packet);
        if (sent == 0 && avcodec_receive_frame(grabber->codec, grabber->frame) == 0)
            return 0;
    }
    avcodec_send_packet(grabber->codec, NULL);
    return avcodec_receive_frame(grabber->codec, grabber->frame);
}

/* The frame's own size, or maxWidth wide with the height scaled to match, an odd quotient
 * rounded up to the next even number (the even height encoders and scalers expect). */
static void target_size(int width, int height, int32_t maxWidth, int* targetWidth,
                        int* targetHeight)
{
    *targetWidth = width;
    *targetHeight = height;
    if (maxWidth >= 1 && width > maxWidth) {
        *targetWidth = maxWidth;
        *targetHeight = (int)((((int64_t)height * maxWidth) / width + 1) & ~(int64_t)1);
    }
}

/* Converts with the frame's own colour matrix and range when it states them, so tagged HD
 * material does not come out in BT.601 colours. */
static void match_colorspace(struct SwsContext* scaler, const AVFrame* frame)
{
    const int* source = sws_getCoefficients(
        frame->colorspace == AVCOL_SPC_UNSPECIFIED ? SWS_CS_DEFAULT : (int)frame->colorspace);
    const int fullRange = frame->color_range == AVCOL_RANGE_JPEG;
    sws_setColorspaceDetails(scaler, source, fullRange, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                             1 << 16, 1 << 16);
}

VelmarFrame velmar_grabber_grab(VelmarFrameGrabber* grabber, int32_t maxWidth, double timeSeconds)
{
    VelmarFrame result = {NULL, 0, 0};
    AVFrame* scaled = NULL;
    uint8_t* pixels = NULL;
    if (!grabber)
        return result;

    arm_deadline(grabber);
    av_seek_frame(grabber->format, -1, seek_timestamp(grabber->format, timeSeconds),
                  AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(grabber->codec);
    if (decode_first_frame(grabber) != 0)
        goto cleanup;

    const AVFrame* frame = grabber->frame;
    if (frame->width < 1 || frame->height < 1 ||
        (int64_t)frame->width * frame->height > VELMAR_GRAB_MAX_PIXELS)
        goto cleanup;
    int width, height;
    target_size(frame->width, frame->height, maxWidth, &width, &height);

    grabber->scaler = sws_getCachedContext(grabber->scaler, frame->width, frame->height,
                                           (enum AVPixelFormat)frame->format, width, height,
                                           AV_PIX_FMT_RGBA, SWS_BILINEAR, NULL, NULL, NULL);
    if (!grabber->scaler)
        goto cleanup;
    match_colorspace(grabber->scaler, frame);

    scaled = av_frame_alloc();
    if (!scaled)
        goto cleanup;
    const int size = av_image_get_buffer_size(AV_PIX_FMT_RGBA, width, height, 1);
    if (size < 0)
        goto cleanup;
    pixels = av_malloc((size_t)size);
    if (!pixels)
        goto cleanup;
    av_image_fill_arrays(scaled->data, scaled->linesize, pixels, AV_PIX_FMT_RGBA, width, height, 1);
    sws_scale(grabber->scaler, (const uint8_t* const*)frame->data, frame->linesize, 0,
              frame->height, scaled->data, scaled->linesize);

    result.width = width;
    result.height = height;
    result.data = malloc((size_t)size);
    if (result.data) {
        const size_t rowBytes = (size_t)width * 4;
        for (int row = 0; row < height; ++row)
            memcpy(result.data + rowBytes * (size_t)row,
                   scaled->data[0] + (ptrdiff_t)scaled->linesize[0] * row, rowBytes);
    }

cleanup:
    av_free(pixels);
    av_frame_free(&scaled);
    av_frame_unref(grabber->frame);
    return result;
}

VelmarFrame velmar_extract_frame(const char* path, int32_t maxWidth, double timeSeconds)
{
    VelmarFrameGrabber* grabber = velmar_grabber_open(path, 0);
    const VelmarFrame frame = velmar_grabber_grab(grabber, maxWidth, timeSeconds);
    velmar_grabber_close(grabber);
    return frame;
}
