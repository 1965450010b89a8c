// The same work through another software rasterizer: Mesa's llvmpipe, through OpenGL on an EGL
// display without a window. For every placement of the frame benchmark's walk the game draws its
// frame once to record its triangles (the sky is left out); then both sides draw exactly those
// triangles, in their order, with the same textures, and are timed:
//   ours      the recorded triangles drawn in bands by the given number of threads, as the game
//             draws them (nearest texels, depth test, and the game's light and tint tables);
//   llvmpipe  a depth and colour clear, the same triangles as clip-space vertices with w = the
//             view depth (so texture coordinates are interpolated with perspective), nearest
//             sampling, an alpha test for transparent texels, the depth test, no lighting, and
//             glFinish, with LP_NUM_THREADS set to the same number of threads.
// Each thread count runs in a child process of its own, because llvmpipe reads LP_NUM_THREADS once.
//
//   peer_llvmpipe [WIDTHxHEIGHT]...   (default: 640x480 1280x720 1920x1080)
#define GL_GLEXT_PROTOTYPES 1
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <vector>

#include "app/game.h"
#include "core/loop_state.h"
#include "core/frame.h"
#include "render/bands.h"
#include "render/frame.h"
#include "render/raster.h"
#include "shipped_game.h"

namespace {

using frame_clock = std::chrono::steady_clock;

struct recorded_triangle {
    const texture* tex;
    uint8_t tint, blend;
    screen_vertex corners[3];
};

std::vector<std::vector<recorded_triangle>> walk_frames; // the triangles of each placement

void keep_triangle(const texture* tex, uint8_t tint, uint8_t blend, const screen_vertex corners[3], void* context)
{
    auto* frame = static_cast<std::vector<recorded_triangle>*>(context);
    frame->push_back({tex, tint, blend, {corners[0], corners[1], corners[2]}});
}

// Called as each pass of a frame ends: after the translucent pass the whole frame is recorded.
void capture_after_translucent(frame_pass pass)
{
    if (pass == FRAME_PASS_TRANSLUCENT)
        visit_recorded_triangles(keep_triangle, &walk_frames.back());
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Our side: each frame's triangles recorded again and drawn in bands, after the colour and the
// depth are cleared as the other side clears them: a depth buffer left from the frame before would
// turn most of the next one away at the depth test.
double our_median_ms(int32_t threads)
{
    render_threads = threads;
    std::vector<double> times;
    for (int32_t round = 0; round < 3; ++round) {
        for (const auto& frame : walk_frames) {
            frame_clock::time_point start = frame_clock::now();
            memset(color_buffer, 0, static_cast<size_t>(frame_width) * static_cast<size_t>(frame_height) * sizeof(uint16_t));
            depth_buffer_clear();
            begin_band_recording();
            for (const recorded_triangle& t : frame)
                draw_triangle(t.tex, t.tint, t.blend, &t.corners[0], &t.corners[1], &t.corners[2]);
            draw_recorded_bands();
            times.push_back(std::chrono::duration<double, std::milli>(frame_clock::now() - start).count());
        }
    }
    render_threads = 1;
    return median(times);
}

struct gl_vertex {
    float x, y, z, w; // clip space
    float u, v;
};

// One run of triangles with the same texture and blending, as the game drew them in order.
struct gl_run {
    GLuint texture;
    bool translucent;
    GLint first;
    GLsizei count;
};

struct gl_frame {
    std::vector<gl_vertex> vertices;
    std::vector<gl_run> runs;
};

GLuint upload(const texture* tex, std::map<const texture*, GLuint>* uploaded)
{
    auto found = uploaded->find(tex);
    if (found != uploaded->end())
        return found->second;
    GLuint name;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    // The game's texels are 1-5-5-5 with the opaque bit on top: BGRA in reversed 1-5-5-5.
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB5_A1, tex->width, tex->height, 0, GL_BGRA, GL_UNSIGNED_SHORT_1_5_5_5_REV,
                 tex->texels);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    (*uploaded)[tex] = name;
    return name;
}

// Screen pixels (y down, centres at .5) and view depth w to clip space with that w.
gl_vertex to_clip(const screen_vertex& s, int32_t width, int32_t height)
{
    float x = s.sx / static_cast<float>(width) * 2.0f - 1.0f;
    float y = 1.0f - s.sy / static_cast<float>(height) * 2.0f;
    float z = 1.0f - 2.0f * 0.01f / s.w; // nearer is smaller, as GL_LESS wants
    return {x * s.w, y * s.w, z * s.w, s.w, s.u, s.v};
}

std::vector<gl_frame> prepare_gl_frames(int32_t width, int32_t height)
{
    std::map<const texture*, GLuint> uploaded;
    std::vector<gl_frame> frames;
    for (const auto& triangles : walk_frames) {
        gl_frame frame;
        for (const recorded_triangle& t : triangles) {
            GLuint name = upload(t.tex, &uploaded);
            bool translucent = t.blend != 0;
            if (frame.runs.empty() || frame.runs.back().texture != name || frame.runs.back().translucent != translucent)
                frame.runs.push_back({name, translucent, static_cast<GLint>(frame.vertices.size()), 0});
            for (const screen_vertex& corner : t.corners)
                frame.vertices.push_back(to_clip(corner, width, height));
            frame.runs.back().count += 3;
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

int start_llvmpipe(int32_t width, int32_t height)
{
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API))
        return 0;
    EGLContext context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, nullptr);
    if (context == EGL_NO_CONTEXT || !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context))
        return 0;
    GLuint framebuffer, colour, depth;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glGenRenderbuffers(1, &colour);
    glBindRenderbuffer(GL_RENDERBUFFER, colour);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGB5_A1, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
    glGenRenderbuffers(1, &depth);
    glBindRenderbuffer(GL_RENDERBUFFER, depth);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        return 0;
    glViewport(0, 0, width, height);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.5f);
    glBlendColor(0.0f, 0.0f, 0.0f, 0.5f);
    glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    return 1;
}

