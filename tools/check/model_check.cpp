// A model file read again section by section, in the game's order, naming the line where it breaks
// and every index that points outside what it indexes.
#include "assets/model.h"
#include "checks.h"
#include "data_lines.h"

namespace {

bool index_within(int32_t index, int32_t count)
{
    return index >= 0 && index < count;
}

// A run [first, end) of `count` things, such as a subset's triangles; reported when it does not fit.
bool run_fits(data_lines* file, const char* what, int32_t i, const char* things, int32_t first, int32_t end,
              int32_t count)
{
    if (first >= 0 && first <= end && end <= count)
        return true;
    report_problem(file->path, file->number, "%s %d covers %s %d to %d, but there are %d", what, i, things, first, end,
                   count);
    return false;
}

// `count` lines of three point indices, e.g. the triangles or the collision triangles.
bool read_triangles(data_lines* file, const char* what, int32_t count, int32_t point_count)
{
    for (int32_t i = 0; i < count; ++i) {
        int32_t p[3];
        if (!scan_data_line(file, false, text_of("%s %d (three point indices)", what, i), 3, "%i %i %i", &p[0], &p[1],
                            &p[2]))
            return false;
        for (int32_t corner : p)
            if (!index_within(corner, point_count)) {
                report_problem(file->path, file->number, "%s %d names point %d, but the model has %d points", what, i,
                               corner, point_count);
                return false;
            }
    }
    return true;
}

bool read_texcoords(data_lines* file, int32_t texcoord_count, int32_t triangle_count)
{
    for (int32_t i = 0; i < texcoord_count; ++i) {
        float u, v;
        if (!scan_data_line(file, false, text_of("texture coordinate %d (u v)", i), 2, "%f %f", &u, &v))
            return false;
    }
    for (int32_t t = 0; t < triangle_count; ++t) {
        int32_t c[3];
        if (!scan_data_line(file, false, text_of("the texture coordinates of triangle %d (three indices)", t), 3,
                            "%i %i %i", &c[0], &c[1], &c[2]))
            return false;
        for (int32_t corner : c)
            if (!index_within(corner, texcoord_count)) {
                report_problem(file->path, file->number,
                               "triangle %d names texture coordinate %d, but there are %d texture coordinates", t, corner,
                               texcoord_count);
                return false;
            }
    }
    return true;
}

bool read_weights(data_lines* file, int32_t weight_count, int32_t point_count)
{
    for (int32_t i = 0; i < weight_count; ++i) {
        int32_t bone;
        float x, y, z, factor;
        if (!scan_data_line(file, false, text_of("weight %d (bone x y z factor)", i), 5, "%i %f %f %f %f", &bone, &x, &y,
                            &z, &factor))
            return false;
        if (bone < 0) {
            report_problem(file->path, file->number, "weight %d names bone %d", i, bone);
            return false;
        }
    }
    for (int32_t i = 0; i < point_count; ++i) {
        int32_t first, count;
        if (!scan_data_line(file, false, text_of("the weights of point %d (first count)", i), 2, "%i %i", &first, &count))
            return false;
        if (first < 0 || count < 0 || static_cast<int64_t>(first) + count > weight_count) {
            report_problem(file->path, file->number,
                           "point %d takes weights %d to %d, but the model has %d weights", i, first,
                           first + count - 1, weight_count);
            return false;
        }
    }
    return true;
}

bool read_subsets(data_lines* file, int32_t subset_count, int32_t triangle_count)
{
    for (int32_t i = 0; i < subset_count; ++i) {
        char name[100];
        int32_t first, end;
        if (!scan_data_line(file, false, text_of("subset %d (texture first end)", i), 3, "%99s %i %i", name, &first,
                            &end))
            return false;
        if (!run_fits(file, "subset", i, "triangles", first, end, triangle_count))
            return false;
        // No error for the game, which draws the subset with the fallback texture; a modder wants to know.
        check_texture(name, {file->path, file->number});
    }
    return true;
}

// The header of the collision or occlusion triangles and the triangles themselves.
bool read_triangle_section(data_lines* file, const char* header, const char* what, int32_t point_count,
                           int32_t* triangle_count)
{
    return read_header(file, header, triangle_count) && read_triangles(file, what, *triangle_count, point_count);
}

bool read_colliders(data_lines* file, int32_t collider_count, int32_t point_count)
{
    int32_t triangle_count;
    if (!read_triangle_section(file, "COLLISION_TRIANGLES ", "collision triangle", point_count, &triangle_count))
        return false;
    for (int32_t i = 0; i < collider_count; ++i) {
        char material[TEXT_FILE_LINE_CAPACITY];
        int32_t first, end;
        if (!scan_data_line(file, false, text_of("collider %d (material first end)", i), 3, "%199s %i %i", material,
                            &first, &end))
            return false;
        if (!run_fits(file, "collider", i, "collision triangles", first, end, triangle_count))
            return false;
        if (material_from_name(material) < 0)
            report_problem(file->path, file->number, "unknown material \"%s\": it walks and sounds like stone", material);
    }
    return true;
}

bool read_occluders(data_lines* file, int32_t occluder_count, int32_t point_count)
{
    int32_t triangle_count;
    if (!read_triangle_section(file, "OCCLUSION_TRIANGLES ", "occlusion triangle", point_count, &triangle_count))
        return false;
    for (int32_t i = 0; i < occluder_count; ++i) {
        int32_t first, end;
        if (!scan_data_line(file, false, text_of("occluder %d (first end)", i), 2, "%i %i", &first, &end))
            return false;
        if (!run_fits(file, "occluder", i, "occlusion triangles", first, end, triangle_count))
            return false;
    }
    return true;
}

bool read_model(data_lines* file)
{
    int32_t points, triangles, texcoords, weights, subsets, colliders, occluders;
    if (!read_header(file, "POINTS ", &points) || !read_header(file, "TRIANGLES ", &triangles) ||
        !read_header(file, "TEXCOORDS ", &texcoords) || !read_header(file, "WEIGHTS ", &weights) ||
        !read_header(file, "SUBSETS ", &subsets) || !read_header(file, "COLLIDERS ", &colliders) ||
        !read_header(file, "OCCLUDERS ", &occluders))
        return false;
    for (int32_t i = 0; i < points; ++i) {
        float x, y, z;
        if (!scan_data_line(file, false, text_of("point %d (x y z)", i), 3, "%f %f %f", &x, &y, &z))
            return false;
    }
    return read_triangles(file, "triangle", triangles, points) &&
           (texcoords == 0 || read_texcoords(file, texcoords, triangles)) &&
           (weights == 0 || read_weights(file, weights, points)) && read_subsets(file, subsets, triangles) &&
           (colliders == 0 || read_colliders(file, colliders, points)) &&
           (occluders == 0 || read_occluders(file, occluders, points));
}

} // namespace

bool inspect_model(const std::string& path)
{
    return read_data_file(path, read_model);
}
