#include "assets/model.h"

#include <math.h>
#include <string.h>

#include "assets/text_file.h"
#include "assets/texture.h"
#include "core/diagnostics.h"
#include "core/heap.h"
#include "core/text.h"
#include "platform/platform.h"

registry models = REGISTRY_OF(model);

const char* const material_names[MATERIAL_COUNT] = {"stone", "ground", "wood", "metal", "carpet", "ceramic"};

static const float FLOAT_LARGEST = 3.4028235e38f;

int32_t material_from_name(const char* name)
{
    for (int32_t i = 0; i < MATERIAL_COUNT; ++i)
        if (text_equal_ignoring_case(name, material_names[i]))
            return i;
    return -1;
}

int model_create(model* record, int32_t point_count, int32_t triangle_count, int32_t subset_count)
{
    memset(record, 0, sizeof *record);
    record->point_count = point_count;
    record->triangle_count = triangle_count;
    record->subset_count = subset_count;
    if (heap_alloc_array(&record->points, point_count) && heap_alloc_array(&record->normals, point_count) &&
        heap_alloc_array(&record->texcoords, point_count) && heap_alloc_array(&record->triangles, triangle_count) &&
        heap_alloc_array(&record->subsets, subset_count))
        return 1;
    model_free(record);
    return 0;
}

int model_create_weights(model* record, int32_t weight_count)
{
    record->weight_count = weight_count;
    return heap_alloc_array(&record->weights, weight_count) &&
           heap_alloc_array(&record->point_weights, record->point_count);
}

int model_create_colliders(model* record, int32_t collider_count, int32_t collision_triangle_count)
{
    record->collider_count = collider_count;
    record->collision_triangle_count = collision_triangle_count;
    return heap_alloc_array(&record->colliders, collider_count) &&
           heap_alloc_array(&record->collision_triangles, collision_triangle_count);
}

int model_create_occluders(model* record, int32_t occluder_count, int32_t occlusion_triangle_count)
{
    record->occluder_count = occluder_count;
    record->occlusion_triangle_count = occlusion_triangle_count;
    // Deliberately collider-sized records, used as packed pairs.
    return heap_alloc_array(&record->occluders, occluder_count, sizeof(model_collider)) &&
           heap_alloc_array(&record->occlusion_triangles, occlusion_triangle_count);
}

int model_free(model* record)
{
    void* blocks[] = {record->points, record->triangles, record->subsets, record->normals, record->texcoords,
                      record->weights, record->point_weights, record->collision_triangles, record->colliders,
                      record->occlusion_triangles, record->occluders};
    for (void* block : blocks)
        if (block)
            platform_heap_free(block);
    memset(record, 0, sizeof *record);
    return 1;
}

int model_compute_normals(model* record)
{
    for (int32_t i = 0; i < record->point_count; ++i)
        record->normals[i] = {0.0f, 0.0f, 0.0f};
    for (int32_t t = 0; t < record->triangle_count; ++t) {
        const int32_t* corner = record->triangles[t].points;
        vec3 p0 = record->points[corner[0]];
        // Not normalised: larger triangles weigh more.
        vec3 n = vec3_cross(vec3_sub(record->points[corner[1]], p0), vec3_sub(record->points[corner[2]], p0));
        for (int k = 0; k < 3; ++k)
            record->normals[corner[k]] = vec3_add(record->normals[corner[k]], n);
    }
    for (int32_t i = 0; i < record->point_count; ++i)
        record->normals[i] = vec3_normalise(record->normals[i]);
    return 1;
}

static void widen(vec3* min, vec3* max, vec3 p)
{
    min->x = p.x < min->x ? p.x : min->x;
    min->y = p.y < min->y ? p.y : min->y;
    min->z = p.z < min->z ? p.z : min->z;
    max->x = p.x > max->x ? p.x : max->x;
    max->y = p.y > max->y ? p.y : max->y;
    max->z = p.z > max->z ? p.z : max->z;
}

int model_compute_bounds(model* record)
{
    const vec3 lowest = {FLOAT_LARGEST, FLOAT_LARGEST, FLOAT_LARGEST};
    const vec3 highest = {-FLOAT_LARGEST, -FLOAT_LARGEST, -FLOAT_LARGEST};
    for (int32_t c = 0; c < record->collider_count; ++c) {
        model_collider& collider = record->colliders[c];
        collider.min = lowest;
        collider.max = highest;
        for (int32_t t = collider.first; t < collider.end; ++t)
            for (int k = 0; k < 3; ++k)
                widen(&collider.min, &collider.max, record->points[record->collision_triangles[t].points[k]]);
    }
    record->bounds_min = lowest;
    record->bounds_max = highest;
    for (int32_t i = 0; i < record->point_count; ++i)
        widen(&record->bounds_min, &record->bounds_max, record->points[i]);
    return 1;
}

