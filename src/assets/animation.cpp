#include "assets/animation.h"

#include <math.h>
#include <string.h>

#include "assets/text_file.h"
#include "core/heap.h"
#include "core/numbers.h"
#include "platform/platform.h"

registry animations = REGISTRY_OF(animation);

// cos 0.5 degrees in single precision: nearer than this, spherical interpolation is linear.
static const float SLERP_LINEAR_ABOVE = 0.99996197f;

int animation_create(animation* record, int32_t bone_count, int32_t frame_count)
{
    memset(record, 0, sizeof *record);
    record->bone_count = bone_count;
    record->frame_count = frame_count;
    int64_t pose_count = static_cast<int64_t>(bone_count) * frame_count;
    return pose_count <= INT32_MAX && heap_alloc_array(&record->parents, bone_count) &&
           heap_alloc_array(&record->frame_times, frame_count) &&
           heap_alloc_array(&record->poses, static_cast<int32_t>(pose_count));
}

int animation_free(animation* record)
{
    void* blocks[] = {record->parents, record->frame_times, record->poses};
    for (void* block : blocks)
        if (block)
            platform_heap_free(block);
    memset(record, 0, sizeof *record);
    return 1;
}

// "HIERARCHY " then one parent per bone, each found after the next space.
static int read_hierarchy(text_file* file, animation* record)
{
    file->have_line = read_content_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY);
    if (!file->have_line || strncmp(file->line, "HIERARCHY ", 10) != 0)
        return text_file_expected(file, "\"HIERARCHY\" and a parent for each bone");
    const char* cursor = file->line;
    for (int32_t bone = 0; bone < record->bone_count; ++bone) {
        cursor = strchr(cursor, ' ');
        if (!cursor)
            return text_file_report(file, "the hierarchy gives %d parents for %d bones", bone, record->bone_count);
        ++cursor;
        int32_t parent = 0;
        if (!parse_int(cursor, -1, &parent))
            return text_file_report(file, "the parent of bone %d is not an integer", bone);
        if (parent < -1 || parent >= bone)
            return text_file_report(file, "bone %d's parent %d must be -1 or an earlier bone", bone, parent);
        record->parents[bone] = parent;
    }
    return 1;
}

static int read_animation(text_file* file, animation* record)
{
    int32_t bone_count = 0, frame_count = 0;
    // Each bone of each frame has a pose line: the product is checked before the poses are sized.
    if (!text_file_count(file, "BONES ", &bone_count) || !text_file_count(file, "FRAMES ", &frame_count) ||
        !text_file_holds(file, static_cast<int64_t>(bone_count) * frame_count, "bone poses") ||
        !animation_create(record, bone_count, frame_count) || !read_hierarchy(file, record))
        return 0;
    for (int32_t frame = 0; frame < frame_count; ++frame) {
        if (!text_file_scan(file, 1, "%f", &record->frame_times[frame]))
            return text_file_expected(file, "the time of frame %d", frame);
        // Not a failure, but playback searches the keys as if they rose.
        if (frame > 0 && record->frame_times[frame] < record->frame_times[frame - 1])
            text_file_report(file, "frame %d's time %g comes before the previous frame's %g", frame,
                             static_cast<double>(record->frame_times[frame]),
                             static_cast<double>(record->frame_times[frame - 1]));
        bone_pose* pose = record->poses + static_cast<size_t>(frame) * bone_count;
        for (int32_t bone = 0; bone < bone_count; ++bone, ++pose)
            if (!text_file_scan_next(file, 7, "%f %f %f %f %f %f %f", &pose->translation.x, &pose->translation.y,
                                     &pose->translation.z, &pose->rotation[0], &pose->rotation[1],
                                     &pose->rotation[2], &pose->rotation[3]))
                return text_file_expected(file,
                                          "the pose of bone %d in frame %d (seven numbers, with no empty or comment "
                                          "line before it)",
                                          bone, frame);
    }
    return 1;
}

int animation_load_file(animation* record, const char* path)
{
    memset(record, 0, sizeof *record);
    text_file file;
    if (!text_file_open(&file, path))
        return 0;
    int ok = read_animation(&file, record);
    text_file_close(&file);
    if (!ok)
        animation_free(record);
    return ok;
}

int32_t load_animation(const char* name)
{
    return load_named<animation>(&animations, ASSET_ANIMATION, FOLDER_ANIMATIONS, name, animation_load_file,
                                 animation_free);
}

static void blend_rotation(const float* a, const float* b_in, float t, float* out)
{
    if (t <= 0.0f) {
        memcpy(out, a, 4 * sizeof(float));
        return;
    }
    if (t >= 1.0f) {
        memcpy(out, b_in, 4 * sizeof(float));
        return;
    }
    float b[4] = {b_in[0], b_in[1], b_in[2], b_in[3]};
    float c = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    if (c < 0.0f) { // the shorter way round
        c = -c;
        for (float& component : b)
            component = -component;
    }
    float wa = 1.0f - t, wb = t;
    if (c <= SLERP_LINEAR_ABOVE) {
        float theta = acosf(c);
        float s = sinf(theta);
        wa = sinf(theta - theta * t) / s;
        wb = sinf(theta * t) / s;
    }
    // Deliberately not renormalised.
    for (int i = 0; i < 4; ++i)
        out[i] = wa * a[i] + wb * b[i];
}

void sample_pose(const animation* record, float time, bone_pose* out)
{
    int32_t bones = record->bone_count;
    if (bones == 0)
        return; // no pose to give, and no block of poses to give it from
    if (record->frame_count == 0) {
        for (int32_t b = 0; b < bones; ++b)
            out[b] = {{0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
        return;
    }
    int32_t lo = 0, hi = record->frame_count - 1;
    while (lo < hi) {
        int32_t mid = (lo + hi) / 2;
        if (time >= record->frame_times[mid + 1])
            lo = mid + 1;
        else
            hi = mid;
    }
    int32_t key = lo;
    int32_t next = (key + 1) % record->frame_count;
    const bone_pose* from = record->poses + static_cast<size_t>(key) * bones;
    const bone_pose* to = record->poses + static_cast<size_t>(next) * bones;
    if (next == key) { // a single key: the span between keys is empty, so the key is the pose
        memcpy(out, from, static_cast<size_t>(bones) * sizeof(bone_pose));
        return;
    }
    float t = (time - record->frame_times[key]) / (record->frame_times[next] - record->frame_times[key]);
    for (int32_t b = 0; b < bones; ++b) {
        const bone_pose& a = from[b];
        const bone_pose& c = to[b];
        out[b].translation = vec3_add(a.translation, vec3_scale(vec3_sub(c.translation, a.translation), t));
        blend_rotation(a.rotation, c.rotation, t, out[b].rotation);
    }
}
