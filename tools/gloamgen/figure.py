"""The characters: a robed figure built of blocks over a five-bone skeleton, and its idle loop.

Key poses are stored as each bone's whole placement in the model's frame (the skinning sums weights
over these placements directly); the hierarchy is what the poses are composed from here, and what
the skeleton view draws."""
import math

from . import props
from .geometry import Model, to_file, fmt

# bone: (name, parent, joint in up coordinates)
BONES = [("hips", -1, (0.0, 0.95, 0.0)), ("chest", 0, (0.0, 1.1, 0.0)), ("head", 1, (0.0, 1.5, 0.0)),
         ("arm_left", 1, (0.27, 1.42, 0.0)), ("arm_right", 1, (-0.27, 1.42, 0.0))]

# atlas regions (u0, v0, u1, v1) of a character texture
ROBE, FACE, SKIN, HAIR = (0.0, 0.0, 0.5, 1.0), (0.5, 0.0, 1.0, 0.5), (0.5, 0.5, 0.75, 1.0), (0.75, 0.5, 1.0, 1.0)


def atlas_box(m, lo, hi, tex, regions, bone, bones_of):
    """A block whose faces take the given atlas regions ('front' for +z, 'other' for the rest)."""
    x0, h0, z0 = lo
    x1, h1, z1 = hi
    faces = [
        ("+z", [(x0, h0, z1), (x1, h0, z1), (x1, h1, z1), (x0, h1, z1)], (0, 0, 1)),
        ("-z", [(x1, h0, z0), (x0, h0, z0), (x0, h1, z0), (x1, h1, z0)], (0, 0, -1)),
        ("+x", [(x1, h0, z1), (x1, h0, z0), (x1, h1, z0), (x1, h1, z1)], (1, 0, 0)),
        ("-x", [(x0, h0, z0), (x0, h0, z1), (x0, h1, z1), (x0, h1, z0)], (-1, 0, 0)),
        ("+h", [(x0, h1, z1), (x1, h1, z1), (x1, h1, z0), (x0, h1, z0)], (0, 1, 0)),
        ("-h", [(x0, h0, z0), (x1, h0, z0), (x1, h0, z1), (x0, h0, z1)], (0, -1, 0)),
    ]
    for name, corners, facing in faces:
        u0, v0, u1, v1 = regions.get(name, regions["other"])
        first = len(m.points)
        m.quad(tex, corners, [(u0, v1), (u1, v1), (u1, v0), (u0, v0)], facing)
        bones_of += [bone] * (len(m.points) - first)


