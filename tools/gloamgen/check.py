"""The generator's own check of what it wrote: only what the game's data checker (gloamhold-check,
which every build runs over the committed data, and so over this output) cannot see, because the
game accepts it but the level is not made as intended.  Returns a list of problems."""
import math
import os
import re
import struct

from . import dialogue_walk, game_tables


class Problems(list):
    def need(self, ok, text):
        if not ok:
            self.append(text)
        return ok


def content_lines(path):
    with open(path, encoding="utf-8") as f:
        return [l for l in f.read().split("\n") if l and not l.startswith("#")]


def read_model(path, p):
    """The points' bounds; the subsets must cover the triangles in order, every collider some."""
    lines = content_lines(path)
    np_, nt, ntc, nw, ns, nc, no = (int(lines[i].split()[1]) for i in range(7))
    at = 7 + np_ + nt + (ntc + nt if ntc else 0) + (nw + np_ if nw else 0)
    pts = [tuple(float(v) for v in l.split()) for l in lines[7:7 + np_]]
    end = 0
    for name, first, last in (l.split() for l in lines[at:at + ns]):
        p.need(int(first) == end and int(last) > int(first), "%s: subsets not contiguous" % path)
        end = int(last)
    p.need(end == nt, "%s: subsets do not cover the triangles" % path)
    at += ns
    if nc:
        n = int(lines[at].split()[1])
        for mat, a, b in (l.split() for l in lines[at + 1 + n:at + 1 + n + nc]):
            p.need(int(a) < int(b), "%s: collider without triangles" % path)
    lo = tuple(min(q[i] for q in pts) for i in range(3))
    hi = tuple(max(q[i] for q in pts) for i in range(3))
    return {"bounds": (lo, hi)}


def read_wav_rate(path):
    with open(path, "rb") as f:
        data = f.read()
    fmt = data.index(b"fmt ")
    return struct.unpack("<I", data[fmt + 12:fmt + 16])[0]


ELEMENT = re.compile(r"<([A-Za-z_:][\w:.\-]*)((?:\s+[A-Za-z_][\w.\-]*=\"[^\"]*\")*)\s*(/?)>")
ATTR = re.compile(r"([A-Za-z_][\w.\-]*)=\"([^\"]*)\"")


def read_xml(path):
    """The element tree of the generator's own XML: one tag a line (the game's reader is the judge
    of the rules)."""
    with open(path, encoding="utf-8") as f:
        text = f.read()
    stack = [("", {}, [])]
    for line in text.split("\n"):
        s = line.strip()
        if not s or s.startswith("<?") or s.startswith("<!--"):
            continue
        if s.startswith("</"):
            stack.pop()
            continue
        m = ELEMENT.fullmatch(s)
        node = (m.group(1).lower(), {k.lower(): v for k, v in ATTR.findall(m.group(2))}, [])
        stack[-1][2].append(node)
        if not m.group(3):
            stack.append(node)
    return stack[0][2]


def vec(s):
    return [float(v) for v in re.split(r"[ ,]", s)]


def portal_centre(pts):
    return [sum(pts[i * 3 + k] for i in range(4)) / 4 for k in range(3)]


def transform_box(lo, hi, pos, yaw):
    sy, cy = math.sin(yaw), math.cos(yaw)
    if sy == 0 and cy == 1:
        return [lo[i] + pos[i] for i in range(3)], [hi[i] + pos[i] for i in range(3)]
    c = [(lo[i] + hi[i]) / 2 for i in range(3)]
    h = [(hi[i] - lo[i]) / 2 for i in range(3)]
    z1 = c[2] * cy + c[0] * sy
    x = c[0] * cy - c[2] * sy
    wc = [x + pos[0], c[1] + pos[1], z1 + pos[2]]
    ex = abs(sy) * h[2] + abs(cy) * h[0]
    ey = h[1]
    ez = abs(sy) * h[0] + abs(cy) * h[2]
    e = [ex, ey, ez]
    return [wc[i] - e[i] for i in range(3)], [wc[i] + e[i] for i in range(3)]


def read_bsp(path):
    lines = content_lines(path)
    planes_n = int(lines[0].split()[1])
    nodes_n = int(lines[1].split()[1])
    planes = [tuple(float(v) for v in l.split()) for l in lines[2:2 + planes_n]]
    nodes = [tuple(int(v) for v in l.split()) for l in lines[2 + planes_n:2 + planes_n + nodes_n]]
    return planes, nodes


