"""Reads argument lists out of Fortran reference sources.

`routine(path)` gives one `Routine`: result type, arguments in order with type, shape and the
intent that the source's own documentation states, and whether the body assigns the argument.
Only what the reference BLAS and LAPACK use is understood: fixed form and the few free-form files.
"""

import dataclasses
import pathlib
import re

FOLDERS = ("SRC", "SRC/DEPRECATED", "BLAS/SRC", "INSTALL")
DECLARATION = re.compile(
    r"^(CHARACTER(?:\s*\*\s*(?:\d+|\(\s*\*\s*\))|\s*\(\s*LEN\s*=\s*[^)]*\))?|INTEGER|"
    r"LOGICAL|REAL\s*\(WP\)|COMPLEX\s*\(WP\)|REAL|DOUBLE\s+PRECISION|COMPLEX\s*\*\s*16|COMPLEX|"
    r"EXTERNAL)(?!\w|\s*FUNCTION)[\s,:]*(.*)$")
HEADING = re.compile(
    r"^(?:RECURSIVE\s+)?(?:(?P<type>[A-Z][A-Z *0-9()]*?)\s+)?(?P<what>SUBROUTINE|FUNCTION)\s+"
    r"(?P<name>\w+)\s*\((?P<args>[^)]*)\)")


@dataclasses.dataclass
class Argument:
    name: str
    type: str = "?"  # character integer logical real complex function
    array: bool = False
    intent: str = "?"  # in out in,out
    assigned: bool = False


@dataclasses.dataclass
class Routine:
    name: str
    result: str
    arguments: list


def find(root, name):
    """The source file of routine `name` below the source tree `root`, or None."""
    for folder in FOLDERS:
        for suffix in (".f", ".f90"):
            path = pathlib.Path(root) / folder / (name + suffix)
            if path.exists():
                return path
    return None


def routine(path):
    text = path.read_text(errors="replace")
    statements = _statements(text, free_form=path.suffix == ".f90")
    start, heading = next((i, m) for i, m in enumerate(map(HEADING.match, statements)) if m)
    names = [a.strip() for a in heading["args"].split(",") if a.strip()]
    arguments = {name: Argument(name.lower()) for name in names}
    body = _until_end(statements[start + 1:])
    _read_declarations(body, arguments)
    _read_intents(text, arguments)
    _read_assignments(body, arguments)
    result = "void" if heading["what"] == "SUBROUTINE" else _result_type(heading, body)
    return Routine(heading["name"].lower(), result, list(arguments.values()))


def _statements(text, free_form):
    """Upper-case statements without comments, continuation lines joined."""
    result, pending = [], False
    for line in text.upper().splitlines():
        if free_form:
            line = line.split("!")[0].strip()
            more = line.endswith("&")
            line = line.rstrip("&").strip()
            if pending:
                result[-1] += " " + line
            elif line:
                result.append(line)
            pending = more
        elif line[:1] in ("*", "C", "!", "") or not line.strip():
            continue
        elif len(line) > 5 and line[5] not in " 0" and not line[:5].strip():
            result[-1] += line[6:72].split("!")[0].rstrip()
        else:
            result.append(line[:72].split("!")[0].strip())
    return [re.sub(r"^\d+\s+", "", s) for s in result]


def _until_end(statements):
    for i, statement in enumerate(statements):
        if re.match(r"END(\s+(SUBROUTINE|FUNCTION).*)?$", statement):
            return statements[:i]
    return statements


def _kind(word):
    word = re.sub(r"\s+", "", word)
    for prefix, kind in (("CHARACTER", "character"), ("INTEGER", "integer"), ("LOGICAL", "logical"),
                         ("REAL", "real"), ("DOUBLE", "real"), ("COMPLEX", "complex"),
                         ("EXTERNAL", "function")):
        if word.startswith(prefix):
            return kind
    raise ValueError(word)


def _entities(text):
    """Splits `A(LDA,*), B` at the commas outside parentheses."""
    depth, entity = 0, ""
    for letter in text + ",":
        if letter == "," and depth == 0:
            yield entity.strip()
            entity = ""
        else:
            depth += (letter == "(") - (letter == ")")
            entity += letter


def _read_declarations(body, arguments):
    for statement in body:
        match = DECLARATION.match(statement)
        if not match:
            continue
        for entity in _entities(match[2].replace("::", " ")):
            name = re.match(r"\w*", entity)[0]
            if name in arguments and arguments[name].type != "function":
                arguments[name].type = _kind(match[1])
                arguments[name].array |= "(" in entity


def _read_intents(text, arguments):
    for intent, name in re.findall(r"\\param\[\s*([a-z, ]+?)\s*\]\s+(\w+)", text):
        if name.upper() in arguments:
            arguments[name.upper()].intent = intent.replace(" ", "")


def _read_assignments(body, arguments):
    for statement in body:
        target = re.sub(r"^(ELSE\s*)?IF\s*\(.*\)\s+(?=\w+\s*=)", "", statement)
        match = re.match(r"(?:DO\s+(?:\d+\s+)?)?(\w+)\s*=(?!=)", target)
        if match and match[1] in arguments:
            arguments[match[1]].assigned = True


def _result_type(heading, body):
    if heading["type"]:
        return _kind(heading["type"])
    for statement in body:
        match = DECLARATION.match(statement)
        if match and heading["name"] in re.findall(r"\w+", match[2]):
            return _kind(match[1])
    return "?"
