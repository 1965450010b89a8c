"""A model of how the game indexes and plays a dialogue file, used to try every answer of the
shipped conversations before they ship: each must open, offer at most 8 answers (and no more
than fit the dialogue box under its speech), and never show an unknown placeholder."""

# The dialogue box (the bottom quarter of a 480-line frame) holds two lines of speech and four
# answers, or one line and five.
ONE_LINE = 80
TWO_LINES = 160


def index(text):
    entries = []
    i, n, indent = 0, len(text), 0
    line_start = True
    while i < n and text[i] != 0:
        c = text[i]
        if c in (10, 13):
            indent, line_start = 0, True
            i += 1
            continue
        if c == ord("#") and (line_start or (i > 0 and text[i - 1] == ord(":"))):
            while i < n and text[i] != 10:
                i += 1
            continue
        line_start = False
        if c in (32, 9):
            indent += 1
            i += 1
            continue
        start = i
        while i < n and text[i] not in (10, 13, 0):
            i += 1
            if text[i - 1] == ord(":"):
                break
        entries.append((indent, text[start:i].decode("utf-8")))
    return entries


class Runtime:
    def __init__(self, entries, level_rule, clock):
        self.e = entries
        self.rule = level_rule
        self.vars = {}
        self.clock = clock

    def kind(self, s):
        if s.endswith(":"):
            if s.startswith("if "):
                return "if"
            if s.startswith("else:"):
                return "else"
            if s.startswith("> "):
                return "answer"
            return "label"
        if s.startswith('"'):
            return "text"
        if s.startswith("@"):
            return "jump"
        return "statement"

    def level(self, p):
        if p < 0:
            return self.e[0][0]
        if self.rule == "next":
            return self.e[p + 1][0] if p + 1 < len(self.e) else 0
        return self.e[p][0] + 1

    def run(self, start):
        self.text, self.choices, self.depth = [], [], 0
        self.walk(start)
        return self.choices

    def walk(self, p):
        self.depth += 1
        if self.depth > 60:
            raise RecursionError("jumps loop without an answer")
        lvl = self.level(p)
        last = False
        i = p + 1
        while i < len(self.e):
            ind, s = self.e[i]
            if ind < lvl:
                break
            if ind == lvl:
                k = self.kind(s)
                if k == "if":
                    last = self.eval(s[3:-1])
                    if last:
                        self.walk(i)
                elif k == "else":
                    if not last:
                        self.walk(i)
                elif k == "answer":
                    self.choices.append(i)
                elif k == "text":
                    self.text.append(self.expand(s))
                elif k == "jump":
                    label = s[1:]
                    for j, (_, t) in enumerate(self.e):
                        if t.endswith(":") and t.startswith(label):
                            self.walk(j)
                            break
                    else:
                        break
                else:
                    self.eval(s)
            i += 1
        self.depth -= 1

    def expand(self, s):
        body = s[1:s.index('"', 1)] if '"' in s[1:] else s[1:]
        out = ""
        while "{" in body:
            a, rest = body.split("{", 1)
            name, _, body = rest.partition("}")
            out += a + (self.vars.get(name[6:], "<?>") if name.startswith("state.") else "<?>")
        return out + body

    def eval(self, s):
        toks = s.split(None, 2)
        if len(toks) == 1:
            t = toks[0]
            if t.startswith("!state."):
                return t[7:] not in self.vars
            return t.startswith("state.") and t[6:] in self.vars
        if len(toks) != 3 or not toks[0].startswith("state."):
            return False
        name, op, value = toks[0][6:], toks[1], toks[2]
        if op == "=":
            if value.endswith(")") and "(" in value:
                a, b = [float(x) for x in value[value.index("(") + 1:-1].split(",")]
                self.vars[name] = "%d" % int((self.clock % 1.0) * (b - a) + a)
                return True
            self.vars[name] = value
            return True
        if op == "==":
            return self.vars.get(name) == value
        if op == "!=":
            return self.vars.get(name) != value
        return False

    def answer_text(self, i):
        s = self.e[i][1]
        return s[s.index('"') + 1:s.index('"', s.index('"') + 1)]


def explore(raw, max_picks=7):
    problems = []
    entries = index(raw)
    for rule in ("next", "plus_one"):
        for clock in (0.05, 0.4, 0.9):
            seen = set()
            stack = [((), {})]
            while stack:
                picks, vars_ = stack.pop()
                rt = Runtime(entries, rule, clock)
                rt.vars = dict(vars_)
                choices = rt.run(-1)
                for k in picks:
                    choices = rt.run(choices[k])
                key = (tuple(sorted(rt.vars.items())), tuple(choices), tuple(rt.text))
                if key in seen:
                    continue
                seen.add(key)
                speech = " ".join(rt.text)
                where = "after answers %s (%s)" % (list(picks), rule)
                if not picks and not choices:
                    problems.append("does not open %s" % where)
                if len(choices) > 8:
                    problems.append("offers %d answers %s" % (len(choices), where))
                if "<?>" in speech:
                    problems.append("unknown placeholder %s" % where)
                if choices and len(speech) > (ONE_LINE if len(choices) >= 5 else TWO_LINES):
                    problems.append("speech too long for %d answers %s: %s" % (len(choices), where, speech))
                if choices and not speech and picks:
                    problems.append("answers without speech %s" % where)
                if len(picks) < max_picks:
                    for k in range(len(choices)):
                        stack.append((picks + (k,), rt.vars))
    return sorted(set(problems))
