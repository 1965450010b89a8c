"""Furniture and fittings, each a small model with its origin on the floor (or on the wall, for
fittings hung on walls) and its front toward +z.  Furniture is solid for the player; most of it is
too small to hide anything, so only the large pieces carry occluders."""
import math

from . import game_tables
from .geometry import Model, planar_uv

STONE, GROUND, WOOD, METAL, CARPET, CERAMIC = game_tables.MATERIALS


def prism(m, centre, radius, h0, h1, sides, texture, caps=True, cap_texture=None, uv_height=1.0,
          rotate=0.0, radius_top=None):
    """An upright many-sided prism (barrels, legs, cauldrons); texture wraps once around it."""
    cx, cz = centre
    rt = radius if radius_top is None else radius_top
    ring0, ring1 = [], []
    for i in range(sides + 1):
        a = 2 * math.pi * i / sides + rotate
        ring0.append((cx + radius * math.sin(a), h0, cz + radius * math.cos(a)))
        ring1.append((cx + rt * math.sin(a), h1, cz + rt * math.cos(a)))
    for i in range(sides):
        a = 2 * math.pi * (i + 0.5) / sides + rotate
        facing = (math.sin(a), 0, math.cos(a))
        u0, u1 = i / sides, (i + 1) / sides
        v0, v1 = 0.0, (h1 - h0) / uv_height
        m.quad(texture, [ring0[i], ring0[i + 1], ring1[i + 1], ring1[i]],
               [(u0, v1), (u1, v1), (u1, v0), (u0, v0)], facing)
    if caps:
        tex = cap_texture or texture
        for ring, h, facing in ((ring1, h1, (0, 1, 0)), (ring0, h0, (0, -1, 0))):
            c = m.point((cx, h, cz), (0.5, 0.5))
            r = radius if ring is ring0 else rt
            ids = [m.point(p, (0.5 + (p[0] - cx) / (2 * r), 0.5 + (p[2] - cz) / (2 * r))) for p in ring]
            for i in range(sides):
                m.triangle(tex, c, ids[i], ids[i + 1], facing)


def flame(m, base, size=0.25, texture="flame@de9.png"):
    """Two crossed upright quads of the flame texture: emissive, cut out and double-sided."""
    x, h, z = base
    w = size * 0.5
    for dx, dz in ((1, 0), (0, 1)):
        m.quad(texture, [(x - w * dx, h, z - w * dz), (x + w * dx, h, z + w * dz),
                         (x + w * dx, h + size * 1.6, z + w * dz), (x - w * dx, h + size * 1.6, z - w * dz)],
               [(0, 1), (1, 1), (1, 0), (0, 0)], (dz, 0, -dx))


def table(w=1.6, d=0.8, h=0.78):
    m = Model("table.mdl")
    m.box((-w / 2, h - 0.07, -d / 2), (w / 2, h, d / 2), {"all": "wood_dark.png"}, uvscale=1.0)
    for sx in (-1, 1):
        for sz in (-1, 1):
            x, z = sx * (w / 2 - 0.1), sz * (d / 2 - 0.1)
            m.box((x - 0.05, 0, z - 0.05), (x + 0.05, h - 0.07, z + 0.05), {"all": "wood_dark.png"},
                  skip=("-h", "+h"))
    solid(m, (-w / 2, 0, -d / 2), (w / 2, h, d / 2), WOOD)
    return m


def solid(m, lo, hi, material):
    """An invisible collision block (furniture is simpler to walk around as a whole)."""
    tmp = Model("tmp")
    tmp.box(lo, hi, {}, material=material)
    m.colliders += tmp.colliders


def bench(w=1.4):
    m = Model("bench.mdl")
    m.box((-w / 2, 0.38, -0.17), (w / 2, 0.45, 0.17), {"all": "wood_dark.png"})
    for sx in (-1, 1):
        m.box((sx * (w / 2 - 0.12) - 0.04, 0, -0.14), (sx * (w / 2 - 0.12) + 0.04, 0.38, 0.14),
              {"all": "wood_dark.png"}, skip=("-h", "+h"))
    solid(m, (-w / 2, 0, -0.17), (w / 2, 0.45, 0.17), WOOD)
    return m


