"""The shipped level: a moonlit yard before a small keep of seven rooms on two floors.

Coordinates here are "up" coordinates (x east, h up, z north); the player starts at the origin
facing north (+z), on the cobbled path of the yard.  Every room is described by its open space (the
boxes that make its region), its surfaces, the openings it owns (the passage through a wall belongs
to the room on one side; the portal lies where the passage meets the other room) and its contents.
"""
from . import game_tables, props
from .geometry import Model, planar_uv, yaw_toward, to_file, cross, sub, dot

STONE, GROUND, WOOD, METAL, CARPET, CERAMIC = game_tables.MATERIALS


def split_rect(rect, holes):
    """The rectangle (a0, a1, b0, b1) minus holes, as a list of rectangles (columns, bottom up)."""
    a0, a1, b0, b1 = rect
    cuts = {a0, a1}
    for h in holes:
        for a in (h[0], h[1]):
            if a0 < a < a1:
                cuts.add(a)
    cuts = sorted(cuts)
    out = []
    for ca, cb in zip(cuts, cuts[1:]):
        spans = [(b0, b1)]
        for h in holes:
            if h[0] <= ca and h[1] >= cb:
                nxt = []
                for s0, s1 in spans:
                    if h[3] <= s0 or h[2] >= s1:
                        nxt.append((s0, s1))
                        continue
                    if h[2] > s0:
                        nxt.append((s0, h[2]))
                    if h[3] < s1:
                        nxt.append((h[3], s1))
                spans = nxt
        out += [(ca, cb, s0, s1) for s0, s1 in spans if s1 - s0 > 1e-6]
    return out


class Room:
    def __init__(self, name, title):
        self.name = name
        self.title = title
        self.model = Model("room_%s.mdl" % name)
        self.regions = []      # boxes (lo, hi) of open space
        self.portals = []      # (other room name, corners, facing into this room)
        self.statics = []      # (model, position, yaw)
        self.lights = []       # dicts
        self.actors = []       # (model, position, yaw, dialogue, animation)
        self.doors = []        # (model, position, yaw, lock)
        self.pickups = []      # (model, position, yaw, item key)
        self.children = []

    # -- surfaces -------------------------------------------------------------------------------
    def wall(self, plane, coord, facing, a_range, h_range, holes, tex, size=2.0, material=STONE,
             cell=1.0, occlude=True):
        """A wall in the plane x = coord ('x', running along z) or z = coord ('z', along x)."""
        for a0, a1, b0, b1 in split_rect((a_range[0], a_range[1], h_range[0], h_range[1]), holes):
            if plane == "x":
                corners = [(coord, b0, a0), (coord, b0, a1), (coord, b1, a1), (coord, b1, a0)]
                f = (facing, 0, 0)
            else:
                corners = [(a0, b0, coord), (a1, b0, coord), (a1, b1, coord), (a0, b1, coord)]
                f = (0, 0, facing)
            self.model.face(tex, corners, f, planar_uv(f, size), cell, material, occlude)

    def flat(self, h, x_range, z_range, holes, tex, size=2.0, material=None, up=True, cell=1.0,
             occlude=True):
        """A floor (up) or ceiling (down) at height h, minus rectangular holes (x0, x1, z0, z1)."""
        f = (0, 1 if up else -1, 0)
        for x0, x1, z0, z1 in split_rect((x_range[0], x_range[1], z_range[0], z_range[1]), holes):
            corners = [(x0, h, z0), (x1, h, z0), (x1, h, z1), (x0, h, z1)]
            self.model.face(tex, corners, f, planar_uv(f, size), cell, material, occlude)

    def passage(self, plane, c0, c1, a0, a1, h0, h1, wall_tex, floor_tex, floor_material,
                size=2.0, lintel=True):
        """The opening through a wall (between c0 and c1 across it): jambs, lintel and floor."""
        m = self.model
        if plane == "z":     # the wall runs along x; the passage goes along z
            jambs = [([(a0, h0, c0), (a0, h0, c1), (a0, h1, c1), (a0, h1, c0)], (1, 0, 0)),
                     ([(a1, h0, c1), (a1, h0, c0), (a1, h1, c0), (a1, h1, c1)], (-1, 0, 0))]
            top = [(a0, h1, c0), (a1, h1, c0), (a1, h1, c1), (a0, h1, c1)]
            bottom = [(a0, h0, c0), (a1, h0, c0), (a1, h0, c1), (a0, h0, c1)]
        else:
            jambs = [([(c0, h0, a0), (c1, h0, a0), (c1, h1, a0), (c0, h1, a0)], (0, 0, 1)),
                     ([(c1, h0, a1), (c0, h0, a1), (c0, h1, a1), (c1, h1, a1)], (0, 0, -1))]
            top = [(c0, h1, a0), (c1, h1, a0), (c1, h1, a1), (c0, h1, a1)]
            bottom = [(c0, h0, a0), (c1, h0, a0), (c1, h0, a1), (c0, h0, a1)]
        for corners, f in jambs:
            m.face(wall_tex, corners, f, planar_uv(f, size), 1.0, STONE, True, margin=0.03)
        if lintel:
            m.face(wall_tex, top, (0, -1, 0), planar_uv((0, -1, 0), size), 1.0, None, True, margin=0.03)
        m.face(floor_tex, bottom, (0, 1, 0), planar_uv((0, 1, 0), size), 1.0, floor_material, True, margin=0.03)

    def box(self, lo, hi, tex, material=STONE, skip=("-h",), size=2.0, occlude=True, cell=1.0):
        self.model.box(lo, hi, {"all": tex} if isinstance(tex, str) else tex, material, occlude, skip,
                       cell, size)

    def portal(self, other, plane, coord, a0, a1, h0, h1, facing):
        if plane == "z":
            corners = [(a0, h0, coord), (a1, h0, coord), (a1, h1, coord), (a0, h1, coord)]
            f = (0, 0, facing)
        else:
            corners = [(coord, h0, a0), (coord, h0, a1), (coord, h1, a1), (coord, h1, a0)]
            f = (facing, 0, 0)
        a, b, c = (to_file(q) for q in corners[:3])
        if dot(cross(sub(b, a), sub(c, a)), to_file(f)) < 0:
            corners.reverse()       # the portal's normal must point into the room that lists it
        self.portals.append((other, corners, f))

    # -- contents -------------------------------------------------------------------------------
    def light(self, pos, radius, brightness, style=None, shadow=False):
        self.lights.append({"pos": pos, "radius": radius, "brightness": brightness, "style": style,
                            "shadow": shadow})

    def place(self, model, pos, yaw=0.0):
        self.statics.append((model, pos, yaw))

    def bounds(self):
        lo = tuple(min(r[0][i] for r in self.regions) for i in range(3))
        hi = tuple(max(r[1][i] for r in self.regions) for i in range(3))
        return lo, hi


