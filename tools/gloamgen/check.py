"""Re-reads the generated data against the rules of the game's formats: a sanity check of the
generator (the game's own loaders are the final judge).  Returns a list of problems."""
import math
import os
import re
import struct

from . import dialogue_walk

MATERIALS = {"stone", "ground", "wood", "metal", "carpet", "ceramic"}
FIXED_SOUNDS = (["door_opening.wav", "door_closing.wav", "door_locked.wav", "door_unlock.wav"] +
                ["pl_step_%s%02d.wav" % (m, v) for m in ("stone", "ground", "wood", "metal", "carpet", "ceramic")
                 for v in range(1, 5)] +
                ["pl_land_%s01.wav" % m for m in ("stone", "ground", "wood", "metal", "carpet", "ceramic")] +
                ["pl_hurt01.wav", "pl_death01.wav", "pl_climb01.wav"])


class Problems(list):
    def need(self, ok, text):
        if not ok:
            self.append(text)
        return ok


def content_lines(path, p):
    with open(path, "rb") as f:
        raw = f.read()
    lines = raw.split(b"\n")
    for i, l in enumerate(lines):
        p.need(len(l) < 200, "%s:%d: line of %d characters" % (path, i + 1, len(l)))
        p.need(l != b"" or i == len(lines) - 1, "%s:%d: an empty line ends reading early" % (path, i + 1))
    return [l.decode("utf-8") for l in lines if l and not l.startswith(b"#")]


def texture_ok(name, folder, p):
    p.need(len(name) <= 39, "texture name longer than 39: %s" % name)
    if not p.need(os.path.exists(os.path.join(folder, name)), "missing texture %s" % name):
        return
    stem = name.split(".")[0]
    if "@" in stem:
        flags = stem.split("@", 1)[1]
        for i, c in enumerate(flags):
            if c in "et":
                p.need(i + 1 < len(flags) and flags[i + 1].isdigit(), "bad suffix in %s" % name)


def read_model(path, p, textures):
    lines = content_lines(path, p)
    keys = ["POINTS ", "TRIANGLES ", "TEXCOORDS ", "WEIGHTS ", "SUBSETS ", "COLLIDERS ", "OCCLUDERS "]
    counts = []
    for i, k in enumerate(keys):
        if not p.need(lines[i].startswith(k) and re.fullmatch(r"-?\d+", lines[i][len(k):]), "%s: header %s" % (path, k)):
            return None
        counts.append(int(lines[i][len(k):]))
    np_, nt, ntc, nw, ns, nc, no = counts
    at = 7

    def take(n, fields, what):
        nonlocal at
        rows = []
        for _ in range(n):
            if not p.need(at < len(lines), "%s: missing %s lines" % (path, what)):
                return rows
            parts = lines[at].split()
            p.need(len(parts) == fields, "%s: '%s' is not a %s line" % (path, lines[at], what))
            rows.append(parts)
            at += 1
        return rows

    pts = [tuple(float(v) for v in r) for r in take(np_, 3, "point")]
    tris = [tuple(int(v) for v in r) for r in take(nt, 3, "triangle")]
    for t in tris:
        p.need(all(0 <= i < np_ for i in t), "%s: triangle index out of range" % path)
    if ntc:
        uv = take(ntc, 2, "texcoord")
        tt = [tuple(int(v) for v in r) for r in take(nt, 3, "texcoord index")]
        for t in tt:
            p.need(all(0 <= i < ntc for i in t), "%s: texcoord index out of range" % path)
    weights = []
    if nw:
        weights = [(int(r[0]), float(r[4])) for r in take(nw, 5, "weight")]
        runs = [tuple(int(v) for v in r) for r in take(np_, 2, "weight run")]
        for first, count in runs:
            p.need(0 <= first and first + count <= nw, "%s: weight run out of range" % path)
    subsets = take(ns, 3, "subset")
    end = 0
    for name, first, last in subsets:
        p.need(int(first) == end and int(last) > int(first), "%s: subsets not contiguous" % path)
        end = int(last)
        texture_ok(name, textures, p)
    p.need(end == nt, "%s: subsets do not cover the triangles" % path)
    colliders = []
    if nc:
        if p.need(lines[at].startswith("COLLISION_TRIANGLES "), "%s: no COLLISION_TRIANGLES" % path):
            n = int(lines[at].split()[1])
            at += 1
            ctris = [tuple(int(v) for v in r) for r in take(n, 3, "collision triangle")]
            for t in ctris:
                p.need(all(0 <= i < np_ for i in t), "%s: collision index out of range" % path)
            for mat, a, b in take(nc, 3, "collider"):
                p.need(mat in MATERIALS, "%s: unknown material %s" % (path, mat))
                p.need(0 <= int(a) < int(b) <= n, "%s: collider range" % path)
                colliders.append((mat, [ctris[i] for i in range(int(a), int(b))]))
    occ = []
    if no:
        if p.need(lines[at].startswith("OCCLUSION_TRIANGLES "), "%s: no OCCLUSION_TRIANGLES" % path):
            n = int(lines[at].split()[1])
            at += 1
            occ = [tuple(int(v) for v in r) for r in take(n, 3, "occlusion triangle")]
            for a, b in take(no, 2, "occluder"):
                p.need(0 <= int(a) < int(b) <= n, "%s: occluder range" % path)
    lo = tuple(min(q[i] for q in pts) for i in range(3))
    hi = tuple(max(q[i] for q in pts) for i in range(3))
    return {"points": pts, "tris": tris, "colliders": colliders, "occ": occ, "bounds": (lo, hi),
            "weights": weights}


