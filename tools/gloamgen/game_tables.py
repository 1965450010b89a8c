"""The names the game itself fixes, read from the game's own tables so that each list is written
once: the materials (src/assets/model.cpp), the sounds the game loads by itself at start-up
(src/game/fixed_sounds.cpp) and the six sky faces (src/render/sky.cpp)."""
import os
import re

SRC = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "src")


def _table_strings(relative, table):
    """The string literals of the C++ table `table` (its name and "["), in order."""
    with open(os.path.join(SRC, relative), encoding="utf-8") as f:
        text = f.read()
    start = text.index(table)
    return re.findall(r'"([^"]*)"', text[text.index("{", start):text.index("};", start)])


MATERIALS = _table_strings("assets/model.cpp", "material_names[")      # in the order of MATERIAL_*
FIXED_SOUNDS = _table_strings("game/fixed_sounds.cpp", "fixed_sounds[")
SKY_FACES = _table_strings("render/sky.cpp", "sky_texture_names[")