def interior(room, lo, hi, wall_tex, floor_tex, floor_material, ceiling_tex, holes, wall_size=2.0,
             floor_holes=(), floor_size=2.0):
    """The inward faces of a box room; holes maps '-x', '+x', '-z', '+z' to wall openings given as
    (a0, a1, h0, h1) in the wall's own axis (z for x-walls, x for z-walls) and height."""
    x0, h0, z0 = lo
    x1, h1, z1 = hi
    room.regions.append((lo, hi))
    room.wall("x", x0, 1, (z0, z1), (h0, h1), holes.get("-x", []), wall_tex, wall_size)
    room.wall("x", x1, -1, (z0, z1), (h0, h1), holes.get("+x", []), wall_tex, wall_size)
    room.wall("z", z0, 1, (x0, x1), (h0, h1), holes.get("-z", []), wall_tex, wall_size)
    room.wall("z", z1, -1, (x0, x1), (h0, h1), holes.get("+z", []), wall_tex, wall_size)
    room.flat(h0, (x0, x1), (z0, z1), list(floor_holes), floor_tex, floor_size, floor_material)
    if ceiling_tex:
        room.flat(h1, (x0, x1), (z0, z1), [], ceiling_tex, 2.0, None, up=False)


def beams(room, x_range, z_values, h, tex="wood_dark.png", along="x"):
    for z in z_values:
        if along == "x":
            room.box((x_range[0], h - 0.25, z - 0.12), (x_range[1], h, z + 0.12), tex, None, skip=("+h",),
                     size=1.0, occlude=False)