def read_png_size(path):
    with open(path, "rb") as f:
        head = f.read(33)
    return struct.unpack(">II", head[16:24]), head[25]


def read_wav(path):
    with open(path, "rb") as f:
        data = f.read()
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        return None
    fmt = data.index(b"fmt ")
    tag, ch, rate, _, _, bits = struct.unpack("<HHIIHH", data[fmt + 8:fmt + 24])
    return tag, ch, rate, bits


ELEMENT = re.compile(r"<([A-Za-z_:][\w:.\-]*)((?:\s+[A-Za-z_][\w.\-]*=\"[^\"]*\")*)\s*(/?)>")
ATTR = re.compile(r"([A-Za-z_][\w.\-]*)=\"([^\"]*)\"")


def read_xml(path, p):
    """A reader as strict as the game's: start tags on one line, short names and values."""
    with open(path, encoding="utf-8") as f:
        text = f.read()
    stack = [("", {}, [])]
    for line_no, line in enumerate(text.split("\n"), 1):
        s = line.strip()
        if not s or s.startswith("<?") or s.startswith("<!--"):
            continue
        if s.startswith("</"):
            name = s[2:-1]
            node = stack.pop()
            p.need(node[0].startswith(name), "%s:%d: end tag %s" % (path, line_no, name))
            continue
        m = ELEMENT.fullmatch(s)
        if not p.need(m is not None, "%s:%d: not a one-line start tag" % (path, line_no)):
            continue
        name, attrs, empty = m.group(1), dict(ATTR.findall(m.group(2))), m.group(3)
        p.need(len(name) <= 62, "%s:%d: element name too long" % (path, line_no))
        for k, v in attrs.items():
            p.need(len(k) <= 62 and len(v) <= 126, "%s:%d: attribute %s too long" % (path, line_no, k))
        node = (name.lower(), {k.lower(): v for k, v in attrs.items()}, [])
        stack[-1][2].append(node)
        if not empty:
            stack.append(node)
    return stack[0][2]


def vec(s):
    return [float(v) for v in re.split(r"[ ,]", s)]


def portal_geometry(pts):
    c = [pts[i * 3:i * 3 + 3] for i in range(4)]
    e1 = [c[1][i] - c[0][i] for i in range(3)]
    e2 = [c[2][i] - c[0][i] for i in range(3)]
    n = [e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]]
    ln = math.sqrt(sum(v * v for v in n))
    n = [v / ln for v in n]
    centre = [sum(q[i] for q in c) / 4 for i in range(3)]
    return c, n, centre


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


