#include "assets/collision_tree.h"
#include "fuzz_input_file.h"

// A loaded tree is walked from every node, as rooms walk it, for a few points.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    collision_tree tree = {};
    if (!collision_tree_load(&tree, fuzz_input_file(data, size)))
        return 0;
    const vec3 points[] = {{0.0f, 0.0f, 0.0f}, {5.0f, -3.0f, 2.0f}, {-100.0f, 40.0f, 7.5f}};
    for (int32_t root = 0; root < tree.node_count && root < 64; ++root)
        for (const vec3& point : points)
            find_point_area(&tree, root, point);
    collision_tree_free(&tree);
    return 0;
}