def yard_ground_and_curtain_walls(yard):
    """The yard's open space, its earth and cobbled path, the curtain walls with the wall-walk,
    its parapet and the battlements, and the crag below the walk."""
    yard.regions.append(((-10.5, -31.0, -10.5), (10.5, 20.0, 10.0)))
    path = (-1.5, 1.5, -8.0, 10.0)
    well_rim = (3.3, 5.7, 1.3, 3.7)
    yard.flat(0.0, (-8.0, 8.0), (-8.0, 10.0), [path, well_rim], "earth.png", 3.0, GROUND)
    yard.flat(0.0, (-1.5, 1.5), (-8.0, 10.0), [], "cobbles.png", 2.0, STONE)
    # curtain walls, inner faces
    yard.wall("x", -8.0, 1, (-8.0, 10.0), (0.0, 6.0), [], "stone_wall.png", 3.0)
    yard.wall("x", 8.0, -1, (-8.0, 10.0), (0.0, 6.0), [], "stone_wall.png", 3.0)
    yard.wall("z", -8.0, 1, (-8.0, 8.0), (0.0, 6.0), [], "stone_wall.png", 3.0)
    # wall tops: the west one is the wall-walk
    yard.flat(6.0, (-10.5, -8.0), (-10.5, 10.0), [], "stone_floor.png", 2.0, STONE)
    yard.flat(6.0, (-8.0, 10.5), (-10.5, -8.0), [], "stone_floor.png", 2.0, STONE)
    yard.flat(6.0, (8.0, 10.5), (-8.0, 10.0), [], "stone_floor.png", 2.0, STONE)
    # the parapet of the walk, and an unseen screen above it so that nobody falls off the crag
    for i in range(12):
        z0 = -10.5 + i * 1.75
        yard.box((-10.5, 6.0, z0), (-10.0, 7.3, z0 + 0.85), "stone_wall.png", STONE, skip=("-h",))
        if i < 11:
            yard.box((-10.5, 6.0, z0 + 0.85), (-10.0, 6.6, z0 + 1.75), "stone_wall.png", STONE, skip=("-h",))
    yard.model.collide_quad(STONE, [(-10.0, 6.0, -10.5), (-10.0, 6.0, 10.0), (-10.0, 10.0, 10.0),
                                    (-10.0, 10.0, -10.5)], (1, 0, 0))
    yard.model.collide_quad(STONE, [(-10.5, 6.0, -10.0), (10.5, 6.0, -10.0), (10.5, 10.0, -10.0),
                                    (-10.5, 10.0, -10.0)], (0, 0, 1))
    yard.model.collide_quad(STONE, [(10.0, 6.0, -10.5), (10.0, 6.0, 10.0), (10.0, 10.0, 10.0),
                                    (10.0, 10.0, -10.5)], (-1, 0, 0))
    # battlements of the south and east walls stand near the yard's side, so that they show from below
    for i in range(11):
        x0 = -8.0 + i * 1.6
        yard.box((x0, 6.0, -9.0), (x0 + 0.8, 7.2, -8.5), "stone_wall.png", STONE, skip=("-h",))
    for i in range(11):
        z0 = -8.5 + i * 1.75
        yard.box((8.5, 6.0, z0), (9.0, 7.2, z0 + 0.85), "stone_wall.png", STONE, skip=("-h",))
    # the crag below the walk, seen over the parapet
    yard.wall("x", -10.5, -1, (-10.5, 10.0), (-40.0, 6.0), [], "rock.png", 4.0, None, cell=4.0)


def keep_front(yard):
    """The keep's front: the door, the solar's window, arrow slits, a string course and the
    battlements, with the portals into the hall and the solar."""
    door = (-0.7, 0.7, 0.0, 2.6)
    window = (-1.0, 1.0, 5.6, 7.6)
    slits = [(x - 0.15, x + 0.15, 5.9, 7.3) for x in (-6.5, -3.5, 3.5, 6.5)] + \
            [(x - 0.15, x + 0.15, 1.4, 2.7) for x in (-4.0, 4.0)]
    yard.wall("z", 10.0, -1, (-8.0, 8.0), (0.0, 9.6), [door, window] + slits, "stone_wall.png", 3.0)
    for x0, x1, h0, h1 in slits:
        yard.passage("z", 10.0, 10.3, x0, x1, h0, h1, "stone_wall.png", "stone_floor.png", STONE)
        yard.model.face("soot.png", [(x1, h0, 10.3), (x0, h0, 10.3), (x0, h1, 10.3), (x1, h1, 10.3)], (0, 0, -1),
                        planar_uv((0, 0, -1), 1.0), 1.0, None, True, margin=0.03)
    yard.wall("z", 10.0, -1, (-10.5, -8.0), (6.0, 9.6), [], "stone_wall.png", 3.0)
    yard.wall("z", 10.0, -1, (8.0, 10.5), (6.0, 9.6), [], "stone_wall.png", 3.0)
    yard.box((-10.5, 4.1, 9.8), (10.5, 4.3, 10.0), "stone_floor.png", None, skip=("+z",), occlude=False)
    yard.box((-1.25, 5.4, 9.75), (1.25, 5.6, 10.0), "stone_floor.png", None, skip=("+z",), occlude=False)
    for i in range(14):
        x0 = -10.5 + i * 1.6
        yard.box((x0, 9.6, 9.9), (x0 + 0.8, 10.8, 10.4), "stone_wall.png", None, skip=("-h", "+z"))
    yard.flat(9.6, (-10.5, 10.5), (9.9, 10.4), [], "stone_floor.png", 2.0, None)
    yard.portal("hall", "z", 10.0, -0.7, 0.7, 0.0, 2.6, -1)
    yard.portal("solar", "z", 10.0, -1.0, 1.0, 5.6, 7.6, -1)