def barrel():
    m = Model("barrel.mdl")
    prism(m, (0, 0), 0.3, 0, 0.45, 10, "barrel.png", caps=False, uv_height=0.9, radius_top=0.36)
    prism(m, (0, 0), 0.36, 0.45, 0.9, 10, "barrel.png", cap_texture="barrel_top.png", uv_height=0.9,
          radius_top=0.3)
    solid(m, (-0.34, 0, -0.34), (0.34, 0.9, 0.34), WOOD)
    return m


def crate(s=0.7):
    m = Model("crate.mdl")
    m.box((-s / 2, 0, -s / 2), (s / 2, s, s / 2), {"all": "crate.png"}, material=WOOD, uvscale=s, skip=("-h",))
    return m


def bookshelf():
    m = Model("bookshelf.mdl")
    w, d, h = 1.8, 0.4, 2.4
    m.box((-w / 2, 0, -d / 2), (w / 2, h, d / 2), {"all": "wood_dark.png", "+z": "books.png"},
          material=WOOD, skip=("-h",), uvscale=2.4, occlude=False)
    # the front face is redone with the shelves' picture mapped once across it
    m.subsets["books.png"] = []
    m.quad("books.png", [(-w / 2, 0, d / 2), (w / 2, 0, d / 2), (w / 2, h, d / 2), (-w / 2, h, d / 2)],
           [(0, 1), (1, 1), (1, 0), (0, 0)], (0, 0, 1))
    return m


def bed():
    m = Model("bed.mdl")
    m.box((-0.8, 0.0, -1.05), (0.8, 0.45, 1.05), {"all": "wood_dark.png"}, skip=("-h", "+h"))
    m.box((-0.75, 0.45, -0.95), (0.75, 0.62, 1.0), {"all": "linen.png"}, skip=("-h",), uvscale=1.5)
    m.box((-0.8, 0, -1.15), (0.8, 1.3, -1.05), {"all": "wood_dark.png"}, skip=("-h",))
    m.box((-0.55, 0.62, -0.9), (0.55, 0.75, -0.55), {"all": "linen.png"}, skip=("-h",), uvscale=0.6)
    solid(m, (-0.8, 0, -1.15), (0.8, 0.62, 1.05), WOOD)
    return m


def chest():
    m = Model("chest.mdl")
    m.box((-0.5, 0, -0.28), (0.5, 0.5, 0.28), {"all": "chest.png"}, material=WOOD, skip=("-h",), uvscale=1.0)
    return m


def torch():
    """A torch in an iron bracket; origin at the wall, the torch standing out along +z."""
    m = Model("torch.mdl")
    m.box((-0.04, -0.15, 0.0), (0.04, 0.0, 0.18), {"all": "iron.png"}, skip=())
    prism(m, (0, 0.2), 0.035, -0.05, 0.35, 6, "wood_dark.png", rotate=0.3)
    prism(m, (0, 0.2), 0.05, 0.25, 0.38, 6, "embers@e8.png", rotate=0.3)
    flame(m, (0, 0.36, 0.2), 0.22)
    return m


def candle():
    m = Model("candle.mdl")
    prism(m, (0, 0), 0.06, 0, 0.03, 8, "iron.png")
    prism(m, (0, 0), 0.025, 0.03, 0.2, 6, "candle.png")
    flame(m, (0, 0.2, 0), 0.06)
    return m


def candelabra():
    m = Model("candelabra.mdl")
    prism(m, (0, 0), 0.12, 0, 0.04, 8, "iron.png")
    prism(m, (0, 0), 0.02, 0.04, 0.35, 6, "iron.png")
    m.box((-0.22, 0.33, -0.015), (0.22, 0.36, 0.015), {"all": "iron.png"})
    for x in (-0.2, 0.0, 0.2):
        prism(m, (x, 0), 0.022, 0.36 + (0.04 if x == 0 else 0), 0.52 + (0.04 if x == 0 else 0), 6, "candle.png")
        flame(m, (x, 0.52 + (0.04 if x == 0 else 0), 0), 0.06)
    return m


