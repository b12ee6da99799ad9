#!/usr/bin/python3
"""Validates what quarl-json prints against the schema that it prints.

Usage: validate_lines.py QUARL_JSON COMPOSE_VOLUME. Every line has to be valid by its definition,
and a line of each kind by the schema as a whole. A line with a key too many, without a key, or with
a value of another kind is invalid.
"""
import json
import re
import sys

import jsonschema

from volumes import run, volumes

TIME = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:[0-5]\d\.\d{6}Z")
# Members that there need not be.
OPTIONAL = {"bad", "cut", "leap_second", "remark", "values", "text", "values_error"}


def time_checker():
    """Times are of one width; there is nothing else under their keys."""
    checker = jsonschema.FormatChecker(formats=())
    checker.checks("date-time")(lambda time: time is None or TIME.fullmatch(time) is not None)
    return checker


def definition(item):
    """Name of the definition that is an item's."""
    if item["item"] != "blockette":
        return item["item"]
    return "unparsed" if "parsed" in item else f"blockette_{item['type']:03d}"


def validators(schema, checker):
    """A validator for each definition."""
    for name in schema["$defs"]:
        part = {"$ref": f"#/$defs/{name}", "$defs": schema["$defs"]}
        yield name, jsonschema.Draft202012Validator(part, format_checker=checker)


def wrong_lines(item):
    """The item with one member changed."""
    yield dict(item, another=1)
    for key, value in item.items():
        optional = key.endswith(("_seconds", "_raw")) or (
            key in OPTIONAL and not isinstance(value, bool) and item.get("item") == "data") or (
                key == "volume" and item["item"] != "file")
        if not optional and not (key in ("bad", "cut", "leap_second") and value is True):
            yield {k: v for k, v in item.items() if k != key}
        if not isinstance(value, bool) or key not in ("bad", "cut", "leap_second"):
            yield dict(item, **{key: {} if not isinstance(value, dict) else 0})


def check_descriptions(part, path="schema"):
    """Every property is described."""
    if isinstance(part, list):
        for number, value in enumerate(part):
            check_descriptions(value, f"{path}/{number}")
    elif isinstance(part, dict):
        for key, value in part.get("properties", {}).items():
            told = value.get("description", "")
            in_condition = path.endswith("/if")
            assert in_condition or (told and not told.endswith((": ", ", "))), (path, key, value)
        for key, value in part.items():
            check_descriptions(value, f"{path}/{key}")


def check_data_blockette(blockette, validators_of, seen):
    """A blockette of a data record is told by its type; each lacks a member once."""
    kind = f"data_blockette_{blockette['type']}"
    if kind not in validators_of:
        kind = "data_blockette_unknown"
    seen[kind] = seen.get(kind, 0) + 1
    if seen[kind] == 1:
        for wrong in wrong_lines(blockette):
            assert not validators_of["data_blockette"].is_valid(wrong), wrong


def without_repeats(pairs):
    """An object, whose keys must differ."""
    item = dict(pairs)
    assert len(item) == len(pairs), pairs
    return item


def main():
    quarl_json, compose = sys.argv[1:]
    schema = json.loads(run(quarl_json, "--schema")[0])
    jsonschema.Draft202012Validator.check_schema(schema)
    whole = jsonschema.Draft202012Validator(schema)
    strict = dict(validators(schema, time_checker()))
    check_descriptions(schema)
    seen = {}
    for name, path in volumes(compose):
        options = ["--samples", "--epoch", "--name"] if len(seen) % 2 else []
        for line in run(quarl_json, *options, path)[0].decode("utf-8").splitlines():
            item = json.loads(line, object_pairs_hook=without_repeats)
            kind = definition(item)
            strict[kind].validate(item)
            if seen.setdefault(kind, 0) == 0:
                whole.validate(item)
                for wrong in wrong_lines(item):
                    assert not strict[kind].is_valid(wrong), f"{name}: {wrong}"
            seen[kind] += 1
            for blockette in item.get("blockettes", []):
                check_data_blockette(blockette, strict, seen)
    unseen = schema["$defs"].keys() - seen.keys() - {"time", "data_blockette"}
    assert not unseen, f"no volume has {unseen}"
    print(f"{sum(seen.values())} lines of {len(seen)} kinds are valid")


main()