def wall_walk_stairs(yard):
    """Stone stairs up to the wall-walk: thirty steps of 0.2."""
    for i in range(1, 31):
        z0 = -4.3 + 0.3 * (i - 1)
        yard.box((-8.0, 0.0, z0), (-6.8, 0.2 * i, z0 + 0.3),
                 {"+h": "stone_floor.png", "-z": "stone_wall.png", "+x": "stone_wall.png",
                  "+z": "stone_wall.png"}, STONE, skip=("-h", "-x") + (() if i == 30 else ("+z",)), size=2.0)


def well(yard):
    """The well: a rim of 1.0 to climb, and a dry shaft of 31 metres onto stone."""
    yard.wall("x", 3.3, -1, (1.3, 3.7), (0.0, 1.0), [], "stone_wall.png", 2.0)
    yard.wall("x", 5.7, 1, (1.3, 3.7), (0.0, 1.0), [], "stone_wall.png", 2.0)
    yard.wall("z", 1.3, -1, (3.3, 5.7), (0.0, 1.0), [], "stone_wall.png", 2.0)
    yard.wall("z", 3.7, 1, (3.3, 5.7), (0.0, 1.0), [], "stone_wall.png", 2.0)
    yard.flat(1.0, (3.3, 5.7), (1.3, 3.7), [(3.7, 5.3, 1.7, 3.3)], "stone_floor.png", 2.0, STONE)
    yard.wall("x", 3.7, 1, (1.7, 3.3), (-30.0, 1.0), [], "rock.png", 2.0, cell=2.0)
    yard.wall("x", 5.3, -1, (1.7, 3.3), (-30.0, 1.0), [], "rock.png", 2.0, cell=2.0)
    yard.wall("z", 1.7, 1, (3.7, 5.3), (-30.0, 1.0), [], "rock.png", 2.0, cell=2.0)
    yard.wall("z", 3.3, -1, (3.7, 5.3), (-30.0, 1.0), [], "rock.png", 2.0, cell=2.0)
    yard.flat(-30.0, (3.7, 5.3), (1.7, 3.3), [], "rock.png", 2.0, STONE)


def build_yard():
    """The scene's room: the yard inside the curtain walls, the wall-walk, the crag below it, the keep's
    front, the stairs up to the walk and the well."""
    yard = Room("yard", "Moonlit yard")
    yard_ground_and_curtain_walls(yard)
    keep_front(yard)
    wall_walk_stairs(yard)
    well(yard)
    yard.place("windlass.mdl", (4.5, 0.0, 2.5))
    yard.place("bones.mdl", (4.4, -30.0, 2.5), 30)
    yard.place("gate.mdl", (0.0, 0.0, -7.9))
    yard.place("brazier.mdl", (-5.6, 0.0, -3.2))
    yard.place("barrel.mdl", (7.2, 0.0, 8.9))
    yard.place("barrel.mdl", (6.4, 0.0, 9.2), 40)
    yard.place("barrel.mdl", (7.3, 0.0, 8.0), 15)
    yard.place("crate.mdl", (7.2, 0.0, -7.2), 10)
    yard.place("crate.mdl", (6.3, 0.0, -7.3), -20)
    yard.place("bench.mdl", (-3.0, 0.0, 8.9))
    yard.place("bush.mdl", (-7.3, 0.0, -7.3))
    yard.place("bush.mdl", (7.3, 0.0, 6.8), 20)
    yard.place("bush.mdl", (-2.6, 0.0, -7.4), 45)
    for z, w, h in ((-6.0, 2.6, 4.6), (-2.5, 3.0, 5.6), (1.5, 2.2, 3.8), (5.0, 2.8, 5.0)):
        yard.place("ivy_%d.mdl" % int(w * 10), (7.97, 0.0, z), 90)
    yard.place("torch.mdl", (1.2, 2.3, 10.0), 180)
    yard.place("torch.mdl", (-1.2, 2.3, 10.0), 180)
    yard.light((31.2, 37.8, 34.7), 100.0, 0.95, shadow=True)           # the moon, where the sky shows it
    yard.light((0.0, 3.0, 1.0), 24.0, 0.3)                              # the glow of the night sky
    yard.light((1.2, 2.9, 9.5), 6.0, 0.9, style=1, shadow=True)         # torches by the door
    yard.light((-1.2, 2.9, 9.5), 6.0, 0.9, style=6, shadow=True)
    yard.light((-5.6, 1.4, -3.2), 6.5, 0.9, style=10)                   # the brazier
    yard.light((4.5, -29.0, 2.5), 5.0, 0.7, style=2)                    # something glows down the well
    yard.pickups.append(("coin.mdl", (-9.3, 6.0, 8.2), 20, "silver_coin"))
    yard.pickups.append(("coin.mdl", (4.5, 1.0, 1.5), 0, "silver_coin"))
    return yard