def fireplace(brick="brick.png"):
    """A hearth standing against a wall (the wall behind it is z = 0, the room toward +z)."""
    m = Model("fireplace.mdl")
    w, d = 2.2, 0.7
    for sx in (-1, 1):
        x0 = sx * (w / 2) if sx < 0 else w / 2 - 0.35
        m.box((x0, 0, 0), (x0 + 0.35, 1.4, d), {"all": brick}, skip=("-h", "-z"), uvscale=1.0)
    m.box((-w / 2 - 0.1, 1.4, 0), (w / 2 + 0.1, 1.65, d + 0.12), {"all": "stone_floor.png"}, skip=("-z",), uvscale=1.0)
    m.box((-w / 2, 1.65, 0), (w / 2, 2.6, d - 0.15), {"all": brick}, skip=("-z", "+h"), uvscale=1.0)
    # the fire box: soot-black back, hearth stone, logs, embers and flames
    m.quad("soot.png", [(-w / 2 + 0.35, 0, 0.01), (w / 2 - 0.35, 0, 0.01), (w / 2 - 0.35, 1.4, 0.01),
                        (-w / 2 + 0.35, 1.4, 0.01)], [(0, 1), (1, 1), (1, 0), (0, 0)], (0, 0, 1))
    m.quad("stone_floor.png", [(-w / 2 + 0.35, 0.08, 0), (w / 2 - 0.35, 0.08, 0), (w / 2 - 0.35, 0.08, d),
                               (-w / 2 + 0.35, 0.08, d)], [(0, 0), (1.5, 0), (1.5, 0.7), (0, 0.7)], (0, 1, 0))
    m.box((-w / 2 + 0.35, 0, d - 0.02), (w / 2 - 0.35, 0.08, d), {"all": "stone_floor.png"}, skip=("-h", "+h"))
    m.box((-0.45, 0.08, 0.25), (0.45, 0.22, 0.4), {"all": "wood_dark.png"}, skip=("-h",))
    m.box((-0.35, 0.16, 0.35), (0.35, 0.28, 0.48), {"all": "wood_dark.png"}, skip=("-h",))
    m.quad("embers@e8.png", [(-0.5, 0.1, 0.15), (0.5, 0.1, 0.15), (0.5, 0.1, 0.6), (-0.5, 0.1, 0.6)],
           [(0, 0), (2, 0), (2, 1), (0, 1)], (0, 1, 0))
    for x, s in ((-0.25, 0.42), (0.05, 0.55), (0.3, 0.38)):
        flame(m, (x, 0.2, 0.38), s)
    solid(m, (-w / 2, 0, 0), (w / 2, 1.4, d), STONE)
    return m


def weapon_rack():
    m = Model("weapon_rack.mdl")
    m.box((-1.0, 0, -0.2), (1.0, 0.12, 0.2), {"all": "wood_dark.png"}, skip=("-h",))
    m.box((-1.0, 1.5, -0.08), (1.0, 1.6, 0.08), {"all": "wood_dark.png"})
    for sx in (-1, 1):
        m.box((sx * 0.95 - 0.05, 0.12, -0.05), (sx * 0.95 + 0.05, 1.5, 0.05), {"all": "wood_dark.png"}, skip=("-h", "+h"))
    for i in range(6):
        x = -0.7 + i * 0.28
        prism(m, (x, 0.0), 0.02, 0.12, 2.0, 5, "wood_dark.png", caps=False)
        prism(m, (x, 0.0), 0.04, 2.0, 2.25, 4, "env_steel.png", radius_top=0.001, caps=False)
    solid(m, (-1.0, 0, -0.2), (1.0, 2.0, 0.2), WOOD)
    return m


