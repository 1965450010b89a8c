"""Meshes, colliders and occluders, and the writer of the line-oriented model files.

Level code works in "up" coordinates (x east, h up, z north); the files use the game's world axes,
where y points down, so every point is written as (x, -h, z).  Triangle winding is never written by
hand: every face is given the direction it must face, and the writer orders its corners so that
(B - A) x (C - A), taken in file coordinates, points that way.  The renderer culls, the sphere sweep
ignores and the occlusion pass skips triangles seen from their back, so this one rule serves all three.
"""
import math


def to_file(p):
    return (p[0], -p[1], p[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def scale(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def length(a):
    return math.sqrt(dot(a, a))


def wind(a, b, c, facing):
    """Orders a triangle given in up coordinates so that its file-space normal points along facing."""
    fa, fb, fc = to_file(a), to_file(b), to_file(c)
    n = cross(sub(fb, fa), sub(fc, fa))
    if dot(n, to_file(facing)) < 0:
        return a, c, b
    return a, b, c


def fmt(v):
    """Numbers in files: short, fixed, and without a sign on zero."""
    s = "%.4f" % v
    s = s.rstrip("0").rstrip(".")
    if s in ("-0", ""):
        s = "0"
    return s


class Model:
    """One model file: textured triangles, optional skin weights, colliders by material, occluders."""

    def __init__(self, name):
        assert len(name) <= 39, name
        self.name = name
        self.points = []      # up coordinates
        self.uvs = []
        self.subsets = {}     # texture name -> list of point-index triples
        self.weights = None   # per point: list of (bone, offset in bone frame (file coords), factor)
        self.colliders = []   # (material, [triangle of up points])
        self.occluders = []   # [triangle of up points]

    # -- drawable surfaces ------------------------------------------------------------------
    def point(self, p, uv):
        self.points.append(tuple(float(c) for c in p))
        self.uvs.append((float(uv[0]), float(uv[1])))
        return len(self.points) - 1

    def triangle(self, texture, i, j, k, facing):
        a, b, c = (to_file(self.points[n]) for n in (i, j, k))
        if dot(cross(sub(b, a), sub(c, a)), to_file(facing)) < 0:
            j, k = k, j
        self.subsets.setdefault(texture, []).append((i, j, k))

    def grid(self, texture, origin, du, dv, facing, uv, cell=1.0, double=False):
        """A flat quadrilateral origin + s*du + t*dv, cut into cells of about `cell` metres so that
        the per-vertex lighting can show pools of light.  uv(p) gives the texture coordinates."""
        nu = max(1, int(math.ceil(length(du) / cell - 1e-6)))
        nv = max(1, int(math.ceil(length(dv) / cell - 1e-6)))
        ids = []
        for j in range(nv + 1):
            row = []
            for i in range(nu + 1):
                p = add(origin, add(scale(du, i / nu), scale(dv, j / nv)))
                row.append(self.point(p, uv(p)))
            ids.append(row)
        for j in range(nv):
            for i in range(nu):
                a, b, c, d = ids[j][i], ids[j][i + 1], ids[j + 1][i + 1], ids[j + 1][i]
                self.triangle(texture, a, b, c, facing)
                self.triangle(texture, a, c, d, facing)
                if double:
                    back = scale(facing, -1)
                    self.triangle(texture, a, b, c, back)
                    self.triangle(texture, a, c, d, back)

    def quad(self, texture, corners, uvs, facing):
        ids = [self.point(p, t) for p, t in zip(corners, uvs)]
        self.triangle(texture, ids[0], ids[1], ids[2], facing)
        self.triangle(texture, ids[0], ids[2], ids[3], facing)

    # -- collision and occlusion ------------------------------------------------------------
    def collide_quad(self, material, corners, facing):
        a, b, c, d = corners
        self.colliders.append((material, [wind(a, b, c, facing), wind(a, c, d, facing)]))

    def collide_tris(self, material, tris):
        self.colliders.append((material, list(tris)))

    def occlude_quad(self, corners, facing, margin=0.08):
        """Occluders sit inside the drawn surface by a margin: a screen block they cover is never
        given sky, so they must never reach past what the world pass draws."""
        a, b, c, d = corners
        centre = scale(add(add(a, b), add(c, d)), 0.25)
        shrunk = []
        for p in corners:
            v = sub(p, centre)
            # pull each corner toward the centre along both edge directions
            e1 = sub(b, a)
            e2 = sub(d, a)
            l1, l2 = length(e1), length(e2)
            if l1 <= 2 * margin + 1e-6 or l2 <= 2 * margin + 1e-6:
                return
            s1 = dot(v, e1) / (l1 * l1)
            s2 = dot(v, e2) / (l2 * l2)
            k1 = (l1 / 2 - margin) / (l1 / 2)
            k2 = (l2 / 2 - margin) / (l2 / 2)
            shrunk.append(add(centre, add(scale(e1, s1 * k1), scale(e2, s2 * k2))))
        a, b, c, d = shrunk
        self.occluders.append(wind(a, b, c, facing))
        self.occluders.append(wind(a, c, d, facing))

    # -- whole shapes ------------------------------------------------------------------------
    def face(self, texture, corners, facing, uv, cell=1.0, material=None, occlude=False,
             margin=0.08, double=False):
        """A planar rectangle given by four corners in order: drawn, and optionally solid and occluding."""
        a, b, c, d = corners
        if texture is not None:
            self.grid(texture, a, sub(b, a), sub(d, a), facing, uv, cell, double)
        if material is not None:
            self.collide_quad(material, corners, facing)
        if occlude:
            self.occlude_quad(corners, facing, margin)

    def box(self, lo, hi, textures, material=None, occlude=False, skip=(), cell=1.0, uvscale=1.0,
            collide_skip=()):
        """A solid axis-aligned block with outward faces.  textures maps a face name (+x -x +h -h +z
        -z) or 'all' to a texture; uvscale is the world size of one texture repeat."""
        x0, h0, z0 = lo
        x1, h1, z1 = hi
        faces = {
            "+x": ([(x1, h0, z0), (x1, h0, z1), (x1, h1, z1), (x1, h1, z0)], (1, 0, 0)),
            "-x": ([(x0, h0, z1), (x0, h0, z0), (x0, h1, z0), (x0, h1, z1)], (-1, 0, 0)),
            "+h": ([(x0, h1, z0), (x1, h1, z0), (x1, h1, z1), (x0, h1, z1)], (0, 1, 0)),
            "-h": ([(x0, h0, z1), (x1, h0, z1), (x1, h0, z0), (x0, h0, z0)], (0, -1, 0)),
            "+z": ([(x1, h0, z1), (x0, h0, z1), (x0, h1, z1), (x1, h1, z1)], (0, 0, 1)),
            "-z": ([(x0, h0, z0), (x1, h0, z0), (x1, h1, z0), (x0, h1, z0)], (0, 0, -1)),
        }
        tris = []
        for name, (corners, facing) in faces.items():
            if name in skip:
                continue
            tex = textures.get(name, textures.get("all"))
            if tex is not None:
                self.grid(tex, corners[0], sub(corners[1], corners[0]), sub(corners[3], corners[0]),
                          facing, planar_uv(facing, uvscale), cell)
            if material is not None and name not in collide_skip:
                a, b, c, d = corners
                tris += [wind(a, b, c, facing), wind(a, c, d, facing)]
            if occlude:
                self.occlude_quad(corners, facing)
        if material is not None and tris:
            self.collide_tris(material, tris)

    def merge(self, other, offset=(0, 0, 0), yaw_deg=0.0):
        """Copies another model's drawable triangles (not its weights) turned about the vertical
        axis and moved; used to build compound props."""
        def place(p):
            return add(turn(p, yaw_deg), offset)

        base = len(self.points)
        for p, t in zip(other.points, other.uvs):
            self.point(place(p), t)
        for tex, tris in other.subsets.items():
            self.subsets.setdefault(tex, []).extend((a + base, b + base, c + base) for a, b, c in tris)
        for mat, tris in other.colliders:
            self.colliders.append((mat, [tuple(place(p) for p in t) for t in tris]))
        for t in other.occluders:
            self.occluders.append(tuple(place(p) for p in t))

    def bounds(self):
        xs = [p[0] for p in self.points]
        hs = [p[1] for p in self.points]
        zs = [p[2] for p in self.points]
        for mat, tris in self.colliders:
            for t in tris:
                for p in t:
                    xs.append(p[0]); hs.append(p[1]); zs.append(p[2])
        return (min(xs), min(hs), min(zs)), (max(xs), max(hs), max(zs))

    # -- writing -------------------------------------------------------------------------------
    def text(self):
        points = [to_file(p) for p in self.points]
        uvs = list(self.uvs)
        lookup = {}

        def extra(p):
            fp = to_file(p)
            key = tuple(round(c, 4) for c in fp)
            if key not in lookup:
                lookup[key] = len(points)
                points.append(fp)
                uvs.append((0.0, 0.0))
            return lookup[key]

        collision = []
        colliders = []
        for material, tris in self.colliders:
            first = len(collision)
            for t in tris:
                collision.append(tuple(extra(p) for p in t))
            colliders.append((material, first, len(collision)))
        occlusion = [tuple(extra(p) for p in t) for t in self.occluders]

        triangles = []
        subsets = []
        for tex, tris in self.subsets.items():
            first = len(triangles)
            triangles += tris
            subsets.append((tex, first, len(triangles)))

        weights = []
        runs = []
        if self.weights is not None:
            for i in range(len(points)):
                ws = self.weights[i] if i < len(self.weights) else []
                runs.append((len(weights), len(ws)))
                weights += ws

        out = ["# %s, made by tools/generate-data" % self.name]
        out.append("POINTS %d" % len(points))
        out.append("TRIANGLES %d" % len(triangles))
        out.append("TEXCOORDS %d" % (len(points) if triangles else 0))
        out.append("WEIGHTS %d" % len(weights))
        out.append("SUBSETS %d" % len(subsets))
        out.append("COLLIDERS %d" % len(colliders))
        out.append("OCCLUDERS %d" % (1 if occlusion else 0))
        for p in points:
            out.append("%s %s %s" % (fmt(p[0]), fmt(p[1]), fmt(p[2])))
        for t in triangles:
            out.append("%d %d %d" % t)
        if triangles:
            for u, v in uvs:
                out.append("%s %s" % (fmt(u), fmt(v)))
            for t in triangles:
                out.append("%d %d %d" % t)
        if weights:
            for bone, off, factor in weights:
                out.append("%d %s %s %s %s" % (bone, fmt(off[0]), fmt(off[1]), fmt(off[2]), fmt(factor)))
            for first, count in runs:
                out.append("%d %d" % (first, count))
        for tex, first, end in subsets:
            out.append("%s %d %d" % (tex, first, end))
        if colliders:
            out.append("COLLISION_TRIANGLES %d" % len(collision))
            for t in collision:
                out.append("%d %d %d" % t)
            for material, first, end in colliders:
                out.append("%s %d %d" % (material, first, end))
        if occlusion:
            out.append("OCCLUSION_TRIANGLES %d" % len(occlusion))
            for t in occlusion:
                out.append("%d %d %d" % t)
            out.append("0 %d" % len(occlusion))
        return "\n".join(out) + "\n"


def planar_uv(facing, size=1.0, offset=(0.0, 0.0)):
    """World-aligned texture coordinates for a face: textures run on across neighbouring pieces.
    v grows downward on walls so that images stand upright."""
    fx, fh, fz = facing
    if abs(fh) >= abs(fx) and abs(fh) >= abs(fz):
        return lambda p: (p[0] / size + offset[0], -p[2] / size + offset[1])
    if abs(fx) >= abs(fz):
        sign = 1 if fx < 0 else -1
        return lambda p: (sign * p[2] / size + offset[0], -p[1] / size + offset[1])
    sign = 1 if fz > 0 else -1
    return lambda p: (sign * p[0] / size + offset[0], -p[1] / size + offset[1])


def turn(p, yaw_deg):
    """Turns a point about the vertical axis the way the game places an object of that yaw
    (local +z goes to (-sin yaw, 0, cos yaw))."""
    a = math.radians(yaw_deg)
    ca, sa = math.cos(a), math.sin(a)
    x, h, z = p
    return (x * ca - z * sa, h, z * ca + x * sa)


def yaw_toward(dx, dz):
    """The yaw, in degrees, that turns an object's front (+z) toward the direction (dx, dz)."""
    return math.degrees(math.atan2(-dx, dz))