def build_hall():
    """The great hall behind the keep's door, from which every ground-floor room opens."""
    hall = Room("hall", "Great hall")
    runner = (-0.7, 0.7, 10.6, 18.6)
    interior(hall, (-4.2, 0.0, 10.6), (4.2, 4.0, 20.0), "stone_wall.png", "stone_floor.png", STONE,
             "planks.png", {"-z": [(-0.7, 0.7, 0.0, 2.6)],
                            "-x": [(12.6, 14.0, 0.0, 2.6), (18.2, 19.4, 0.0, 2.5)],
                            "+x": [(12.7, 13.9, 0.0, 2.5)],
                            "+z": [(-0.7, 0.7, 0.0, 2.6)]}, floor_holes=[runner])
    hall.flat(0.0, (-0.7, 0.7), (10.6, 18.6), [], "carpet.png", 1.4, CARPET)
    hall.regions += [((-0.7, 0.0, 10.0), (0.7, 2.6, 10.6)), ((-4.6, 0.0, 12.6), (-4.2, 2.6, 14.0)),
                     ((-4.6, 0.0, 18.2), (-4.2, 2.5, 19.4)), ((4.2, 0.0, 12.7), (4.6, 2.5, 13.9)),
                     ((-0.7, 0.0, 20.0), (0.7, 2.6, 20.4))]
    hall.passage("z", 10.0, 10.6, -0.7, 0.7, 0.0, 2.6, "stone_wall.png", "stone_floor.png", STONE)
    hall.passage("x", -4.6, -4.2, 12.6, 14.0, 0.0, 2.6, "stone_wall.png", "stone_floor.png", STONE)
    hall.passage("x", -4.6, -4.2, 18.2, 19.4, 0.0, 2.5, "stone_wall.png", "stone_floor.png", STONE)
    hall.passage("x", 4.2, 4.6, 12.7, 13.9, 0.0, 2.5, "stone_wall.png", "stone_floor.png", STONE)
    hall.passage("z", 20.0, 20.4, -0.7, 0.7, 0.0, 2.6, "stone_wall.png", "stone_floor.png", STONE)
    hall.portal("yard", "z", 10.0, -0.7, 0.7, 0.0, 2.6, 1)
    hall.portal("kitchen", "x", -4.6, 12.6, 14.0, 0.0, 2.6, 1)
    hall.portal("stairwell", "x", -4.6, 18.2, 19.4, 0.0, 2.5, 1)
    hall.portal("armoury", "x", 4.6, 12.7, 13.9, 0.0, 2.5, -1)
    hall.portal("storeroom", "z", 20.4, -0.7, 0.7, 0.0, 2.6, -1)
    beams(hall, (-4.2, 4.2), [12.0, 14.5, 17.0, 19.2], 4.0)
    hall.place("fireplace.mdl", (4.2, 0.0, 17.0), 90)
    hall.place("table.mdl", (-2.4, 0.0, 15.6), 90)
    hall.place("bench.mdl", (-1.55, 0.0, 15.6), 90)
    hall.place("bench.mdl", (-3.25, 0.0, 15.6), 90)
    hall.place("candelabra.mdl", (-2.4, 0.78, 15.6))
    hall.place("banner.mdl", (-2.0, 3.6, 19.98), 180)
    hall.place("banner.mdl", (2.0, 3.6, 19.98), 180)
    hall.place("torch.mdl", (-4.2, 2.3, 11.6), -90)
    hall.place("torch.mdl", (4.2, 2.3, 11.6), 90)
    hall.place("chest.mdl", (3.4, 0.0, 19.5), 180)
    hall.light((3.2, 0.8, 17.0), 8.5, 1.0, style=1, shadow=True)       # the hearth
    hall.light((-3.8, 2.7, 11.6), 5.5, 0.8, style=6, shadow=True)
    hall.light((3.8, 2.7, 11.6), 5.5, 0.8, style=6, shadow=True)
    hall.light((-2.4, 1.4, 15.6), 4.5, 0.8)                             # candles on the table
    hall.light((0.0, 3.0, 15.0), 9.0, 0.35)
    hall.actors.append(("warden.mdl", (1.9, 0.0, 15.4), yaw_toward(-1.9, -4.4), "warden.dlg", "warden_idle.anm"))
    hall.doors.append(("door_oak.mdl", (-0.7, 0.0, 10.0), 0.0, 0))
    hall.doors.append(("door_side.mdl", (4.6, 0.0, 12.7), 90.0, 0))
    return hall


