"""Changes of C++ code in one place at a time, as a slip of the keyboard or of the mind makes them."""

import re
from dataclasses import dataclass

TOKENS = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ ]*\#[^\n]*)
      | (?P<text>"(?:\\.|[^"\\\n])*")
      | (?P<character>'(?:\\.|[^'\\\n])+')
      | (?P<number>\b\d[\w.]*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<sign>==|!=|<=|>=|&&|\|\||\+\+|--|\+=|-=|->|::|<<|>>|[^\s\w])""",
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

CONDITIONS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">"], ">": [">=", "<"], "<=": ["<", ">"],
    ">=": [">", "<"], "&&": ["||"], "||": ["&&"],
}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "++": "--", "--": "++",
              "&": "|", "|": "&", "<<": ">>", ">>": "<<", "%": "*"}

# Names that stand beside each other in the same classes and fit where the other one belongs.
SIMILAR_NAMES = [
    ("getVersionLumasolver", "getVersionController"), ("verPt", "verCt"), ("sVerPt", "sVerCt"),
    ("currentPt", "currentCt"), ("newPtVersion", "newCtVersion"), ("minPtVersion", "minCtVersion"),
    ("newPtVer", "newCtVer"), ("minPtVer", "minCtVer"), ("systemPt", "systemCt"),
    ("sysPt", "sysCt"), ("newVornix2Version", "newPtVersion"), ("newVX2Ver", "newPtVer"),
    ("newPtVersion", "newVornix2Version"), ("newPtVer", "newVX2Ver"),
    ("maxPtVer", "maxCtVer"), ("maxPtVersion", "maxCtVersion"), ("minVer", "maxVer"),
    ("newVer", "minVer"), ("getNewVer", "getMinVer"), ("viFrom", "viTo"),
    ("systemPt", "protocol"), ("systemCt", "protocol"),
    ("ma", "mi"), ("mi", "pa"), ("major", "minor"), ("minor", "patch"),
    ("hostname", "ip"), ("sHostname", "sIp"), ("m_sCamModel", "m_sCamSerial"),
    ("m_sCamModelDesc", "m_sCamModel"), ("getCamModelDesc", "getCamSerial"),
    ("ZAN_FIRMWARE_UPDATE", "ZAN_SYSTEM_UPDATE"),
    ("ZAN_UPDATE_NOT_AVAILABLE", "ZAN_UPDATE_NOTDEFINED"), ("CAMERA_UPDATE", "ZAN_SYSTEM_UPDATE"),
    ("m_isPossible", "m_isRebootNecessary"), ("isCameraUpdate", "isCameraUpdateOnly"),
    ("updatePossibleString", "rebootNecessaryString"), ("isSlave", "isPreRelease"),
    ("first", "last"), ("show", "hide"), ("append", "prepend"), ("minimum", "maximum"),
    ("Yes", "No"), ("Ok", "Cancel"), ("warning", "information"), ("information", "question"),
    ("label_messages", "label_what"), ("Checked", "Unchecked"),
]

# What a controller reports against where the walk over the rows stands.
REPORTED_OR_RUNNING = [
    ("m_controller->getVersionLumasolver()", "m_controller->currentPt"),
    ("m_controller->getVersionController()", "m_controller->currentCt"),
    ("->getVersionLumasolver()", "->currentPt"), ("->getVersionController()", "->currentCt"),
    ("verPt >=", "*currentPt >="), ("verCt >=", "*currentCt >="),
    ("verPt <", "*currentPt <"), ("verCt <", "*currentCt <"), ("verPt ==", "*currentPt =="),
    ("*currentPt,", "m_controller->getVersionLumasolver(),"),
    ("= *currentPt;", "= m_controller->getVersionLumasolver();"),
    ("= *currentCt;", "= m_controller->getVersionController();"),
    ("(currentCt,", "(m_controller->getVersionController(),"),
]

ENCODINGS = {
    "toLatin1": ["toUtf8"], "toUtf8": ["toLatin1"], "fromLatin1": ["fromUtf8"],
    "fromUtf8": ["fromLatin1"], "fromAscii": ["fromUtf8"], "toLocal8Bit": ["toLatin1"],
    "fromLocal8Bit": ["fromLatin1"], "QLatin1String": [], "encodeName": [],
}

CALL = re.compile(r"^(?P<indent> +)(?!return\b|delete\b|else\b|case\b|using\b|emit\b)"
                  r"[\w.>:\-*]+(?:\[[^\]]*\])?\(.*\);$")
ASSIGNMENT = re.compile(r"^(?P<indent> +)[\w.>\-*]+(?:\[[^\]]*\])? (?:=|\+=|-=) .*;$")


@dataclass(frozen=True)
class Mutation:
    """One change: what stands at [start, end) of the file becomes `new`."""

    file: str
    kind: str
    start: int
    end: int
    old: str
    new: str
    line: int
    context: str

    def apply(self, source):
        return source[: self.start] + self.new + source[self.end :]

    def name(self):
        """The same for as long as the line reads as it does: line numbers do not count."""
        old, new = (" ".join(text.split()) for text in (self.old, self.new))
        return f"{self.file} | {self.context} | {old} -> {new}"


class Source:
    """A file's text, its tokens and lines."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = [m for m in TOKENS.finditer(text) if m.lastgroup not in ("comment", "directive")]
        self.comments = [m.span() for m in TOKENS.finditer(text)
                         if m.lastgroup in ("comment", "directive")]

    def mutation(self, kind, start, end, new):
        line = self.text.count("\n", 0, start) + 1
        context = " ".join(self.text.split("\n")[line - 1].split())
        return Mutation(self.file, kind, start, end, self.text[start:end], new, line, context)

    def is_spaced(self, token):
        return self.text[token.start() - 1] in " \n" and self.text[token.end()] in " \n"

    def is_in_comment(self, position):
        return any(start <= position < end for start, end in self.comments)