def armour():
    """A suit of polished plate on a stand: every metal part mirrors the room (environment map)."""
    m = Model("armour.mdl")
    prism(m, (0, 0), 0.28, 0, 0.08, 8, "wood_dark.png")
    prism(m, (0, 0), 0.03, 0.08, 0.85, 6, "wood_dark.png", caps=False)
    for sx in (-1, 1):
        prism(m, (sx * 0.11, 0), 0.07, 0.15, 0.85, 8, "env_steel.png", radius_top=0.08)
    prism(m, (0, 0), 0.2, 0.85, 1.05, 10, "env_steel.png", radius_top=0.22, caps=False)
    prism(m, (0, 0), 0.22, 1.05, 1.45, 10, "env_steel.png", radius_top=0.25)
    for sx in (-1, 1):
        prism(m, (sx * 0.31, 0), 0.09, 1.35, 1.48, 8, "env_steel.png")
        prism(m, (sx * 0.31, 0), 0.06, 0.9, 1.35, 8, "env_steel.png", caps=False)
    prism(m, (0, 0), 0.06, 1.45, 1.52, 6, "iron.png", caps=False)
    prism(m, (0, 0), 0.12, 1.52, 1.78, 10, "env_steel.png", radius_top=0.1)
    m.box((-0.09, 1.6, 0.1), (0.09, 1.63, 0.125), {"all": "soot.png"})
    solid(m, (-0.42, 0, -0.3), (0.42, 1.8, 0.3), METAL)
    return m


def shield():
    """A round polished shield hung on a wall (origin at the wall, face toward +z)."""
    m = Model("shield.mdl")
    sides = 16
    r = 0.42
    c = m.point((0, 0, 0.1), (0.5, 0.5))
    ring = [m.point((r * math.sin(2 * math.pi * i / sides), r * math.cos(2 * math.pi * i / sides), 0.02),
                    (0, 0)) for i in range(sides + 1)]
    for i in range(sides):
        m.triangle("env_steel.png", c, ring[i], ring[i + 1], (0, 0, 1))
    return m


def windlass():
    """Posts, beam, rope and bucket over the well; origin at the well's centre on the ground."""
    m = Model("windlass.mdl")
    for sx in (-1, 1):
        m.box((sx * 1.0 - 0.08, 1.0, -0.08), (sx * 1.0 + 0.08, 2.7, 0.08), {"all": "wood_dark.png"}, material=WOOD,
              skip=("-h",))
    m.box((-1.25, 2.7, -0.45), (1.25, 2.8, 0.45), {"all": "wood_dark.png"})
    prism_x(m, 0.08, -0.92, 0.92, 2.3, "wood_dark.png")
    m.box((-0.015, 1.35, -0.015), (0.015, 2.25, 0.015), {"all": "rope.png"}, skip=("+h", "-h"))
    prism(m, (0, 0), 0.16, 1.05, 1.35, 8, "barrel.png", radius_top=0.19, cap_texture="barrel_top.png")
    return m


def prism_x(m, r, x0, x1, h, texture, sides=8):
    ring0, ring1 = [], []
    for i in range(sides + 1):
        a = 2 * math.pi * i / sides
        ring0.append((x0, h + r * math.sin(a), r * math.cos(a)))
        ring1.append((x1, h + r * math.sin(a), r * math.cos(a)))
    for i in range(sides):
        a = 2 * math.pi * (i + 0.5) / sides
        m.quad(texture, [ring0[i], ring0[i + 1], ring1[i + 1], ring1[i]],
               [(0, i / sides), (0, (i + 1) / sides), (2, (i + 1) / sides), (2, i / sides)],
               (0, math.sin(a), math.cos(a)))


def brazier():
    m = Model("brazier.mdl")
    for i in range(3):
        a = 2 * math.pi * i / 3
        x, z = 0.25 * math.sin(a), 0.25 * math.cos(a)
        m.box((x - 0.03, 0, z - 0.03), (x + 0.03, 0.7, z + 0.03), {"all": "iron.png"}, skip=("-h",))
    prism(m, (0, 0), 0.22, 0.7, 0.95, 10, "iron.png", radius_top=0.36, caps=False)
    prism(m, (0, 0), 0.34, 0.88, 0.9, 10, "embers@e8.png", caps=True, radius_top=0.34)
    for x, z, s in ((0, 0, 0.5), (-0.12, 0.08, 0.35), (0.12, -0.06, 0.4)):
        flame(m, (x, 0.9, z), s)
    solid(m, (-0.36, 0, -0.36), (0.36, 0.95, 0.36), METAL)
    return m


