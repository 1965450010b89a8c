// The world's binary space partition tree of planes. Each room names one node as the root of its
// own sub-tree; walking from there tells whether a point lies in that room's open space.
#pragma once

#include <stdint.h>

#include "core/vec3.h"

struct bsp_plane {
    float a, b, c, d; // p is in front when a*p.x + b*p.y + c*p.z - d >= 0
};

struct bsp_node {
    bsp_plane plane;
    int32_t front; // child on the front side; 0 is a leaf of open space
    int32_t back;  // child on the back side; 0 is a solid leaf
};

// Because 0 marks a leaf, node 0 is never a child; it can only be a root named by a room.
struct collision_tree {
    int32_t node_count;
    bsp_node* nodes; // heap block
};

// Sets the count and allocates the nodes.
int collision_tree_create(collision_tree* tree, int32_t node_count);
// Releases the nodes; the tree is then empty. Always 1.
int collision_tree_free(collision_tree* tree);
// Reads "PLANES n", "NODES n", the planes, then one "plane front back" line per node. Every plane
// and child index must name an entry of the file; anything wrong leaves the tree empty and gives 0.
int collision_tree_load(collision_tree* tree, const char* path);

// Point location, for the camera's room and for the rooms' own check: from `root`, to the front
// child when a*x + b*y + c*z - d >= 0, else to the back child. Reaching a front leaf means the
// point lies in the open space under `root`: the number of nodes visited (at least 1). Reaching a
// back leaf means it does not (0), and so does a walk that reaches its 255th step, or a root
// outside the tree.
int32_t find_point_area(const collision_tree* tree, int32_t root, vec3 point);