def conditions(source):
    for token in source.tokens:
        if token.group() in CONDITIONS and source.is_spaced(token):
            for new in CONDITIONS[token.group()]:
                yield source.mutation("condition", token.start(), token.end(), new)
        elif token.group() == "!":
            yield source.mutation("condition", token.start(), token.end(), "")
        elif token.group() in ("true", "false"):
            new = "false" if token.group() == "true" else "true"
            yield source.mutation("condition", token.start(), token.end(), new)
    for match in re.finditer(r"\b(?:if|while) \((?=[^;{]*\)(?: \{)?$)", source.text, re.MULTILINE):
        if not source.is_in_comment(match.start()):
            end = source.text.index("\n", match.end())
            inner = source.text[match.end():end]
            tail = ") {" if inner.endswith(") {") else ")"
            new = match.group() + "!(" + inner[: -len(tail)] + ")" + tail
            yield source.mutation("condition", match.start(), end, new)


def numbers(source):
    for token in source.tokens:
        if token.lastgroup == "number":
            new = f"({token.group()} + 1)"
            yield source.mutation("number or code", token.start(), token.end(), new)


def arithmetic(source):
    for token in source.tokens:
        if token.group() in ARITHMETIC and (source.is_spaced(token) or token.group() in ("++", "--")):
            yield source.mutation("arithmetic", token.start(), token.end(), ARITHMETIC[token.group()])


def similar_names(source):
    names = {}
    for a, b in SIMILAR_NAMES:
        names.setdefault(a, []).append(b)
        names.setdefault(b, []).append(a)
    for token in source.tokens:
        if token.lastgroup == "name":
            for new in dict.fromkeys(names.get(token.group(), [])):
                yield source.mutation("similar name", token.start(), token.end(), new)
    for old, new in REPORTED_OR_RUNNING:
        for match in re.finditer(re.escape(old), source.text):
            if not source.is_in_comment(match.start()):
                yield source.mutation("reported or running", match.start(), match.end(), new)


def encodings(source):
    for token in source.tokens:
        for new in ENCODINGS.get(token.group(), []):
            yield source.mutation("encoding", token.start(), token.end(), new)


def connections(source):
    for token in source.tokens:
        if token.group() == "DirectConnection":
            yield source.mutation("connection", token.start(), token.end(), "QueuedConnection")
        elif token.group() == "QueuedConnection":
            yield source.mutation("connection", token.start(), token.end(), "DirectConnection")
    for match in re.finditer(r"\bconnect\((?:[^;]*?)\);", source.text, re.DOTALL):
        if "Connection" not in match.group() and not source.is_in_comment(match.start()):
            new = match.group()[:-2] + ", Qt::QueuedConnection);"
            yield source.mutation("connection", match.start(), match.end(), new)


def virtuals(source):
    for match in re.finditer(r"\bvirtual (?P<result>[\w*&: ]*?)(?P<rest>~?\w+\([^;]*?\)(?: const)?) = 0;",
                             source.text, re.DOTALL):
        body = " {}" if match["result"].strip() in ("", "void") else " { return {}; }"
        new = "virtual " + match["result"] + match["rest"] + body
        yield source.mutation("virtual", match.start(), match.end(), new)
    for match in re.finditer(r"\bvirtual ", source.text):
        if not source.is_in_comment(match.start()):
            yield source.mutation("virtual", match.start(), match.end(), "")
    lines = source.text.split("\n")
    offset = 0
    for here, below in zip(lines, lines[1:] + [""]):
        if here.strip().startswith("virtual ") and below.strip().startswith("virtual ") \
                and here.endswith(";") and below.endswith(";"):
            end = offset + len(here) + 1 + len(below)
            yield source.mutation("virtual", offset, end, below + "\n" + here)
        offset += len(here) + 1


def texts(source):
    for token in source.tokens:
        # What the compiler says when it asserts is seen by nobody else.
        is_asserted = "static_assert" in source.text[source.text.rfind(";", 0, token.start()):token.start()]
        if token.lastgroup == "text" and len(token.group()) > 2 and not is_asserted:
            last = token.group()[-2]
            new = token.group()[:-2] + ("#" if last != "#" else "?") + '"'
            if token.group()[-3] == "\\":
                new = token.group()[:-3] + '#"'
            yield source.mutation("text", token.start(), token.end(), new)


def statements(source):
    """A call or assignment left out, a function left early, and two calls in the other order."""
    offset = 0
    lines = source.text.split("\n")
    calls = [CALL.match(line) for line in lines]
    for number, line in enumerate(lines):
        start = offset + len(line) - len(line.lstrip())
        end = offset + len(line)
        offset = end + 1
        if source.is_in_comment(start):
            continue
        if calls[number] or ASSIGNMENT.match(line):
            yield source.mutation("left out", start, end, ";")
        if calls[number]:
            below = number + 1
            # The order of assignments is seen by nobody, that of calls by whoever is called.
            if below < len(lines) and calls[below] \
                    and calls[below]["indent"] == calls[number]["indent"]:
                new = lines[below].lstrip() + "\n" + line
                yield source.mutation("order", start, end + 1 + len(lines[below]), new)
        if line.strip() == "return;":
            yield source.mutation("left out", start, end, ";")


OPERATORS = [conditions, numbers, arithmetic, similar_names, encodings, connections, virtuals, texts,
             statements]


def mutations(file, text):
    """All changes of the file, in the order of their places."""
    source = Source(file, text)
    found = {m.name() + str(m.start): m for operator in OPERATORS for m in operator(source)}
    return sorted(found.values(), key=lambda m: (m.start, m.kind, m.new))
