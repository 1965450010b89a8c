#include "assets/collision_tree.h"

#include "assets/text_file.h"
#include "core/heap.h"
#include "platform/platform.h"

int collision_tree_create(collision_tree* tree, int32_t node_count)
{
    tree->node_count = node_count;
    return heap_alloc_array(&tree->nodes, node_count);
}

int collision_tree_free(collision_tree* tree)
{
    if (tree->nodes)
        platform_heap_free(tree->nodes);
    tree->nodes = nullptr;
    tree->node_count = 0;
    return 1;
}

static int child_within(int32_t child, int32_t node_count)
{
    return child >= 0 && child < node_count;
}

static int read_node(text_file* file, int32_t i, const bsp_plane* planes, int32_t plane_count, bsp_node* node,
                     int32_t node_count)
{
    int32_t plane = 0;
    if (!text_file_scan(file, 3, "%i %i %i", &plane, &node->front, &node->back))
        return text_file_expected(file, "node %d (plane front back)", i);
    if (plane < 0 || plane >= plane_count)
        return text_file_report(file, "node %d names plane %d, but there are %d planes", i, plane, plane_count);
    if (!child_within(node->front, node_count))
        return text_file_report(file, "node %d's front child %d is outside the tree's %d nodes", i, node->front,
                                node_count);
    if (!child_within(node->back, node_count))
        return text_file_report(file, "node %d's back child %d is outside the tree's %d nodes", i, node->back,
                                node_count);
    node->plane = planes[plane];
    return 1;
}

static int read_tree(text_file* file, collision_tree* tree)
{
    int32_t plane_count = 0, node_count = 0;
    if (!text_file_count(file, "PLANES ", &plane_count) || !text_file_count(file, "NODES ", &node_count) ||
        !collision_tree_create(tree, node_count))
        return 0;
    bsp_plane* planes = nullptr;
    int ok = heap_alloc_array(&planes, plane_count);
    for (int32_t i = 0; ok && i < plane_count; ++i)
        if (!text_file_scan(file, 4, "%f %f %f %f", &planes[i].a, &planes[i].b, &planes[i].c, &planes[i].d))
            ok = text_file_expected(file, "plane %d (a b c d)", i);
    for (int32_t i = 0; ok && i < node_count; ++i)
        ok = read_node(file, i, planes, plane_count, &tree->nodes[i], node_count);
    if (planes)
        platform_heap_free(planes);
    return ok;
}

int collision_tree_load(collision_tree* tree, const char* path)
{
    collision_tree_free(tree);
    text_file file;
    if (!text_file_open(&file, path))
        return 0;
    int ok = read_tree(&file, tree);
    text_file_close(&file);
    if (!ok)
        collision_tree_free(tree);
    return ok;
}

enum { POINT_AREA_STEP_LIMIT = 255 };

int32_t find_point_area(const collision_tree* tree, int32_t root, vec3 point)
{
    int32_t node = root;
    for (int32_t count = 1; count < POINT_AREA_STEP_LIMIT; ++count) {
        if (node < 0 || node >= tree->node_count)
            return 0;
        const bsp_plane& plane = tree->nodes[node].plane;
        bool front = plane.a * point.x + plane.b * point.y + plane.c * point.z - plane.d >= 0.0f;
        int32_t child = front ? tree->nodes[node].front : tree->nodes[node].back;
        if (child == 0)
            return front ? count : 0;
        node = child;
    }
    return 0;
}
