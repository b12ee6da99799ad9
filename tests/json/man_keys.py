#!/usr/bin/python3
"""The keys of quarl-json by type, for its man page, out of the schema.

Usage: man_keys.py --print QUARL_JSON            prints that part of the page
       man_keys.py --check QUARL_JSON MAN_PAGE   fails when the page has another one
"""
import json
import subprocess
import sys

BEGIN = ".\\\" The keys, by tests/json/man_keys.py --print"
END = ".\\\" End of the keys"
MARKS = ["leap_second", "cut", "bad", "volume"]
SHARED = ["item", "type", "name", "file", "offset", "record", "length"]


def described(schema):
    """What a member is, in few words."""
    about = schema.get("description", "")
    if "$ref" in schema:
        return f"time; {about}"
    if "const" in schema:
        return json.dumps(schema["const"])
    if "enum" in schema:
        return " or ".join(json.dumps(one) for one in schema["enum"])
    kind = schema["type"]
    text = " or ".join(kind) if isinstance(kind, list) else kind
    return f"{text}; {about}" if about else text


def rows(schema, depth=0):
    """A line for each key; those of lists below their list."""
    for key, value in schema["properties"].items():
        if depth == 0 and key in SHARED or key in MARKS or key.endswith(("_seconds", "_raw")):
            continue
        name = "\\ \\ " * depth + key
        if value.get("type") == "array" and "properties" in value["items"]:
            yield f".It {name} Ta array; {value['description']}"
            yield from rows(value["items"], depth + 1)
        else:
            yield f".It {name} Ta {described(value)}"


def title(name, schema):
    """The heading of a definition."""
    if name.startswith("blockette_"):
        kind = schema["properties"]["name"]["const"]
        return f"Blockette {name[-3:]}: {kind}"
    if name.startswith("data_blockette_"):
        return f"Data blockette {name[15:]}: {schema['title']}"
    return {"unparsed": "Blockettes of other types", "data": "Data records",
            "file": "Ends of input files"}[name]


def section(schema):
    """The part of the page, line by line."""
    yield BEGIN
    for name, definition in schema["$defs"].items():
        if name in ("time", "data_blockette", "data_blockette_unknown"):
            continue
        yield f".Ss {title(name, definition)}"
        lines = list(rows(definition))
        if not lines:
            yield "The standard leaves its fields open."
            continue
        yield ".Bl -column \"number_of_blockettes_that_follow\" \"integer or null\" -compact"
        yield from lines
        yield ".El"
    yield END


def main():
    done = subprocess.run([sys.argv[2], "--schema"], capture_output=True, check=True)
    wanted = list(section(json.loads(done.stdout)))
    if sys.argv[1] == "--print":
        print("\n".join(wanted))
        return
    with open(sys.argv[3], encoding="ascii") as page:
        lines = page.read().splitlines()
    there = lines[lines.index(BEGIN):lines.index(END) + 1]
    if there != wanted:
        sys.exit("the keys in the page differ: " + "; ".join(sorted(set(wanted) ^ set(there))[:9]))


main()