def bones():
    m = Model("bones.mdl")
    pieces = [(-0.3, 0.1, 0.45, 20), (0.2, -0.2, 0.4, -35), (0.0, 0.3, 0.3, 70), (0.35, 0.25, 0.35, 5)]
    for x, z, l, a in pieces:
        sub = Model("bone")
        sub.box((-l / 2, 0, -0.025), (l / 2, 0.05, 0.025), {"all": "bone.png"}, skip=("-h",))
        m.merge(sub, (x, 0, z), a)
    prism(m, (-0.1, -0.35), 0.11, 0, 0.2, 8, "bone.png", radius_top=0.07)
    return m


def foliage(w, h, name="ivy.mdl", texture="ivy@d.png"):
    """A flat sheet of leaves, double-sided by its texture, standing in the x-h plane."""
    m = Model(name)
    m.quad(texture, [(-w / 2, 0, 0), (w / 2, 0, 0), (w / 2, h, 0), (-w / 2, h, 0)],
           [(0, h / 2.0), (w / 2.0, h / 2.0), (w / 2.0, 0), (0, 0)], (0, 0, 1))
    return m


def bush():
    m = Model("bush.mdl")
    for a in (0, 60, 120):
        sub = Model("leaf")
        sub.quad("ivy@d.png", [(-0.7, 0, 0), (0.7, 0, 0), (0.7, 1.1, 0), (-0.7, 1.1, 0)],
                 [(0, 0.55), (0.7, 0.55), (0.7, 0), (0, 0)], (0, 0, 1))
        m.merge(sub, (0, 0, 0), a)
    return m


def cauldron():
    m = Model("cauldron.mdl")
    prism(m, (0, 0), 0.3, 0.15, 0.35, 10, "iron.png", radius_top=0.4)
    prism(m, (0, 0), 0.4, 0.35, 0.6, 10, "iron.png", radius_top=0.38, cap_texture="soup@e6.png")
    for i in range(3):
        a = 2 * math.pi * i / 3
        m.box((0.25 * math.sin(a) - 0.03, 0, 0.25 * math.cos(a) - 0.03),
              (0.25 * math.sin(a) + 0.03, 0.16, 0.25 * math.cos(a) + 0.03), {"all": "iron.png"}, skip=("-h",))
    solid(m, (-0.4, 0, -0.4), (0.4, 0.6, 0.4), METAL)
    return m


def banner():
    """A long cloth banner, hung from a rod (origin at the wall at the rod's height, front +z)."""
    m = Model("banner.mdl")
    m.quad("banner@d.png", [(-0.5, -2.4, 0.05), (0.5, -2.4, 0.05), (0.5, 0, 0.05), (-0.5, 0, 0.05)],
           [(0, 1), (1, 1), (1, 0), (0, 0)], (0, 0, 1))
    prism_x(m, 0.025, -0.6, 0.6, 0.0, "iron.png", sides=6)
    return m


def gate():
    """The closed outer gate of the yard, set into the south wall (front +z, toward the yard)."""
    m = Model("gate.mdl")
    m.box((-1.6, 0, -0.15), (1.6, 3.6, 0.0), {"all": "wood_dark.png", "+z": "gate.png"}, material=WOOD,
          skip=("-h",), occlude=False)
    m.subsets["gate.png"] = []
    m.quad("gate.png", [(-1.6, 0, 0), (1.6, 0, 0), (1.6, 3.6, 0), (-1.6, 3.6, 0)],
           [(0, 1), (1, 1), (1, 0), (0, 0)], (0, 0, 1))
    return m


