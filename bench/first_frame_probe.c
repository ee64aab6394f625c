/* Measures how long a program takes to put its first video frame on an X screen.
 *
 * The probe starts the program itself, so the clock starts at the fork and not at some
 * shell's idea of "now". It then finds the program's top-level window by _NET_WM_PID and reads
 * a small square from the middle of that window off the root window every few milliseconds,
 * until the square shows the test video's colour. A check for "not black" alone is not
 * enough: toolkits often fill a new window with a palette colour before the first real frame,
 * and that must not count as video. After the first match the program is stopped.
 *
 * Output, on one line of standard output:
 *   first_frame_s=0.412 window_s=0.203 pid=1234
 * window_s is when the window was first seen mapped, for telling start-up apart from the
 * wait for decoding and drawing. Exit status: 0 matched, 1 timed out, 2 usage or X error,
 * 3 the program exited first.
 */

#define _POSIX_C_SOURCE 200809L

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { kPollNs = 5 * 1000 * 1000 };

struct Options
{
    unsigned long colour; /* 0xRRGGBB the video shows everywhere */
    int tolerance;        /* per channel */
    int size;             /* side of the sampled square, pixels */
    double timeout_s;
    double match_share; /* share of sampled pixels that must match */
    const char* output; /* where the program's stdout and stderr go, or NULL to share ours */
    char** command;
};

static double elapsed_since(const struct timespec* start)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)(now.tv_sec - start->tv_sec) + (double)(now.tv_nsec - start->tv_nsec) / 1e9;
}

/* Windows vanish and change while we look at them; a failed request only means "not yet". */
static int ignore_x_error(Display* display, XErrorEvent* event)
{
    (void)display;
    (void)event;
    return 0;
}

static void usage(void)
{
    fprintf(stderr, "usage: first_frame_probe [--colour RRGGBB] [--tolerance N] [--size N] "
                    "[--share F] [--timeout S] [--output FILE] -- COMMAND [ARG...]\n");
}

static int parse_options(int argc, char** argv, struct Options* options)
{
    options->colour = 0xf09020;
    options->tolerance = 48;
    options->size = 48;
    options->timeout_s = 30.0;
    options->match_share = 0.95;
    options->output = NULL;
    options->command = NULL;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (strcmp(arg, "--") == 0) {
            if (i + 1 < argc)
                options->command = &argv[i + 1];
            break;
        }
        if (i + 1 >= argc)
            return -1;
        const char* value = argv[++i];
        if (strcmp(arg, "--colour") == 0)
            options->colour = strtoul(value, NULL, 16) & 0xffffff;
        else if (strcmp(arg, "--tolerance") == 0)
            options->tolerance = atoi(value);
        else if (strcmp(arg, "--size") == 0)
            options->size = atoi(value);
        else if (strcmp(arg, "--share") == 0)
            options->match_share = atof(value);
        else if (strcmp(arg, "--timeout") == 0)
            options->timeout_s = atof(value);
        else if (strcmp(arg, "--output") == 0)
            options->output = value;
        else
            return -1;
    }
    if (!options->command || options->size < 1 || options->tolerance < 0 ||
        options->match_share <= 0.0 || options->match_share > 1.0 || options->timeout_s <= 0.0)
        return -1;
    return 0;
}

static long window_pid(Display* display, Window window, Atom pid_atom)
{
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = NULL;
    long pid = -1;
    if (XGetWindowProperty(display, window, pid_atom, 0, 1, False, XA_CARDINAL, &type, &format,
                           &count, &remaining, &data) == Success &&
        data) {
        if (type == XA_CARDINAL && format == 32 && count == 1)
            pid = (long)*(unsigned long*)data;
        XFree(data);
    }
    return pid;
}

/* A reparenting window manager puts the client one level below its frame, so look at the
 * root's children and their children. */
static Window find_window_of(Display* display, Window root, pid_t pid, Atom pid_atom)
{
    Window found = None;
    Window parent_unused, root_unused;
    Window* top = NULL;
    unsigned int top_count = 0;
    if (!XQueryTree(display, root, &root_unused, &parent_unused, &top, &top_count))
        return None;
    for (unsigned int i = 0; i < top_count && found == None; ++i) {
        if (window_pid(display, top[i], pid_atom) == (long)pid) {
            found = top[i];
            break;
        }
        Window* children = NULL;
        unsigned int child_count = 0;
        if (!XQueryTree(display, top[i], &root_unused, &parent_unused, &children, &child_count))
            continue;
        for (unsigned int j = 0; j < child_count; ++j) {
            if (window_pid(display, children[j], pid_atom) == (long)pid) {
                found = children[j];
                break;
            }
        }
        if (children)
            XFree(children);
    }
    if (top)
        XFree(top);
    return found;
}