def atlas_prism(m, h0, h1, r0, r1, sides, tex, region, bone, bones_of, centre=(0.0, 0.0)):
    u0, v0, u1, v1 = region
    cx, cz = centre
    for i in range(sides):
        a0 = 2 * math.pi * i / sides - math.pi / sides
        a1 = a0 + 2 * math.pi / sides
        am = (a0 + a1) / 2
        corners = [(cx + r0 * math.sin(a0), h0, cz + r0 * math.cos(a0)), (cx + r0 * math.sin(a1), h0, cz + r0 * math.cos(a1)),
                   (cx + r1 * math.sin(a1), h1, cz + r1 * math.cos(a1)), (cx + r1 * math.sin(a0), h1, cz + r1 * math.cos(a0))]
        ua = u0 + (u1 - u0) * ((i + sides // 2) % sides) / sides
        ub = ua + (u1 - u0) / sides
        first = len(m.points)
        m.quad(tex, corners, [(ua, v1), (ub, v1), (ub, v0), (ua, v0)], (math.sin(am), 0, math.cos(am)))
        bones_of += [bone] * (len(m.points) - first)


def figure(name, tex, skinned, stout=1.0):
    m = Model(name)
    bones_of = []
    atlas_prism(m, 0.0, 1.0, 0.33 * stout, 0.21 * stout, 8, tex, ROBE, 0, bones_of)
    atlas_prism(m, 1.0, 1.44, 0.21 * stout, 0.23, 8, tex, ROBE, 1, bones_of)
    atlas_prism(m, 1.44, 1.48, 0.23, 0.08, 8, tex, ROBE, 1, bones_of)
    atlas_box(m, (-0.105, 1.48, -0.11), (0.105, 1.76, 0.12), tex, {"+z": FACE, "other": HAIR}, 2, bones_of)
    atlas_box(m, (-0.12, 1.66, -0.13), (0.12, 1.8, 0.1), tex, {"other": HAIR}, 2, bones_of)
    for sx, bone in ((1, 3), (-1, 4)):
        x = sx * 0.29
        atlas_box(m, (x - 0.065, 0.9, -0.07), (x + 0.065, 1.44, 0.07), tex, {"other": ROBE}, bone, bones_of)
        atlas_box(m, (x - 0.045, 0.8, -0.045), (x + 0.045, 0.9, 0.045), tex, {"other": SKIN}, bone, bones_of)
    props.solid(m, (-0.38, 0.0, -0.3), (0.38, 1.82, 0.3), "wood")
    if skinned:
        m.weights = []
        joints = {i: to_file(b[2]) for i, b in enumerate(BONES)}
        for p, bone in zip(m.points, bones_of):
            fp = to_file(p)
            j = joints[bone]
            m.weights.append([(bone, (fp[0] - j[0], fp[1] - j[1], fp[2] - j[2]), 1.0)])
    return m


def qmul(a, b):
    ax, ay, az, aw = a
    bx, by, bz, bw = b
    return (aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
            aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz)


def qrot(q, v):
    """q (0, v) q*, the rotation the game applies to a weight's offset."""
    x, y, z, w = qmul(qmul(q, (v[0], v[1], v[2], 0.0)), (-q[0], -q[1], -q[2], q[3]))
    return (x, y, z)


def qaxis(axis, degrees):
    a = math.radians(degrees) / 2
    s = math.sin(a)
    return (axis[0] * s, axis[1] * s, axis[2] * s, math.cos(a))


def idle_poses(t, length):
    """Local turns of each bone at time t of the loop: breathing, a slow look about, arms at rest."""
    ph = 2 * math.pi * t / length
    local = [
        qmul(qaxis((0, 0, 1), 1.2 * math.sin(ph)), qaxis((0, 1, 0), 3.0 * math.sin(ph))),
        qaxis((1, 0, 0), -2.5 * (0.5 - 0.5 * math.cos(2 * ph))),
        qmul(qaxis((0, 1, 0), 24.0 * math.sin(ph + 0.6)), qaxis((1, 0, 0), 4.0 * math.sin(2 * ph))),
        qaxis((0, 0, 1), 3.0 + 2.0 * math.sin(2 * ph)),
        qaxis((0, 0, 1), -3.0 - 2.0 * math.sin(2 * ph + 0.4)),
    ]
    absolute = []
    for i, (name, parent, joint) in enumerate(BONES):
        j = to_file(joint)
        if parent < 0:
            q = local[i]
            p = j
        else:
            pq, pp = absolute[parent]
            pj = to_file(BONES[parent][2])
            off = qrot(pq, (j[0] - pj[0], j[1] - pj[1], j[2] - pj[2]))
            q = qmul(pq, local[i])
            p = (pp[0] + off[0], pp[1] + off[1], pp[2] + off[2])
        absolute.append((q, p))
    return absolute


def animation_text(name, length=4.0, keys=16):
    out = ["# %s: a standing figure breathing and looking about, made by tools/generate-data" % name,
           "BONES %d" % len(BONES), "FRAMES %d" % (keys + 1),
           "HIERARCHY " + " ".join(str(b[1]) for b in BONES)]
    for k in range(keys + 1):
        t = length * k / keys
        out.append(fmt(t))
        for q, p in idle_poses(t % length, length):
            out.append(" ".join(fmt(v) for v in (p[0], p[1], p[2], q[0], q[1], q[2], q[3])))
    return "\n".join(out) + "\n"


def skinned_points(model, poses):
    """The posed positions, as the game computes them (used by the self-check)."""
    out = []
    for ws in model.weights:
        acc = [0.0, 0.0, 0.0]
        for bone, off, f in ws:
            q, p = poses[bone]
            r = qrot(q, off)
            for i in range(3):
                acc[i] += f * (r[i] + p[i])
        out.append(tuple(acc))
    return out