def point_in_tree(planes, nodes, root, pt):
    n = root
    for steps in range(1, 255):
        a, b, c, d = planes[nodes[n][0]]
        if a * pt[0] + b * pt[1] + c * pt[2] - d >= 0:
            if nodes[n][1] == 0:
                return steps
            n = nodes[n][1]
        else:
            if nodes[n][2] == 0:
                return 0
            n = nodes[n][2]
    return 0


def check_all(out):
    p = Problems()
    # the files the game loads by itself, named in the game's own tables
    for name in game_tables.SKY_FACES:
        p.need(os.path.exists(os.path.join(out, "textures", name)), "missing sky face %s" % name)
    snd = os.path.join(out, "sounds")
    for name in game_tables.FIXED_SOUNDS:
        p.need(os.path.exists(os.path.join(snd, name)), "missing fixed sound %s" % name)
    for name in sorted(os.listdir(snd)):
        p.need(read_wav_rate(os.path.join(snd, name)) in (22050, 44100), "%s is not at 22050 or 44100 Hz" % name)
    # every Latin capital and Cyrillic letter has a glyph
    for name in ("font_system.fnt", "font_dialogue.fnt"):
        with open(os.path.join(out, "fonts", name), "rb") as f:
            data = f.read()
        first = data[5]
        for code in list(range(0x41, 0x5B)) + list(range(0xC0, 0x100)) + [0xA8, 0xB8]:
            p.need(data[7 + 9 * (code - first)] > 0, "%s: no glyph for %#x" % (name, code))
    models = {}
    mdir = os.path.join(out, "models")
    for name in sorted(os.listdir(mdir)):
        models[name] = read_model(os.path.join(mdir, name), p)
    for name in os.listdir(os.path.join(out, "animations")):
        lines = content_lines(os.path.join(out, "animations", name))
        p.need(float(lines[3]) == 0, "%s: the first frame is not at time 0" % name)
    scene = read_xml(os.path.join(out, "scene.xml"))[0]
    planes, nodes = read_bsp(os.path.join(out, scene[1]["bsp"]))
    rooms = [scene] + [c for c in scene[2] if c[0] == "room"]
    portals = [portal_centre(vec(c[1]["points"])) for room in rooms for c in room[2] if c[0] == "portal"]
    # every door fills both sides of one opening
    for room in rooms:
        for d in (c[1] for c in room[2] if c[0] == "door"):
            m = models[d["model"]]
            pos = [float(d[k]) for k in ("x", "y", "z")]
            lo, hi = transform_box(m["bounds"][0], m["bounds"][1], pos, float(d.get("yaw", "0")) * 0.017453292)
            hits = [c for c in portals if all(lo[k] <= c[k] <= hi[k] for k in range(3))]
            p.need(len(hits) == 2, "door %s fills %d portals, not a pair" % (d["model"], len(hits)))
    # every room's region tree: its own box centre is inside, no other room's, and the start of the game in none
    for r, room in enumerate(rooms[1:], 1):
        root = int(room[1]["bsp_node"])
        b = vec(room[1]["box"])
        centre = [(b[k] + b[k + 3]) / 2 for k in range(3)]
        for other, oroom in enumerate(rooms[1:], 1):
            inside = point_in_tree(planes, nodes, int(oroom[1]["bsp_node"]), centre) > 0
            p.need(inside == (other == r), "room %d's centre is %s room %d" % (r, "in" if inside else "not in", other))
        p.need(point_in_tree(planes, nodes, root, (0.0, -1.75, 0.0)) == 0, "the start lies in room %d" % r)
    # no two rooms share open space, or the camera's room would depend on the order of the rooms
    regions = []
    for r, room in enumerate(rooms[1:], 1):
        n = int(room[1]["bsp_node"])
        while True:
            regions.append((r, n))
            n = nodes[n + 5][2] if nodes[n + 5][2] else None
            if n is None:
                break
    boxes = []
    for r, first in regions:
        d = [planes[nodes[first + i][0]][3] for i in range(6)]
        boxes.append((r, (d[0], d[2], d[4]), (-d[1], -d[3], -d[5])))
    for i, (r1, lo1, hi1) in enumerate(boxes):
        for r2, lo2, hi2 in boxes[i + 1:]:
            if r1 != r2 and all(min(hi1[k], hi2[k]) - max(lo1[k], lo2[k]) > 1e-4 for k in range(3)):
                p.append("rooms %d and %d share open space" % (r1, r2))
    # dialogues: each opens, offers at most 8 answers, shows no unknown placeholder
    for name in sorted(os.listdir(os.path.join(out, "dialogues"))):
        with open(os.path.join(out, "dialogues", name), "rb") as f:
            text = f.read()
        for problem in dialogue_walk.explore(text):
            p.append("%s: %s" % (name, problem))
    return p
