// Back to the asset state of a fresh process, for tests and fuzz targets that load worlds one after
// another in one process. Needs nothing but the game's libraries.
#pragma once

// Releases everything the registries, the name table and the world model hold and empties them.
void reset_assets();