static int index_within(int32_t index, int32_t count)
{
    return index >= 0 && index < count;
}

// A run [first, end) of `count` things, such as a subset's triangles; reported when it does not fit.
static int run_fits(text_file* file, const char* what, int32_t i, const char* things, int32_t first, int32_t end,
                    int32_t count)
{
    if (first >= 0 && first <= end && end <= count)
        return 1;
    return text_file_report(file, "%s %d covers %s %d to %d, but there are %d", what, i, things, first, end, count);
}

static int run_within(int32_t first, int32_t length, int32_t count)
{
    return first >= 0 && length >= 0 && static_cast<int64_t>(first) + length <= count;
}

static int read_triangle(text_file* file, const char* what, int32_t i, model_triangle* triangle, int32_t point_count)
{
    int32_t* p = triangle->points;
    if (!text_file_scan(file, 3, "%i %i %i", &p[0], &p[1], &p[2]))
        return text_file_expected(file, "%s %d (three point indices)", what, i);
    for (int k = 0; k < 3; ++k)
        if (!index_within(p[k], point_count))
            return text_file_report(file, "%s %d names point %d, but the model has %d points", what, i, p[k],
                                    point_count);
    return 1;
}

// The texture-coordinate table, then one line per triangle naming a table entry for each corner;
// the coordinates are stored per point, the last triangle in the file winning at shared points.
static int read_texcoords(text_file* file, model* record, int32_t texcoord_count)
{
    model_texcoord* table = nullptr;
    if (!heap_alloc_array(&table, texcoord_count))
        return 0;
    int ok = 1;
    for (int32_t i = 0; ok && i < texcoord_count; ++i)
        if (!text_file_scan(file, 2, "%f %f", &table[i].u, &table[i].v))
            ok = text_file_expected(file, "texture coordinate %d (u v)", i);
    for (int32_t t = 0; ok && t < record->triangle_count; ++t) {
        int32_t corner[3];
        if (!text_file_scan(file, 3, "%i %i %i", &corner[0], &corner[1], &corner[2]))
            ok = text_file_expected(file, "the texture coordinates of triangle %d (three indices)", t);
        for (int k = 0; ok && k < 3; ++k) {
            if (!index_within(corner[k], texcoord_count))
                ok = text_file_report(file,
                                      "triangle %d names texture coordinate %d, but there are %d texture coordinates",
                                      t, corner[k], texcoord_count);
            else
                record->texcoords[record->triangles[t].points[k]] = table[corner[k]];
        }
    }
    platform_heap_free(table);
    return ok;
}

static int read_weights(text_file* file, model* record, int32_t weight_count)
{
    if (!model_create_weights(record, weight_count))
        return 0;
    for (int32_t i = 0; i < weight_count; ++i) {
        model_weight& w = record->weights[i];
        if (!text_file_scan(file, 5, "%i %f %f %f %f", &w.bone, &w.position.x, &w.position.y, &w.position.z,
                            &w.factor))
            return text_file_expected(file, "weight %d (bone x y z factor)", i);
        if (w.bone < 0)
            return text_file_report(file, "weight %d names bone %d", i, w.bone);
    }
    for (int32_t i = 0; i < record->point_count; ++i) {
        point_weight_run& run = record->point_weights[i];
        if (!text_file_scan(file, 2, "%i %i", &run.first_weight, &run.weight_count))
            return text_file_expected(file, "the weights of point %d (first count)", i);
        if (!run_within(run.first_weight, run.weight_count, weight_count))
            return text_file_report(file, "point %d takes weights %d to %lld, but the model has %d weights", i,
                                    run.first_weight,
                                    static_cast<long long>(run.first_weight) + run.weight_count - 1, weight_count);
    }
    return 1;
}

static int read_subsets(text_file* file, model* record)
{
    for (int32_t i = 0; i < record->subset_count; ++i) {
        model_subset& subset = record->subsets[i];
        char name[100];
        if (!text_file_scan(file, 3, "%99s %i %i", name, &subset.first_triangle, &subset.end_triangle))
            return text_file_expected(file, "subset %d (texture first end)", i);
        if (!run_fits(file, "subset", i, "triangles", subset.first_triangle, subset.end_triangle,
                      record->triangle_count))
            return 0;
        // A texture that cannot be loaded is no error: the subset draws with the fallback.
        int32_t reported = diagnostics_reported;
        int32_t texture_index = find_or_load_texture(name);
        if (texture_index < 0)
            report_unloaded(reported, "texture", FOLDER_TEXTURES, name, file->path, file->reader.line);
        subset.texture = texture_index >= 0 ? texture_index : fallback_texture;
    }
    return 1;
}