static int channel_shift(unsigned long mask)
{
    int shift = 0;
    while (mask && !(mask & 1)) {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

static int near(long a, long b, int tolerance)
{
    return labs(a - b) <= tolerance;
}

/* Share of the sampled square that shows the expected colour, or -1 when it cannot be read. */
static double sample_window(Display* display, Window root, Window window,
                            const struct Options* options, unsigned long* mean_rgb)
{
    XWindowAttributes attributes;
    if (!XGetWindowAttributes(display, window, &attributes) || attributes.map_state != IsViewable)
        return -1.0;
    int root_x = 0, root_y = 0;
    Window child_unused;
    if (!XTranslateCoordinates(display, window, root, 0, 0, &root_x, &root_y, &child_unused))
        return -1.0;

    const int screen_w = DisplayWidth(display, DefaultScreen(display));
    const int screen_h = DisplayHeight(display, DefaultScreen(display));
    int side = options->size;
    if (side > attributes.width)
        side = attributes.width;
    if (side > attributes.height)
        side = attributes.height;
    int x = root_x + (attributes.width - side) / 2;
    int y = root_y + (attributes.height - side) / 2;
    if (x < 0 || y < 0 || x + side > screen_w || y + side > screen_h || side < 1)
        return -1.0;

    XImage* image =
        XGetImage(display, root, x, y, (unsigned)side, (unsigned)side, AllPlanes, ZPixmap);
    if (!image)
        return -1.0;
    const int red_shift = channel_shift(image->red_mask);
    const int green_shift = channel_shift(image->green_mask);
    const int blue_shift = channel_shift(image->blue_mask);
    const long want_r = (long)((options->colour >> 16) & 0xff);
    const long want_g = (long)((options->colour >> 8) & 0xff);
    const long want_b = (long)(options->colour & 0xff);
    long matches = 0;
    unsigned long sum_r = 0, sum_g = 0, sum_b = 0;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            const unsigned long pixel = XGetPixel(image, column, row);
            const long r = (long)((pixel & image->red_mask) >> red_shift);
            const long g = (long)((pixel & image->green_mask) >> green_shift);
            const long b = (long)((pixel & image->blue_mask) >> blue_shift);
            sum_r += (unsigned long)r;
            sum_g += (unsigned long)g;
            sum_b += (unsigned long)b;
            if (near(r, want_r, options->tolerance) && near(g, want_g, options->tolerance) &&
                near(b, want_b, options->tolerance))
                ++matches;
        }
    }
    XDestroyImage(image);
    const unsigned long count = (unsigned long)side * (unsigned long)side;
    *mean_rgb = ((sum_r / count) << 16) | ((sum_g / count) << 8) | (sum_b / count);
    return (double)matches / (double)count;
}

static void stop_child(pid_t pid)
{
    if (kill(pid, SIGTERM) != 0)
        return;
    for (int i = 0; i < 300; ++i) {
        if (waitpid(pid, NULL, WNOHANG) == pid)
            return;
        struct timespec pause = {0, 10 * 1000 * 1000};
        nanosleep(&pause, NULL);
    }
    kill(pid, SIGKILL);
    waitpid(pid, NULL, 0);
}

int main(int argc, char** argv)
{
    struct Options options;
    if (parse_options(argc, argv, &options) != 0) {
        usage();
        return 2;
    }

    Display* display = XOpenDisplay(NULL);
    if (!display) {
        fprintf(stderr, "first_frame_probe: cannot open the X display\n");
        return 2;
    }
    XSetErrorHandler(ignore_x_error);
    fcntl(ConnectionNumber(display), F_SETFD, FD_CLOEXEC);
    const Window root = DefaultRootWindow(display);
    const Atom pid_atom = XInternAtom(display, "_NET_WM_PID", False);
    struct timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    const pid_t child = fork();
    if (child < 0) {
        perror("first_frame_probe: fork");
        return 2;
    }
    if (child == 0) {
        /* Whatever ends the probe also ends the program, so no player outlives a run. */
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (options.output) {
            const int fd = open(options.output, O_WRONLY | O_CREAT | O_APPEND, 0644);
            if (fd < 0 || dup2(fd, STDOUT_FILENO) < 0 || dup2(fd, STDERR_FILENO) < 0) {
                fprintf(stderr, "first_frame_probe: cannot write %s: %s\n", options.output,
                        strerror(errno));
                _exit(127);
            }
            close(fd);
        }
        execvp(options.command[0], options.command);
        fprintf(stderr, "first_frame_probe: cannot run %s: %s\n", options.command[0],
                strerror(errno));
        _exit(127);
    }

    Window window = None;
    double window_s = -1.0;
    double last_share = 0.0;
    unsigned long last_mean = 0;
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) {
            fprintf(stderr, "first_frame_probe: %s exited (status %d) before showing a frame\n",
                    options.command[0], WIFEXITED(status) ? WEXITSTATUS(status) : -1);
            XCloseDisplay(display);
            return 3;
        }
        const double now_s = elapsed_since(&start);
        if (now_s > options.timeout_s) {
            fprintf(stderr,
                    "first_frame_probe: no frame of colour %06lx after %.1f s "
                    "(window %s, last share %.2f, last mean colour %06lx)\n",
                    options.colour, options.timeout_s, window ? "found" : "not found", last_share,
                    last_mean);
            stop_child(child);
            XCloseDisplay(display);
            return 1;
        }
        if (window == None)
            window = find_window_of(display, root, child, pid_atom);
        if (window != None) {
            unsigned long mean = 0;
            const double share = sample_window(display, root, window, &options, &mean);
            if (share >= 0.0) {
                if (window_s < 0.0)
                    window_s = now_s;
                last_share = share;
                last_mean = mean;
                if (share >= options.match_share) {
                    const double frame_s = elapsed_since(&start);
                    printf("first_frame_s=%.3f window_s=%.3f pid=%ld\n", frame_s, window_s,
                           (long)child);
                    fflush(stdout);
                    stop_child(child);
                    XCloseDisplay(display);
                    return 0;
                }
            }
        }
        const struct timespec pause = {0, kPollNs};
        nanosleep(&pause, NULL);
    }
}