def read_bsp(path, p):
    lines = content_lines(path, p)
    planes_n = int(lines[0].split()[1])
    nodes_n = int(lines[1].split()[1])
    planes = [tuple(float(v) for v in l.split()) for l in lines[2:2 + planes_n]]
    nodes = [tuple(int(v) for v in l.split()) for l in lines[2 + planes_n:2 + planes_n + nodes_n]]
    p.need(len(nodes) == nodes_n, "%s: node count" % path)
    for pl, f, b in nodes:
        p.need(0 <= pl < planes_n and 0 <= f < nodes_n and 0 <= b < nodes_n, "%s: index out of range" % path)
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
    tex = os.path.join(out, "textures")
    for name in sorted(os.listdir(tex)):
        (w, h), ctype = read_png_size(os.path.join(tex, name))
        p.need(w & (w - 1) == 0 and h & (h - 1) == 0, "%s is %dx%d, not powers of two" % (name, w, h))
        texture_ok(name, tex, p)
    for k in range(1, 7):
        p.need(os.path.exists(os.path.join(tex, "sky_night%02d.png" % k)), "missing sky face %d" % k)
    snd = os.path.join(out, "sounds")
    for name in sorted(os.listdir(snd)):
        w = read_wav(os.path.join(snd, name))
        p.need(w is not None and w[0] == 1 and w[1] in (1, 2) and w[3] in (8, 16) and w[2] in (22050, 44100),
               "%s is not 8/16-bit PCM at 22050/44100 Hz" % name)
        p.need(len(name) <= 39, "sound name too long: %s" % name)
    for name in FIXED_SOUNDS:
        p.need(os.path.exists(os.path.join(snd, name)), "missing fixed sound %s" % name)
    for name in ("font_system.fnt", "font_dialogue.fnt"):
        with open(os.path.join(out, "fonts", name), "rb") as f:
            data = f.read()
        first, last = data[5], data[6]
        n = last - first + 1
        size = struct.unpack("<I", data[7 + 9 * n:11 + 9 * n])[0]
        p.need(data[:4] == b"FNT\x00" and len(data) == 11 + 9 * n + size, "%s: bad layout" % name)
        for i in range(n):
            adv, ox, oy, w, h, off = struct.unpack("<BbbBBI", data[7 + 9 * i:16 + 9 * i])
            p.need(off + h * ((w + 7) // 8) <= size, "%s: glyph %d outside the bitmaps" % (name, first + i))
        for code in list(range(0x41, 0x5B)) + list(range(0xC0, 0x100)) + [0xA8, 0xB8]:
            p.need(data[7 + 9 * (code - first)] > 0, "%s: no glyph for %#x" % (name, code))
    models = {}
    mdir = os.path.join(out, "models")
    for name in sorted(os.listdir(mdir)):
        p.need(len(name) <= 39, "model name too long: %s" % name)
        models[name] = read_model(os.path.join(mdir, name), p, tex)
    for name in os.listdir(os.path.join(out, "animations")):
        lines = content_lines(os.path.join(out, "animations", name), p)
        bones = int(lines[0].split()[1])
        frames = int(lines[1].split()[1])
        p.need(lines[2].startswith("HIERARCHY ") and len(lines[2].split()) == bones + 1, "%s: hierarchy" % name)
        p.need(len(lines) == 3 + frames * (bones + 1), "%s: frame lines" % name)
        times = [float(lines[3 + f * (bones + 1)]) for f in range(frames)]
        p.need(times == sorted(times) and times[0] == 0, "%s: frame times" % name)
    items = read_xml(os.path.join(out, "items.xml"), p)
    item_keys = set()
    for it in items[0][2]:
        a = it[1]
        item_keys.add(a["key"])
        p.need(len(a["name"]) <= 63, "item name too long")
        p.need(a["model"] in models, "item model %s missing" % a["model"])
        p.need(os.path.exists(os.path.join(snd, a["pickup_sound"])), "item sound %s missing" % a["pickup_sound"])
    scene = read_xml(os.path.join(out, "scene.xml"), p)[0]
    planes, nodes = read_bsp(os.path.join(out, scene[1]["bsp"]), p)
    rooms = [scene] + [c for c in scene[2] if c[0] == "room"]
    portals = []
    doors = []
    for r, room in enumerate(rooms):
        for c in room[2]:
            kind, a = c[0], c[1]
            if "model" in a:
                p.need(a["model"] in models, "scene model %s missing" % a["model"])
            if "animation" in a:
                p.need(os.path.exists(os.path.join(out, "animations", a["animation"])), "animation missing")
            if kind == "actor":
                p.need(os.path.exists(os.path.join(out, "dialogues", a["dialogue"])), "dialogue missing")
            if kind == "pickup":
                p.need(a["item"] in item_keys, "pickup of unknown item %s" % a["item"])
            if kind == "portal":
                v = vec(a["points"])
                p.need(len(v) == 12, "portal with %d numbers" % len(v))
                portals.append((r,) + portal_geometry(v))
            if kind == "door":
                doors.append(a)
            if kind == "light":
                p.need(float(a["radius"]) > 0, "light without radius")
    for i, (r, c, n, centre) in enumerate(portals):
        match = None
        for j, (r2, c2, n2, _) in enumerate(portals):
            if r2 == r or sum(n[k] * n2[k] for k in range(3)) > -0.99:
                continue
            if all(any(math.dist(q, q2) < 0.01 for q2 in c2) for q in c):
                match = r2
                break
        p.need(match is not None, "portal %d of room %d has no partner" % (i, r))
    for d in doors:
        m = models[d["model"]]
        pos = [float(d[k]) for k in ("x", "y", "z")]
        lo, hi = transform_box(m["bounds"][0], m["bounds"][1], pos, float(d.get("yaw", "0")) * 0.017453292)
        hits = [i for i, (r, c, n, centre) in enumerate(portals)
                if all(lo[k] <= centre[k] <= hi[k] for k in range(3))]
        p.need(len(hits) == 2, "door %s fills %d portals, not a pair" % (d["model"], len(hits)))
    # every room's region tree: its own box corners are inside, the start of the game is in none
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
        root = int(room[1]["bsp_node"])
        n = root
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