def door_leaf(name, texture, width=1.4, height=2.5, thickness=0.12):
    """A door leaf hinged at the origin, reaching along +x; centred on the doorway plane."""
    m = Model(name)
    t = thickness / 2
    m.box((0.02, 0.01, -t), (width - 0.02, height - 0.02, t), {"all": "wood_dark.png"}, material=WOOD,
          occlude=True, skip=("+z", "-z"))
    for facing, z in (((0, 0, 1), t), ((0, 0, -1), -t)):
        u0, u1 = (0, 1) if facing[2] > 0 else (1, 0)
        corners = [(0.02, 0.01, z), (width - 0.02, 0.01, z), (width - 0.02, height - 0.02, z), (0.02, height - 0.02, z)]
        m.quad(texture, corners, [(u0, 1), (u1, 1), (u1, 0), (u0, 0)], facing)
        m.collide_quad(WOOD, corners, facing)  # a shut leaf stops whoever walks into it
        m.occlude_quad(corners, facing, margin=0.06)
    x = width - 0.22
    for z0, z1 in ((t, t + 0.04), (-t - 0.04, -t)):
        m.box((x - 0.03, 1.0, z0), (x + 0.03, 1.1, z1), {"all": "iron.png"})
    return m


def key_model(name, texture, ring=0.045, shaft=0.16):
    """A key lying flat, its bit toward +x: solid to the view ray so that it can be taken."""
    m = Model(name)
    sides = 10
    ids_o, ids_i = [], []
    for i in range(sides + 1):
        a = 2 * math.pi * i / sides
        ids_o.append((-shaft / 2 - ring + ring * math.cos(a), 0.012, ring * math.sin(a)))
        ids_i.append((-shaft / 2 - ring + ring * 0.55 * math.cos(a), 0.012, ring * 0.55 * math.sin(a)))
    for i in range(sides):
        m.quad(texture, [ids_o[i], ids_o[i + 1], ids_i[i + 1], ids_i[i]],
               [(i / sides, 0), ((i + 1) / sides, 0), ((i + 1) / sides, 0.3), (i / sides, 0.3)], (0, 1, 0))
        a = 2 * math.pi * (i + 0.5) / sides
        lo = [(p[0], 0.0, p[2]) for p in (ids_o[i], ids_o[i + 1])]
        m.quad(texture, [lo[0], lo[1], ids_o[i + 1], ids_o[i]], [(0, 0.4), (0.1, 0.4), (0.1, 0.5), (0, 0.5)],
               (math.cos(a), 0, math.sin(a)))
    m.box((-shaft / 2, 0, -0.01), (shaft / 2, 0.018, 0.01), {"all": texture}, skip=("-h",), uvscale=0.2)
    m.box((shaft / 2 - 0.05, 0, 0.01), (shaft / 2, 0.018, 0.05), {"all": texture}, skip=("-h",), uvscale=0.2)
    m.box((shaft / 2 - 0.11, 0, 0.01), (shaft / 2 - 0.08, 0.018, 0.04), {"all": texture}, skip=("-h",), uvscale=0.2)
    solid(m, (-shaft / 2 - 2 * ring - 0.02, 0, -ring - 0.02), (shaft / 2 + 0.02, 0.05, ring + 0.02), METAL)
    return m


def coin():
    m = Model("coin.mdl")
    prism(m, (0, 0), 0.03, 0, 0.006, 12, "silver.png")
    solid(m, (-0.06, 0, -0.06), (0.06, 0.04, 0.06), METAL)
    return m


def letter():
    m = Model("letter.mdl")
    m.box((-0.1, 0, -0.14), (0.1, 0.004, 0.14), {"all": "letter.png", "+h": "letter.png"}, skip=("-h",), uvscale=0.28)
    m.subsets["letter.png"] = []
    m.quad("letter.png", [(-0.1, 0.005, -0.14), (0.1, 0.005, -0.14), (0.1, 0.005, 0.14), (-0.1, 0.005, 0.14)],
           [(0, 1), (1, 1), (1, 0), (0, 0)], (0, 1, 0))
    solid(m, (-0.12, 0, -0.16), (0.12, 0.04, 0.16), WOOD)
    return m