def build_kitchen():
    """The kitchen, west of the hall."""
    kitchen = Room("kitchen", "Kitchen")
    interior(kitchen, (-9.4, 0.0, 10.6), (-4.6, 3.6, 17.0), "brick.png", "tiles.png", CERAMIC, "planks.png",
             {"+x": [(12.6, 14.0, 0.0, 2.6)]}, wall_size=1.5, floor_size=1.0)
    kitchen.portal("hall", "x", -4.6, 12.6, 14.0, 0.0, 2.6, -1)
    beams(kitchen, (-9.4, -4.6), [12.2, 14.4, 16.2], 3.6)
    kitchen.place("fireplace.mdl", (-9.4, 0.0, 13.8), -90)
    kitchen.place("cauldron.mdl", (-8.9, 0.08, 13.8))
    kitchen.place("table.mdl", (-6.6, 0.0, 12.0))
    kitchen.place("candle.mdl", (-7.1, 0.78, 12.1))
    kitchen.place("barrel.mdl", (-5.2, 0.0, 16.4))
    kitchen.place("barrel.mdl", (-5.9, 0.0, 16.5), 30)
    kitchen.place("crate.mdl", (-8.8, 0.0, 16.4), 5)
    kitchen.light((-8.6, 0.8, 13.8), 7.5, 1.0, style=1, shadow=True)
    kitchen.light((-7.1, 1.1, 12.1), 4.0, 0.8, style=6)
    kitchen.light((-7.0, 2.8, 14.5), 7.0, 0.4)
    kitchen.actors.append(("maud.mdl", (-7.6, 0.0, 15.3), yaw_toward(3.0, -1.9), "maud.dlg", None))
    kitchen.pickups.append(("key_iron.mdl", (-6.2, 0.78, 11.9), 35, "iron_key"))
    return kitchen


def build_armoury():
    """The armoury, east of the hall."""
    armoury = Room("armoury", "Armoury")
    interior(armoury, (4.6, 0.0, 10.6), (9.4, 3.6, 17.0), "stone_wall.png", "iron_plate.png", METAL,
             "planks.png", {"-x": [(12.7, 13.9, 0.0, 2.5)]}, floor_size=1.5)
    armoury.portal("hall", "x", 4.6, 12.7, 13.9, 0.0, 2.5, 1)
    beams(armoury, (4.6, 9.4), [12.4, 15.0], 3.6)
    armoury.place("armour.mdl", (8.7, 0.0, 12.0), -90)
    armoury.place("armour.mdl", (8.7, 0.0, 14.6), -90)
    armoury.place("weapon_rack.mdl", (7.0, 0.0, 16.75), 180)
    armoury.place("shield.mdl", (9.4, 1.9, 13.3), -90)
    armoury.place("shield.mdl", (5.6, 1.9, 10.6), 0)
    armoury.place("chest.mdl", (7.5, 0.0, 11.0))
    armoury.light((7.0, 3.0, 13.8), 7.0, 0.85, shadow=True)
    armoury.light((5.2, 2.0, 16.2), 5.0, 0.5, style=11)
    return armoury


def build_storeroom():
    """The storeroom, north of the hall, with a rock shelf to climb."""
    store = Room("storeroom", "Storeroom")
    interior(store, (-4.2, 0.0, 20.4), (9.4, 3.4, 25.4), "stone_wall.png", "earth.png", GROUND, "planks.png",
             {"-z": [(-0.7, 0.7, 0.0, 2.6)]}, floor_holes=[(7.4, 9.4, 20.4, 25.4)], floor_size=3.0)
    store.portal("hall", "z", 20.4, -0.7, 0.7, 0.0, 2.6, 1)
    # a rock shelf of 1.05 along the east end: too high to step or jump onto, low enough to climb
    store.box((7.4, 0.0, 20.4), (9.4, 1.05, 25.4), {"+h": "stone_floor.png", "-x": "rock.png"}, STONE,
              skip=("-h", "+x", "-z", "+z"))
    beams(store, (-4.2, 9.4), [22.0, 24.2], 3.4)
    for pos, yaw in (((-3.5, 0.0, 24.7), 0), ((-2.8, 0.0, 24.8), 30), ((-3.6, 0.0, 23.9), 60),
                     ((3.0, 0.0, 24.8), 10), ((4.6, 0.0, 21.0), 0)):
        store.place("barrel.mdl", pos, yaw)
    for pos, yaw in (((-3.4, 0.0, 21.2), 5), ((-3.4, 0.7, 21.2), 35), ((2.2, 0.0, 24.9), -10),
                     ((5.6, 0.0, 24.8), 20), ((8.6, 1.05, 24.7), 15)):
        store.place("crate.mdl", pos, yaw)
    store.place("torch.mdl", (-0.9, 2.3, 20.4), 0)
    store.light((-0.9, 2.8, 20.9), 6.0, 0.9, style=10, shadow=True)
    store.light((6.5, 2.6, 23.0), 6.5, 0.7, style=3)
    store.light((2.0, 2.5, 23.0), 8.0, 0.3)
    store.pickups.append(("key_rusty.mdl", (8.6, 1.05, 22.6), 100, "rusty_key"))
    return store


