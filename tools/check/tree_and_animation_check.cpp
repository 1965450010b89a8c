// The collision tree and animation files read again in the game's order, naming the line where
// each breaks and every index that points outside what it indexes.
#include <string.h>

#include "checks.h"
#include "core/numbers.h"
#include "data_lines.h"

namespace {

bool read_tree(data_lines* file)
{
    int32_t plane_count, node_count;
    if (!read_header(file, "PLANES ", &plane_count) || !read_header(file, "NODES ", &node_count))
        return false;
    for (int32_t i = 0; i < plane_count; ++i) {
        float a, b, c, d;
        if (!scan_data_line(file, false, text_of("plane %d (a b c d)", i), 4, "%f %f %f %f", &a, &b, &c, &d))
            return false;
    }
    for (int32_t i = 0; i < node_count; ++i) {
        int32_t plane, front, back;
        if (!scan_data_line(file, false, text_of("node %d (plane front back)", i), 3, "%i %i %i", &plane, &front, &back))
            return false;
        if (plane < 0 || plane >= plane_count) {
            report_problem(file->path, file->number, "node %d names plane %d, but there are %d planes", i, plane,
                           plane_count);
            return false;
        }
        const char* sides[2] = {"front", "back"};
        int32_t children[2] = {front, back};
        for (int side = 0; side < 2; ++side)
            if (children[side] < 0 || children[side] >= node_count) {
                report_problem(file->path, file->number, "node %d's %s child %d is outside the tree's %d nodes", i,
                               sides[side], children[side], node_count);
                return false;
            }
    }
    return true;
}

// "HIERARCHY " and one parent per bone, each found after the next space, as the game reads it.
bool read_hierarchy(data_lines* file, int32_t bone_count)
{
    if (!data_lines_next_content(file)) {
        report_ended_before(file, "the \"HIERARCHY\" line");
        return false;
    }
    if (strncmp(file->line, "HIERARCHY ", 10) != 0) {
        report_problem(file->path, file->number, "expected \"HIERARCHY\" and a parent for each bone, found \"%s\"",
                       file->line);
        return false;
    }
    const char* cursor = file->line;
    for (int32_t bone = 0; bone < bone_count; ++bone) {
        cursor = strchr(cursor, ' ');
        if (!cursor) {
            report_problem(file->path, file->number, "the hierarchy gives %d parents for %d bones", bone, bone_count);
            return false;
        }
        ++cursor;
        int32_t parent;
        if (!parse_int(cursor, -1, &parent)) {
            report_problem(file->path, file->number, "the parent of bone %d is not an integer", bone);
            return false;
        }
        if (parent < -1 || parent >= bone) {
            report_problem(file->path, file->number, "bone %d's parent %d must be -1 or an earlier bone", bone, parent);
            return false;
        }
    }
    return true;
}

bool read_animation(data_lines* file)
{
    int32_t bone_count, frame_count;
    if (!read_header(file, "BONES ", &bone_count) || !read_header(file, "FRAMES ", &frame_count) ||
        !read_hierarchy(file, bone_count))
        return false;
    float previous_time = 0.0f;
    for (int32_t frame = 0; frame < frame_count; ++frame) {
        float time;
        if (!scan_data_line(file, false, text_of("the time of frame %d", frame), 1, "%f", &time))
            return false;
        // Not checked by the game, but playback searches the keys as if they rose.
        if (frame > 0 && time < previous_time)
            report_problem(file->path, file->number, "frame %d's time %g comes before the previous frame's %g", frame,
                           static_cast<double>(time), static_cast<double>(previous_time));
        previous_time = time;
        for (int32_t bone = 0; bone < bone_count; ++bone) {
            float pose[7];
            std::string what = text_of("the pose of bone %d in frame %d (seven numbers, with no empty or comment "
                                       "line before it)",
                                       bone, frame);
            if (!scan_data_line(file, true, what, 7, "%f %f %f %f %f %f %f", &pose[0], &pose[1], &pose[2], &pose[3],
                                &pose[4], &pose[5], &pose[6]))
                return false;
        }
    }
    return true;
}

} // namespace

bool inspect_collision_tree(const std::string& path)
{
    return read_data_file(path, read_tree);
}

bool inspect_animation(const std::string& path)
{
    return read_data_file(path, read_animation);
}
