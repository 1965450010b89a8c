"""Writes the level's shared files: the collision tree of room regions, scene.xml and items.xml."""
from .geometry import fmt, to_file

ITEMS = [
    # key, display name, model, pickup sound, lock number (None: not a key)
    ("iron_key", "Iron key", "key_iron.mdl", "pickup_key.wav", 1),
    ("rusty_key", "Rusty key", "key_rusty.mdl", "pickup_key.wav", 7),
    ("silver_coin", "Silver coin", "coin.mdl", "pickup_coin.wav", None),
    ("letter", "Sealed letter", "letter.mdl", "pickup_paper.wav", None),
]

BSP_NAME = "keep.bsp"


def file_box(lo, hi):
    """An up-coordinate box as (min, max) in file coordinates (y is down, so the heights swap)."""
    return (lo[0], -hi[1], lo[2]), (hi[0], -lo[1], hi[2])


def bsp_text(rooms):
    """One tree per room: the union of its region boxes.  A box is a chain of six planes (inside
    is in front); falling out of one box tries the next box, and out of the last is solid.  Node 0
    is the first room's root and so never anybody's child, as the format requires."""
    planes = []
    nodes = []
    roots = []

    def plane(a, b, c, d):
        key = (a, b, c, round(d, 4))
        if key not in planes:
            planes.append(key)
        return planes.index(key)

    for room in rooms:
        boxes = [file_box(lo, hi) for lo, hi in room.regions]
        first = len(nodes)
        roots.append(first)
        for k, (mn, mx) in enumerate(boxes):
            start = first + 6 * k
            fallback = start + 6 if k + 1 < len(boxes) else 0
            chain = [plane(1, 0, 0, mn[0]), plane(-1, 0, 0, -mx[0]), plane(0, 1, 0, mn[1]),
                     plane(0, -1, 0, -mx[1]), plane(0, 0, 1, mn[2]), plane(0, 0, -1, -mx[2])]
            for i, p in enumerate(chain):
                front = start + i + 1 if i < 5 else 0
                nodes.append((p, front, fallback))
    out = ["# Room regions of the shipped level, made by tools/generate-data",
           "PLANES %d" % len(planes), "NODES %d" % len(nodes)]
    for a, b, c, d in planes:
        out.append("%s %s %s %s" % (fmt(a), fmt(b), fmt(c), fmt(d)))
    for p, f, b in nodes:
        out.append("%d %d %d" % (p, f, b))
    return "\n".join(out) + "\n", roots


def attr_point(p):
    fp = to_file(p)
    return ",".join(fmt(c) for c in fp)


def room_attrs(room, root):
    mn, mx = file_box(*room.bounds())
    return 'box="%s,%s,%s %s,%s,%s" bsp_node="%d"' % (fmt(mn[0]), fmt(mn[1]), fmt(mn[2]), fmt(mx[0]),
                                                       fmt(mx[1]), fmt(mx[2]), root)


def placement(pos, yaw):
    fp = to_file(pos)
    s = 'x="%s" y="%s" z="%s"' % (fmt(fp[0]), fmt(fp[1]), fmt(fp[2]))
    if yaw:
        s += ' yaw="%s"' % fmt(yaw)
    return s


def room_body(room, indent):
    pad = " " * indent
    out = ['%s<!-- %s -->' % (pad, room.title)]
    out.append('%s<static %s model="%s"/>' % (pad, placement((0, 0, 0), 0), room.model.name))
    for model, pos, yaw in room.statics:
        out.append('%s<static %s model="%s"/>' % (pad, placement(pos, yaw), model))
    for other, corners, facing in room.portals:
        out.append('%s<portal points="%s"/>' % (pad, " ".join(attr_point(c) for c in corners)))
    for l in room.lights:
        fp = to_file(l["pos"])
        s = '%s<light x="%s" y="%s" z="%s" radius="%s" brightness="%s"' % (
            pad, fmt(fp[0]), fmt(fp[1]), fmt(fp[2]), fmt(l["radius"]), fmt(l["brightness"]))
        if l["shadow"]:
            s += ' shadow="1"'
        if l["style"]:
            s += ' flickering="%d"' % l["style"]
        out.append(s + "/>")
    for model, pos, yaw, dialogue, animation in room.actors:
        s = '%s<actor %s model="%s" dialogue="%s"' % (pad, placement(pos, yaw), model, dialogue)
        if animation:
            s += ' animation="%s"' % animation
        out.append(s + "/>")
    for model, pos, yaw, lock in room.doors:
        s = '%s<door %s model="%s"' % (pad, placement(pos, yaw), model)
        if lock:
            s += ' lock="%d"' % lock
        out.append(s + "/>")
    for model, pos, yaw, item in room.pickups:
        out.append('%s<pickup %s model="%s" item="%s"/>' % (pad, placement(pos, yaw), model, item))
    return out


def scene_text(rooms, roots):
    out = ['<?xml version="1.0" encoding="utf-8"?>',
           "<!-- Gloamhold: the yard and the keep. Made by tools/generate-data from tools/gloamgen/level.py. -->",
           '<scene bsp="%s" %s>' % (BSP_NAME, room_attrs(rooms[0], roots[0]))]
    out += room_body(rooms[0], 2)
    for room, root in zip(rooms[1:], roots[1:]):
        out.append("  <room %s>" % room_attrs(room, root))
        out += room_body(room, 4)
        out.append("  </room>")
    out.append("</scene>")
    return "\n".join(out) + "\n"


def items_text():
    out = ['<?xml version="1.0" encoding="utf-8"?>',
           "<!-- Everything that can be carried. Made by tools/generate-data. -->", "<items>"]
    for key, name, model, sound, lock in ITEMS:
        s = '  <item key="%s" name="%s" model="%s" pickup_sound="%s"' % (key, name, model, sound)
        if lock is not None:
            s += ' type="key" lock="%d"' % lock
        out.append(s + "/>")
    out.append("</items>")
    return "\n".join(out) + "\n"