def build_stairwell():
    """The stairwell, north-west of the hall, up to the library."""
    stair = Room("stairwell", "Stairwell")
    interior(stair, (-9.4, 0.0, 17.4), (-4.6, 8.4, 25.4), "stone_wall.png", "planks.png", WOOD, "planks.png",
             {"+x": [(18.2, 19.4, 0.0, 2.5), (24.3, 25.3, 4.4, 6.8)]}, floor_size=2.0)
    stair.portal("hall", "x", -4.6, 18.2, 19.4, 0.0, 2.5, -1)
    stair.portal("library", "x", -4.6, 24.3, 25.3, 4.4, 6.8, -1)
    # twenty-two steps of 0.2 up to the landing along the west wall; their foot stands 1.1 from the
    # south wall, so that the first step is walked onto from the front (from the side, only steps
    # under 0.5 can be, and a body does not fit beside the wall there)
    for i in range(1, 23):
        z0 = 18.5 + 0.25 * (i - 1)
        stair.box((-9.4, 0.0, z0), (-8.2, 0.2 * i, z0 + 0.25),
                  {"+h": "planks.png", "-z": "wood_dark.png", "+x": "wood_dark.png"}, WOOD,
                  skip=("-h", "-x") + (() if i == 22 else ("+z",)), size=1.5)
    stair.box((-9.4, 4.0, 24.0), (-4.6, 4.4, 25.4), {"+h": "planks.png", "-h": "planks.png",
                                                     "-z": "wood_dark.png"}, WOOD, skip=("-x", "+x", "+z"))
    stair.box((-8.2, 4.4, 23.94), (-4.6, 5.4, 24.06), "wood_dark.png", WOOD, skip=("-h",), size=1.0, occlude=False)
    stair.box((-8.26, 0.0, 23.94), (-8.14, 5.4, 24.06), "wood_dark.png", WOOD, skip=("-h",), size=1.0, occlude=False)
    stair.place("torch.mdl", (-4.6, 2.3, 21.0), 90)
    stair.place("torch.mdl", (-9.4, 6.6, 24.6), -90)
    stair.place("barrel.mdl", (-5.3, 0.0, 22.4))
    stair.light((-5.0, 2.8, 21.0), 7.0, 0.9, style=1, shadow=True)
    stair.light((-9.0, 7.0, 24.6), 6.5, 0.8, style=11)
    stair.light((-7.0, 5.0, 21.0), 9.0, 0.3)
    return stair


def build_library():
    """The library upstairs."""
    library = Room("library", "Library")
    interior(library, (-4.2, 4.4, 17.4), (4.2, 8.4, 25.4), "plaster.png", "planks.png", WOOD, "planks.png",
             {"-x": [(24.3, 25.3, 4.4, 6.8)], "-z": [(-0.6, 0.6, 4.4, 6.9)]}, wall_size=2.5)
    library.regions.append(((-4.6, 4.4, 24.3), (-4.2, 6.8, 25.3)))
    library.passage("x", -4.6, -4.2, 24.3, 25.3, 4.4, 6.8, "plaster.png", "planks.png", WOOD)
    library.portal("stairwell", "x", -4.6, 24.3, 25.3, 4.4, 6.8, 1)
    library.portal("solar", "z", 17.4, -0.6, 0.6, 4.4, 6.9, 1)
    beams(library, (-4.2, 4.2), [19.0, 21.5, 24.0], 8.4)
    for x in (-3.0, -1.1, 1.1, 3.0):
        library.place("bookshelf.mdl", (x, 4.4, 25.2), 180)
    for z in (19.2, 21.2):
        library.place("bookshelf.mdl", (4.0, 4.4, z), 90)
    library.place("table.mdl", (0.0, 4.4, 21.4))
    library.place("bench.mdl", (0.0, 4.4, 22.2))
    library.place("candelabra.mdl", (0.4, 5.18, 21.3))
    library.place("candle.mdl", (-0.6, 5.18, 21.6))
    library.place("chest.mdl", (-3.5, 4.4, 18.0), 90)
    library.light((0.4, 5.9, 21.3), 6.5, 1.0, style=6, shadow=True)
    library.light((-3.5, 6.5, 23.0), 6.0, 0.5, style=5)
    library.light((0.0, 7.0, 20.0), 9.0, 0.35)
    library.pickups.append(("coin.mdl", (-0.2, 5.18, 21.2), 60, "silver_coin"))
    return library