static int read_triangles(text_file* file, const char* what, model_triangle* triangles, int32_t count,
                          int32_t point_count)
{
    for (int32_t i = 0; i < count; ++i)
        if (!read_triangle(file, what, i, &triangles[i], point_count))
            return 0;
    return 1;
}

static int read_colliders(text_file* file, model* record, int32_t collider_count)
{
    int32_t triangle_count = 0;
    if (!text_file_count(file, "COLLISION_TRIANGLES ", &triangle_count) ||
        !model_create_colliders(record, collider_count, triangle_count) ||
        !read_triangles(file, "collision triangle", record->collision_triangles, triangle_count, record->point_count))
        return 0;
    for (int32_t i = 0; i < collider_count; ++i) {
        model_collider& collider = record->colliders[i];
        char name[TEXT_FILE_LINE_CAPACITY];
        if (!text_file_scan(file, 3, "%199s %i %i", name, &collider.first, &collider.end))
            return text_file_expected(file, "collider %d (material first end)", i);
        if (!run_fits(file, "collider", i, "collision triangles", collider.first, collider.end, triangle_count))
            return 0;
        // An unknown material is no error: it walks like stone.
        int32_t material = material_from_name(name);
        if (material < 0)
            text_file_report(file, "unknown material \"%s\": it walks and sounds like stone", name);
        collider.material = material >= 0 ? material : MATERIAL_STONE;
    }
    return 1;
}

static int read_occluders(text_file* file, model* record, int32_t occluder_count)
{
    int32_t triangle_count = 0;
    if (!text_file_count(file, "OCCLUSION_TRIANGLES ", &triangle_count) ||
        !model_create_occluders(record, occluder_count, triangle_count) ||
        !read_triangles(file, "occlusion triangle", record->occlusion_triangles, triangle_count, record->point_count))
        return 0;
    for (int32_t i = 0; i < occluder_count; ++i) {
        model_occluder& occluder = record->occluders[i];
        if (!text_file_scan(file, 2, "%i %i", &occluder.first, &occluder.end))
            return text_file_expected(file, "occluder %d (first end)", i);
        if (!run_fits(file, "occluder", i, "occlusion triangles", occluder.first, occluder.end, triangle_count))
            return 0;
    }
    return 1;
}

static int read_model(text_file* file, model* record)
{
    int32_t points = 0, triangles = 0, texcoords = 0, weights = 0, subsets = 0, colliders = 0, occluders = 0;
    if (!text_file_count(file, "POINTS ", &points) || !text_file_count(file, "TRIANGLES ", &triangles) ||
        !text_file_count(file, "TEXCOORDS ", &texcoords) || !text_file_count(file, "WEIGHTS ", &weights) ||
        !text_file_count(file, "SUBSETS ", &subsets) || !text_file_count(file, "COLLIDERS ", &colliders) ||
        !text_file_count(file, "OCCLUDERS ", &occluders))
        return 0;
    if (!model_create(record, points, triangles, subsets))
        return 0;
    for (int32_t i = 0; i < points; ++i) {
        vec3& p = record->points[i];
        if (!text_file_scan(file, 3, "%f %f %f", &p.x, &p.y, &p.z))
            return text_file_expected(file, "point %d (x y z)", i);
    }
    if (!read_triangles(file, "triangle", record->triangles, triangles, points))
        return 0;
    if (texcoords > 0 && !read_texcoords(file, record, texcoords))
        return 0;
    if (weights > 0 && !read_weights(file, record, weights))
        return 0;
    if (!read_subsets(file, record))
        return 0;
    if (colliders > 0 && !read_colliders(file, record, colliders))
        return 0;
    if (occluders > 0 && !read_occluders(file, record, occluders))
        return 0;
    // Anything after the last section is ignored.
    return model_compute_normals(record) && model_compute_bounds(record);
}

int model_load_file(model* record, const char* path)
{
    memset(record, 0, sizeof *record);
    text_file file;
    if (!text_file_open(&file, path))
        return 0;
    int ok = read_model(&file, record);
    text_file_close(&file);
    if (!ok)
        model_free(record);
    return ok;
}

int32_t load_model(const char* name)
{
    return load_named<model>(&models, ASSET_MODEL, FOLDER_MODELS, name, model_load_file, model_free);
}