double llvmpipe_median_ms(const std::vector<gl_frame>& frames)
{
    std::vector<double> times;
    for (int32_t round = 0; round < 3; ++round) {
        for (const gl_frame& frame : frames) {
            frame_clock::time_point start = frame_clock::now();
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            glVertexPointer(4, GL_FLOAT, sizeof(gl_vertex), &frame.vertices[0].x);
            glTexCoordPointer(2, GL_FLOAT, sizeof(gl_vertex), &frame.vertices[0].u);
            for (const gl_run& run : frame.runs) {
                glBindTexture(GL_TEXTURE_2D, run.texture);
                // Translucent surfaces are mixed over what is below and leave the depth alone.
                if (run.translucent) {
                    glEnable(GL_BLEND);
                    glDepthMask(GL_FALSE);
                }
                glDrawArrays(GL_TRIANGLES, run.first, run.count);
                if (run.translucent) {
                    glDisable(GL_BLEND);
                    glDepthMask(GL_TRUE);
                }
            }
            glFinish();
            times.push_back(std::chrono::duration<double, std::milli>(frame_clock::now() - start).count());
        }
    }
    return median(times);
}

// The walk's triangles at this size, recorded by the game's own frame driver.
int record_walk(int32_t width, int32_t height)
{
    if (!start_shipped_game() || !use_frame_size(width, height))
        return 0;
    walk_frames.clear();
    frame_pass_ended = capture_after_translucent;
    render_threads = 2; // anything above one records
    render_alpha = 1.0f;
    for (int32_t i = 0; i < WALK_PLACEMENTS; ++i) {
        stand_at(placement_on_walk(i));
        game_time += 1.0f / 60.0f;
        real_time += 1.0 / 60.0;
        walk_frames.emplace_back();
        game_render();
    }
    frame_pass_ended = nullptr;
    render_threads = 1;
    return 1;
}

// In a child process: llvmpipe with `threads` threads against ours with as many. The walk is
// recorded here, so that our worker threads belong to this process (a forked child has none of
// its parent's), and ours is timed before llvmpipe starts threads of its own.
int compare(int32_t width, int32_t height, int32_t threads)
{
    if (!record_walk(width, height)) {
        fprintf(stderr, "the game did not start from the shipped data\n");
        return 1;
    }
    double ours = our_median_ms(threads);
    char count[16];
    snprintf(count, sizeof count, "%d", threads);
    setenv("LP_NUM_THREADS", count, 1);
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    setenv("GALLIUM_DRIVER", "llvmpipe", 1);
    if (!start_llvmpipe(width, height)) {
        fprintf(stderr, "no OpenGL context on an EGL surfaceless display\n");
        return 1;
    }
    const char* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    std::vector<gl_frame> frames = prepare_gl_frames(width, height);
    double peer = llvmpipe_median_ms(frames);
    size_t triangles = 0;
    for (const auto& frame : walk_frames)
        triangles += frame.size();
    printf("%5dx%-5d %d thread%s  ours %7.3f ms  llvmpipe %7.3f ms  ours/llvmpipe %.2f  (%zu triangles a frame; %s)\n",
           width, height, threads, threads == 1 ? " " : "s", ours, peer, ours / peer, triangles / walk_frames.size(),
           renderer ? renderer : "?");
    fflush(stdout);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::pair<int32_t, int32_t>> sizes;
    for (int i = 1; i < argc; ++i) {
        int width, height;
        if (sscanf(argv[i], "%dx%d", &width, &height) != 2 || width < 8 || height < 8) {
            fprintf(stderr, "usage: %s [WIDTHxHEIGHT]...\n", argv[0]);
            return 2;
        }
        sizes.push_back({width, height});
    }
    if (sizes.empty())
        sizes = {{640, 480}, {1280, 720}, {1920, 1080}};
    int status = 0;
    for (const auto& size : sizes) {
        for (int32_t threads = 1; threads <= 2; ++threads) {
            pid_t child = fork();
            if (child == 0)
                _exit(compare(size.first, size.second, threads));
            int child_status = 1;
            waitpid(child, &child_status, 0);
            status |= !(WIFEXITED(child_status) && WEXITSTATUS(child_status) == 0);
        }
    }
    return status;
}