def build_solar():
    """The solar upstairs, locked, with the stained-glass window over the keep's door."""
    solar = Room("solar", "Solar")
    interior(solar, (-4.2, 4.4, 10.6), (4.2, 8.4, 17.0), "plaster.png", "carpet.png", CARPET, "planks.png",
             {"+z": [(-0.6, 0.6, 4.4, 6.9)], "-z": [(-1.0, 1.0, 5.6, 7.6)]}, wall_size=2.5, floor_size=2.0)
    solar.regions += [((-0.6, 4.4, 17.0), (0.6, 6.9, 17.4)), ((-1.0, 5.6, 10.0), (1.0, 7.6, 10.6))]
    solar.passage("z", 17.0, 17.4, -0.6, 0.6, 4.4, 6.9, "plaster.png", "carpet.png", CARPET)
    solar.passage("z", 10.0, 10.6, -1.0, 1.0, 5.6, 7.6, "stone_wall.png", "stone_floor.png", STONE)
    solar.portal("library", "z", 17.4, -0.6, 0.6, 4.4, 6.9, -1)
    solar.portal("yard", "z", 10.0, -1.0, 1.0, 5.6, 7.6, 1)
    solar.model.face("stained_glass@dt4.png", [(-1.0, 5.6, 10.15), (1.0, 5.6, 10.15), (1.0, 7.6, 10.15),
                                               (-1.0, 7.6, 10.15)], (0, 0, 1), lambda p: ((p[0] + 1.0) / 2.0, (7.6 - p[1]) / 2.0),
                     1.0, STONE, False)
    solar.model.collide_quad(STONE, [(1.0, 5.6, 10.15), (-1.0, 5.6, 10.15), (-1.0, 7.6, 10.15), (1.0, 7.6, 10.15)],
                             (0, 0, -1))
    beams(solar, (-4.2, 4.2), [12.5, 15.0], 8.4)
    solar.place("bed.mdl", (-2.9, 4.4, 15.6), 90)
    solar.place("chest.mdl", (-3.6, 4.4, 12.2), 90)
    solar.place("table.mdl", (2.6, 4.4, 13.0), 90)
    solar.place("candelabra.mdl", (2.6, 5.18, 12.7))
    solar.place("banner.mdl", (4.18, 8.0, 14.5), -90)
    solar.place("shield.mdl", (-4.2, 6.6, 13.0), 90)
    solar.light((2.6, 6.0, 12.7), 6.5, 1.0, style=6, shadow=True)
    solar.light((0.0, 7.2, 14.0), 8.0, 0.35)
    solar.light((0.0, 6.6, 11.2), 4.0, 0.6, style=9)
    solar.pickups.append(("letter.mdl", (2.5, 5.18, 13.5), 80, "letter"))
    solar.doors.append(("door_iron.mdl", (-0.6, 4.4, 17.4), 0.0, 1))
    return solar


# The rooms in scene order, the yard (the scene's own room) first.
ROOM_BUILDERS = (build_yard, build_hall, build_kitchen, build_armoury, build_storeroom, build_stairwell,
                 build_library, build_solar)


def build():
    """Returns (rooms in scene order, the yard first; prop models by name)."""
    rooms = [build_room() for build_room in ROOM_BUILDERS]
    return rooms, prop_models()


def prop_models():
    ms = [props.table(), props.bench(), props.barrel(), props.crate(), props.bookshelf(), props.bed(),
          props.chest(), props.torch(), props.candle(), props.candelabra(), props.fireplace(),
          props.weapon_rack(), props.armour(), props.shield(), props.windlass(), props.brazier(),
          props.bones(), props.bush(), props.cauldron(), props.banner(), props.gate(),
          props.door_leaf("door_oak.mdl", "door_oak.png", 1.4, 2.58),
          props.door_leaf("door_side.mdl", "door_oak.png", 1.2, 2.48),
          props.door_leaf("door_iron.mdl", "door_iron.png", 1.2, 2.48),
          props.key_model("key_iron.mdl", "iron.png"), props.key_model("key_rusty.mdl", "rust.png"),
          props.coin(), props.letter()]
    for w, h in ((2.6, 4.6), (3.0, 5.6), (2.2, 3.8), (2.8, 5.0)):
        ms.append(props.foliage(w, h, "ivy_%d.mdl" % int(w * 10)))
    return {m.name: m for m in ms}
