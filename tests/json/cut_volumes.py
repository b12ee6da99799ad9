#!/usr/bin/python3
"""Cuts the sample volume and compares what quarl-json prints of what is left.

Usage: cut_volumes.py QUARL_JSON [CUTS]. An item that differs from that of the whole volume has to
say that it is cut, and what it still says has to be right: a value is null when it was not read,
and a list holds the entries that were.
"""
import json
import pathlib
import sys
import tempfile

from volumes import SOURCE, run

MARKS = {"cut", "bad", "remark", "parsed", "text", "name", "values_error"}


def wrong_parts(there, whole, path=""):
    """What an object of a cut volume says otherwise than the whole one."""
    if isinstance(there, dict) and isinstance(whole, dict):
        for key, value in there.items():
            if key not in MARKS:
                yield from wrong_parts(value, whole.get(key), f"{path}/{key}")
    elif isinstance(there, list) and isinstance(whole, list) and len(there) <= len(whole):
        for number, value in enumerate(there):
            yield from wrong_parts(value, whole[number], f"{path}/{number}")
    elif there is not None and there != whole:
        yield f"{path}: {there} is not {whole}"


def main():
    quarl_json, cuts = sys.argv[1], int((sys.argv[2:] or ["200"])[0])
    sample = (SOURCE / "examples" / "sample.seed").read_bytes()

    def items(volume):
        lines, _, status = run(quarl_json, "--samples", volume)
        assert status == 0, status
        return [json.loads(line) for line in lines.splitlines()]

    whole = {item.get("offset"): item for item in items(SOURCE / "examples" / "sample.seed")}
    marked = 0
    with tempfile.TemporaryDirectory(suffix=".quarl-json") as directory:
        path = pathlib.Path(directory) / "cut.seed"
        for number in range(1, cuts + 1):
            size = len(sample) * number // (cuts + 1) + number % 7
            path.write_bytes(sample[:size])
            *there, end = items(path)
            for item in there:
                if item == whole[item["offset"]]:
                    continue
                assert item.get("cut") and item.get("bad") and end["cut"], (size, item)
                wrong = list(wrong_parts(item, whole[item["offset"]]))
                assert not wrong, (size, wrong)
                marked += 1
    assert marked > cuts / 4, marked
    print(f"{marked} items of {cuts} cut volumes are cut, and say nothing wrong")


main()
