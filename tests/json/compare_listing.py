#!/usr/bin/python3
"""Lists volumes as text and as JSON and compares every value that both show.

Usage: compare_listing.py QUARL QUARL_JSON COMPOSE_VOLUME. The formats of the listing are written
down here once more; each line of JSON has to give the piece of the listing that is its own. Then
one value after the other is changed, and the comparison has to notice.
"""
import copy
import fractions
import json
import math
import os
import re
import socket
import subprocess
import sys
import datetime

from volumes import SOURCE, run, volumes

CONVERSION = re.compile(r"%[-+0]*\d*(?:\.\d+)?l?[a-zA-Z%]")

# Formats and keys: "@" marks times, "#" stands for the number of the entry, "^" asks the object
# around it, "KEY#" counts the entries of a list.
HEADS = {
    10: ("B%03i %3i Version %.1f  LogRecLen %2i  Start:%20s End:%20s <%s>\n"
         "File #%d: SEED Volume Version %.1f  Start:%20s End:%20s Written: %s by '%s': '%s'\n",
         "type length version_of_format logical_record_length beginning_time@ end_time@ name "
         "file version_of_format beginning_time@ end_time@ volume_time@ "
         "originating_organization label"),
    11: ("B%03i %3i %i Stations  <%s>\n", "type length number_of_stations name"),
    12: ("B%03i %3i #spans %4i <%s>\n", "type length spans# name"),
    30: ("B%03i %3i %-50s id#%4i type#%3i %5i keys <%s>\n",
         "type length short_descriptive_name data_format_identifier_code data_family_type "
         "number_of_decoder_keys name"),
    31: ("B%03i %3i Id#%4i Class:%c units:%3i '%s' <%s>\n",
         "type length comment_code_key comment_class_code units_of_comment_level_code "
         "description_of_comment name"),
    32: ("B%03i %3i Id#%2i Author:%s Catalog/Date:%s Publisher:%s <%s>\n",
         "type length source_lookup_code name_of_publication_or_author date_published_or_catalog "
         "publisher_name name"),
    33: ("B%03i %3i Id#%3i '%s' <%s>\n",
         "type length abbreviation_lookup_code abbreviation_description name"),
    34: ("B%03i %3i Id#%3i Unit:'%s' Desc:'%s' <%s>\n",
         "type length unit_lookup_code unit_name unit_description name"),
    50: ("B%03i %3i %4s %2s (%10.6f,%10.6f) %6.1fm @ '%s' NetId#%5i Long:%04i Word:%02i Order  "
         "Start:%20s End:%20s Update:%c <%s>\n",
         "type length station network latitude longitude elevation site_name "
         "network_identifier_code word_order_32_bit word_order_16_bit start_effective_date@ "
         "end_effective_date@ update_flag name"),
    51: ("B%03i %3i Start:%20s End:%20s Id#%4i Level#%6i <%s>\n",
         "type length beginning_effective_time@ end_effective_time@ comment_code comment_level "
         "name"),
    52: ("B%03i %3i Loc:%2s Chan:%3s Sub#%4i Instr#%3i SigUnits#%3i CalUnits#%3i (%6.2f,%6.2f) "
         "%6.2fm  Depth:%6.2fm  Az:%6.2f Dip:%6.2f DataFmt#%4i RecLen:%2i Samprate:%6.2fhz  "
         "ClkDrift:%6.2fs Flags:'%s' Start:%20s End:%20s Update:%c '%s' <%s>\n",
         "type length location channel subchannel instrument_code signal_units_code "
         "calibration_units_code latitude longitude elevation local_depth azimuth dip "
         "data_format_code data_record_length sample_rate max_clock_drift channel_flags "
         "start_date@ end_date@ update_flag optional_comment name"),
    53: ("B%03i %d Type:%c Stage#%2i Input Units:%3i Output Units:%3i Norm:%6.4e @%6.2fHz  "
         "%3i Poles %3i Zeros  <%s>\n",
         "type length transfer_function_type stage_sequence_number input_units_code "
         "output_units_code a0_normalization_factor normalization_frequency "
         "number_of_complex_poles number_of_complex_zeros name"),
    54: ("B%03i %d Type:%c stage#%2i Input:%3i Output:%3i  %4i Numerators, %4i Denominators  "
         "<%s>\n",
         "type length response_type stage_sequence_number input_units_code output_units_code "
         "number_of_numerators number_of_denominators name"),
    55: ("B%03i %d stage#%2i Input:%3i Output:%3i  %4i frequencies <%s>\n",
         "type length stage_sequence_number input_units_code output_units_code "
         "number_of_responses_listed name"),
    57: ("B%03i %d Stage#%2i SampRateIn:%6.2fHz Decimation:%5i Offset:%5i Delay:%6.3fs "
         "Correction:%6.3fs <%s>\n",
         "type length stage_sequence_number input_sample_rate decimation_factor "
         "decimation_offset estimated_delay correction_applied name"),
    59: ("B%03i %d Start:%20s End:%20s Comment#%4i Level#%6i <%s>\n",
         "type length beginning_effective_time@ end_effective_time@ comment_code comment_level "
         "name"),
    61: ("B%03i %d stage#%2i '%s' Symmetry: %c Input:%3i Output:%3i  %4d Coefficients: <%s>\n",
         "type length stage_sequence_number response_name symmetry_code input_units_code "
         "output_units_code number_of_coefficients name"),
    62: ("B%03i %d stage#%d Input:%d Output:%d  (%.4f-%.4f %s) approx-range=(%.1f-%.1f) "
         "max_err=%.1f order=%d  <%s>\n",
         "type length stage_sequence_number input_units_code output_units_code "
         "lower_valid_frequency_bound upper_valid_frequency_bound valid_frequency_units! "
         "lower_bound_of_approximation upper_bound_of_approximation maximum_absolute_error "
         "number_of_coefficients name"),
    70: ("B%03i %3i Type:%c Start:%20s End:%20s <%s>\n",
         "type length time_span_flag beginning_time@ end_time@ name"),
    71: ("B%03i %d Time:%20s Id#%5i (%6.2f,%6.2f) Depth:%6.2fkm #:%i grn=%d srn=%d gregion='%s' "
         "<%s>\n",
         "type length origin_time@ hypocenter_source_code latitude longitude depth magnitudes# "
         "seismic_region seismic_location region_name name"),
    72: ("B%03i %3i %5s Loc:%2s Chan:%3s Time:%20s Amp:%6.2f Period:%6.2f S/N:%6.2f Phase:'%s' "
         "source=%d net=%s <%s>\n",
         "type length station location channel arrival_time@ amplitude period "
         "signal_to_noise_ratio name_of_phase source_code network name"),
    73: ("", ""),
    74: ("B%03i %3i Net: %2s Sta: %5s Loc: %2s Chan: %3s Start:%20s seq# %5i subseq# %5i "
         "End:%20s seq# %5i subseq# %5i #repeats %5i <%s>\n",
         "type length network station location channel series_start_time@ first_sequence_number "
         "first_subsequence_number series_end_time@ last_sequence_number "
         "last_subsequence_number accelerator_repeats# name"),
    "data": ("DATA Net: %2s Sta: %5s Loc: %2s Chan: %4s Start:%20s #samples: %5i sample rate "
             "factor: %5i multiplier: %5i Sample_rate: %10.5g Activity: %0x I/O: %0x Quality: "
             "%0x #blks after: %5i time correction: %5i first data byte: %5i first blockette: "
             "%5i <data blockette>\n",
             "network station location channel record_start_time@ samples sample_rate_factor "
             "sample_rate_multiplier sample_rate activity_flags io_and_clock_flags "
             "data_quality_flags number_of_blockettes_that_follow time_correction "
             "beginning_of_data first_blockette"),
}

ROOT = ("\t%3d (%+12.5E %+12.5e)\n", "# real imaginary")
LISTS = {
    11: [("stations", "\t%3i %5s %6d\n", "# station sequence_number")],
    12: [("spans", "\t%5i Start:%20s End:%20s seq#%6i\n",
          "# beginning_of_span@ end_of_span@ sequence_number")],
    30: [("decoder_keys", "\t%2i %20s \n", "# decoder_key")],
    53: [("poles", "\t%3d (%+12.5E %+12.5e)   (%12.5e %12.5e) \n",
          "# real imaginary real_error imaginary_error"),
         ("zeros", "\t%3d (%+12.5E %+12.5e)   (%12.5e %12.5e)\n",
          "# real imaginary real_error imaginary_error")],
    54: [("numerators", "\t%5i %+12.5E  %+12.5e\n", "# coefficient error"),
         ("denominators", "\t%5i %+12.5E %+12.5e\n", "# coefficient error")],
    55: [("responses", "\t%5i %+12.5e  %12.5e %12.5e   %12.5e %12.5e\n",
          "# frequency amplitude amplitude_error phase_angle phase_error")],
    61: [("coefficients", "\t%5i %+12.5E\n", "# coefficient")],
    62: [("coefficients", "\t%5i %+12.5e  %12.5e\n", "# coefficient error")],
    71: [("magnitudes", "\t%2d Magnitude:%6.2f Source:%2i '%s'\n",
          "# magnitude magnitude_source_code magnitude_type")],
    73: [("data_pieces", "B%03i %3i Segment #%5i of %5i Sta: %5s Loc: %2s Chan: %3s Start:%20s "
          "seq# %5i subseq# %5i <%s>\n",
          "^type ^length # ^number_of_data_pieces station location channel time_of_record@ "
          "sequence_number subsequence_number ^name")],
    74: [("accelerator_repeats", "\t%3i Start:%20s seq# %5i subseq# %5i\n",
          "# record_start_time@ sequence_number subsequence_number")],
}

# What the listing does not show: what only the records hold, where an item stands, and what codes
# stand for. By type; under "all" of every type, and under "lists" in the entries of its lists.
HIDDEN = {
    "all": {"item", "offset", "record", "file", "bad", "network_identifier", "comment",
            "instrument", "signal_units", "calibration_units", "input_units", "output_units",
            "units_of_comment_level", "hypocenter_source", "source", "epoch_start", "epoch_end",
            "leap_second", "cut"},
    "lists": {"item", "magnitude_source"},
    12: {"number_of_spans"},
    52: {"network", "station", "data_format", "data_record_length_as_read", "number_of_comments"},
    62: {"transfer_function_type", "polynomial_approximation_type"},
    58: {"number_of_history_values"},
    71: {"number_of_magnitudes"},
    74: {"number_of_accelerator_repeats"},
    "data": {"name", "length", "start", "end", "data_format", "encoding_code", "encoding",
             "word_order", "quality_indicator", "subsequence_number", "actual_sample_rate",
             "microseconds", "timing_quality", "frame_count", "blockettes", "remark"},
    "file": {"complete", "cut", "failed", "stopped", "records", "logical_records", "bytes",
             "volume"}}
for number in (53, 54, 55, 57, 58, 59, 61, 62):
    HIDDEN.setdefault(number, set()).update({"network", "station", "location", "channel"})
HIDDEN[51] = {"network", "station"}


def iso(text):
    """A SEED time as ISO 8601; None when it is empty or no time."""
    if not text:
        return None
    found = re.fullmatch(r"(\d{4})(?:,(\d{1,3})(?:,(\d{1,2})(?::(\d{1,2})(?::(\d{1,2})"
                         r"(?:\.(\d*))?)?)?)?)?", text)
    if not found:
        return None
    year, day, hour, minute, second = (int(part or default) for part, default in
                                       zip(found.groups()[:5], (0, 1, 0, 0, 0)))
    leap = year % 4 == 0 and year % 100 != 0 or year % 400 == 0
    if not 1 <= day <= 365 + leap or hour > 23 or minute > 59 or second > 60 or year == 0:
        return None
    decimals = int(((found[6] or "") + "000000")[:6])
    moment = datetime.datetime(year, 1, 1) + datetime.timedelta(
        days=day - 1, hours=hour, minutes=minute, seconds=second, microseconds=decimals)
    return moment.isoformat(timespec="microseconds") + "Z"


def is_told(text, time, raw):
    """Whether a listed time is what an object has for it."""
    return raw == text if raw is not None else iso(text) == time


def pattern_of(conversion, value):
    """What printf writes for a value, as a regular expression."""
    kind = conversion[-1]
    if value is None:  # not in the volume: the listing has 0, or what a part of the field says
        return r".*?"
    if kind == "c":
        return re.escape(value) if value else "[ \0]"
    if kind == "x":
        return f"{value if value < 128 else value + 0xFFFFFF00:x}"
    if kind == "s":
        width = conversion[1:-1]
        padded = re.escape(conversion % value)
        return padded if width else padded + r"[ \t]*"
    return re.escape(conversion % value)


def text_pattern(conversion, value):
    """Texts are trimmed in JSON, and not everywhere in the listing."""
    if value is None:
        return r".*?"
    left = conversion.startswith("%-")
    return re.escape(value) + " *" if left else r"\s*" + re.escape(value) + " *"


def expand(form, keys, entry, around, number):
    """Regular expression for one format, and the times that are in its groups."""
    pieces, times, at = [], [], 0
    keys = iter(keys.split())
    for found in CONVERSION.finditer(form):
        pieces.append(re.escape(form[at:found.start()]))
        at = found.end()
        if found[0] == "%%":
            pieces.append("%")
            continue
        key = next(keys)
        place = around if key[0] == "^" else entry
        key = key.lstrip("^")
        if key == "#":
            pieces.append(pattern_of(found[0], number))
        elif key.endswith("@"):
            times.append((place[key[:-1]], place.get(key[:-1] + "_raw")))
            pieces.append("(.*?)")
        elif key.endswith("#"):
            pieces.append(pattern_of(found[0], len(place[key[:-1]])))
        elif key.endswith("!"):
            unit = {"A": "radians/s", "B": "hz"}.get(place[key[:-1]], "*invalid_units*")
            pieces.append(re.escape(unit))
        elif found[0].endswith("s"):
            pieces.append(text_pattern(found[0], place[key]))
        else:
            pieces.append(pattern_of(found[0], place[key]))
    pieces.append(re.escape(form[at:]))
    return "".join(pieces), times


def as_listed(polynomial):
    """A polynomial whose count has three characters, as the listing reads it: four, and each number
    one character late, which leaves out its sign."""
    return dict(polynomial, coefficients=[{key: abs(value) for key, value in entry.items()}
                                          for entry in polynomial["coefficients"]])


def formats(item):
    """The formats of an item with keys, entry and number of the entry."""
    kind = item.get("type", "data")
    if kind == 58:
        label = "Sensitivity:" if item["stage_sequence_number"] == 0 else "Gain"
        yield (f"B%03i %3i Stage#%5i {label}:%10.6e Freq:%8.4fHz <%s>\n",
               "type length stage_sequence_number sensitivity_or_gain frequency name", item, 0)
        return
    if kind == 62 and (item["length"] - 81) % 24 == 0:
        item = as_listed(item)
    yield (*HEADS[kind], item, 0)
    for name, form, keys in LISTS.get(kind, []):
        if kind == 53:
            yield f"\t  n     {name.capitalize()} (r, i)                   Errors(r, i) \n", "", {}, 0
        for number, entry in enumerate(item[name]):
            if kind == 53 and not entry["real_error"] and not entry["imaginary_error"]:
                yield (*ROOT, entry, number)
            elif kind == 54 and entry["error"] == 0:
                yield "\t%5i %+12.5E\n", "# coefficient", entry, number
            else:
                yield form, keys, entry, number
    if kind == 11:
        yield from stations_block(item)


def stations_block(item):
    """The station codes again, twelve in a line."""
    entry = {str(i): one["station"] for i, one in enumerate(item["stations"])}
    form = "Stations:" + "".join(("" if i % 12 else "\n\t") + "%5s " for i in range(len(entry)))
    yield form + "\n", " ".join(entry), entry, 0


def statistics(item):
    """The table at the end of a file."""
    control = [one for one in item["types"] if one["item"] == "blockette"]
    data = [one for one in item["types"] if one["item"] == "data"]
    yield "\nBlockette Summary -- file #%d\n", "file", item, 0
    for one in control:
        one = dict(one, name=one["name"] or "Unknown Type")
        yield "%5d (%03d) %10d %s blockettes\n", "count type bytes name", one, 0
    yield ("%5d       %10d Data blockettes\n\n", "count bytes",
           data[0] if data else {"count": 0, "bytes": 0}, 0)
    for title, key in (("Parameter Info  ", "parameter_bytes"), ("Data            ", "data_bytes"),
                       ("Wasted          ", "waste_bytes")):
        share = item[key] * 100 / item["bytes"]
        yield (f"Total {title}: %10d = %6.1f%%\n", "total share",
               {"total": item[key], "share": share}, 0)


def is_listed(item):
    """Whether the listing knows the item."""
    return item["item"] != "blockette" or item["type"] in HEADS or item["type"] == 58


def with_signs(item):
    """A data record whose counts have a sign, and no rate without a multiplier, as in the listing."""
    signed = {key: (item[key] + half) % (2 * half) - half if item[key] is not None else None
              for key, half in (("samples", 1 << 15), ("beginning_of_data", 1 << 15),
                                ("first_blockette", 1 << 15),
                                ("number_of_blockettes_that_follow", 1 << 7))}
    if not item["sample_rate_factor"] or not item["sample_rate_multiplier"]:
        signed.update(sample_rate_factor=0, sample_rate_multiplier=0)
    return dict(item, **signed)


def is_comparable(item):
    """Not when the listing gives up a list, or promises more of one than the volume has."""
    for key, entries in lists_of(item):
        keys = list(item)
        promised = item[keys[keys.index(key) - 1]]
        if item.get("bad") and (promised != len(entries) or
                                any(None in entry.values() for entry in entries)):
            return False
    return True


def lists_of(item):
    """The lists of a blockette by their keys."""
    return [(key, value) for key, value in item.items()
            if isinstance(value, list) and key not in ("blockettes", "types", "values")]


def fault(item, listing, at):
    """Where the item's piece of the listing ends, or what is wrong with it."""
    actual = item.get("actual_sample_rate")
    if isinstance(actual, (int, float)) and actual > 0:  # the listing has the other
        item = dict(item, sample_rate=float(stored_rate(item)))
    if item["item"] == "data":
        item = with_signs(item)
    rows = statistics(item) if item["item"] == "file" else formats(item)
    if item["item"] == "file" and not item["types"]:
        return at, None
    if not is_comparable(item):
        behind = re.compile(r"\n(?=B\d{3} |\nBlockette Summary)").search(listing, at)
        return behind.end() if behind else len(listing), None
    for form, keys, entry, number in rows:
        pattern, times = expand(form, keys, entry, item, number)
        found = re.compile(pattern, re.DOTALL).match(listing, at)
        if not found:
            return at, f"{pattern!r} is not {listing[at:at + 300]!r}"
        for text, (time, raw) in zip(found.groups(), times):
            if not is_told(text.strip(), time, raw):
                return at, f"{text!r} is not {time!r}"
        at = found.end()
    return at, None


def microseconds(text):
    """Since year 1."""
    date, time = text.rstrip("Z").split("T")
    hour, minute, second = time.split(":")
    days = datetime.date.fromisoformat(date).toordinal()
    return (days * 86400 + int(hour) * 3600 + int(minute) * 60) * 1000000 + fractions.Fraction(
        second) * 1000000


def stored_rate(item):
    """Samples per second of factor and multiplier."""
    rate = fractions.Fraction(1)
    for part in (item["sample_rate_factor"], item["sample_rate_multiplier"]):
        rate *= abs(part) if part > 0 else fractions.Fraction(1, abs(part)) if part else 0
    return rate


def check_data(item):
    """First and last sample, and named flags, against the fields that the record holds."""
    if item.get("bad") or not item["record_start_time"]:  # or of what declares to be data
        return
    start = microseconds(item["record_start_time"])
    if not item["time_correction_applied"]:
        start += item["time_correction"] * 100
    start += item["microseconds"] or 0
    assert start == microseconds(item["start"]), item
    rate = stored_rate(item)
    if (item["actual_sample_rate"] or 0) > 0:
        rate = fractions.Fraction(item["actual_sample_rate"])
    length = (item["samples"] - 1) * 1000000 / rate if rate and item["samples"] > 0 else 0
    end = start + math.floor(length + fractions.Fraction(1, 2))
    if not item["positive_leap_second"] and not item["negative_leap_second"]:
        assert microseconds(item["end"]) == end, item
    assert not rate or math.isclose(item["sample_rate"], rate), item
    keys = list(item)
    for byte, count in (("activity_flags", 7), ("io_and_clock_flags", 6),
                        ("data_quality_flags", 8)):
        for bit, key in enumerate(keys[keys.index(byte) + 1:][:count]):
            assert item[key] == bool(item[byte] >> bit & 1), (key, item)


def changed(value):
    """Another value of the same kind."""
    if isinstance(value, bool):
        return not value
    if isinstance(value, str):
        return "2001-02-03T04:05:06Z" if re.match(r"\d{4}-\d\d-\d\dT", value) else value + "x"
    if value is None:
        return "2001-02-03T04:05:06Z"
    return value + 1 if isinstance(value, int) else value * 1.5 + 1


def leaves(item, path=()):
    """The paths of all plain values."""
    pairs = item.items() if isinstance(item, dict) else enumerate(item)
    for key, value in pairs:
        if isinstance(value, (dict, list)):
            yield from leaves(value, (*path, key))
        else:
            yield (*path, key)


def is_shown(item, path):
    """Whether the listing shows the value at this path."""
    kind, key = item.get("type", item["item"]), path[-1]
    if path[0] == "blockettes" or (key == "sample_rate" and kind == "data" and
                                   (item["actual_sample_rate"] or 0) > 0):
        return False
    if kind == "data" and isinstance(item[key], bool):
        return False  # but the byte with the flag is, and check_data knows the bit
    if kind == 58 and len(path) > 1:
        return False  # the history of calibrations
    if len(path) > 1:
        of_data = kind == "file" and item["types"][path[1]]["item"] == "data"
        return key not in HIDDEN["lists"] and not (of_data and key == "name")
    if kind == 62 and key == "valid_frequency_units":
        return item[key] in ("A", "B")
    if kind == 73 and not item["data_pieces"]:
        return False
    if kind in (10, "file") and key == "file":
        return True
    return key not in HIDDEN["all"] | HIDDEN.get(kind, set())


def check_that_changes_show(item, listing, begin, end):
    """Every value that is shown is compared."""
    piece = listing[begin:end]
    for path in leaves(item):
        other = copy.deepcopy(item)
        place = other
        for part in path[:-1]:
            place = place[part]
        place[path[-1]] = changed(place[path[-1]])
        try:
            at, wrong = fault(other, piece, 0)
        except KeyError:
            wrong = "another type"
        noticed = wrong or at != len(piece)
        assert noticed or not is_shown(item, path), f"a change of {path} goes unseen: {item}"


def compare(quarl, quarl_json, arguments, name, seen):
    """One volume both ways."""
    text, messages, status = run(quarl, *arguments)
    lines, json_messages, json_status = run(quarl_json, *arguments)
    if b"Data blockette size" in messages:  # the listing ends, the lines go on
        assert status == 1 and b"Data blockette size" not in json_messages, name
        return
    assert messages == json_messages.replace(b"quarl-json: ", b"quarl: "), name
    assert status == json_status, name
    if status:  # the listing has no statistics of a file in which the run ended
        lines, _, last = lines[:-1].rpartition(b"\n")
        assert json.loads(last)["failed"], name
    compare_text(text.decode("latin-1"), lines, name, seen)


def compare_text(listing, lines, name, seen):
    """Every object against its piece."""
    at = 0
    for line in lines.decode("utf-8").splitlines():
        item = json.loads(line, parse_constant=lambda text: sys.exit(f"{name}: {text}"),
                          parse_int=lambda text: -0.0 if text == "-0" else int(text))
        if item["item"] == "data":
            check_data(item)
        if not is_listed(item):
            continue
        end, wrong = fault(item, listing, at)
        assert not wrong, f"{name}: {wrong}\n{line}"
        kind = item.get("type", item["item"])
        told_apart = not (item.get("bad") and lists_of(item))
        if seen.setdefault(kind, 0) < 3 and end - at < 5000 and told_apart:
            check_that_changes_show(item, listing, at, end)
        seen[kind] += 1
        at = end
    assert listing[at:] == "", f"{name}: the listing goes on: {listing[at:at + 300]!r}"


def from_tape(program, files):
    """What a program writes of input files that come one after the other from one descriptor."""
    ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
    with subprocess.Popen([program], stdin=theirs, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL) as process:
        theirs.close()
        for data in files:
            for at in range(0, len(data), 4096):
                ours.send(data[at:at + 4096])
            ours.send(b"")
        ours.close()
        return process.stdout.read()


def check_volumes(quarl_json, sample):
    """Several volumes, one of which is not there and one empty, each with its object."""
    lines, messages, status = run(quarl_json, "-n", "-t", "010", sample, "/nowhere", "/dev/null")
    items = [json.loads(line) for line in lines.splitlines()]
    assert [(list(item)[0], item["volume"], item["item"]) for item in items] == [
        ("volume", str(sample), "blockette"), ("volume", str(sample), "file"),
        ("volume", "/nowhere", "file"), ("volume", "/dev/null", "file")]
    assert [item["complete"] for item in items[1:]] == [True, False, True], items
    assert items[2]["failed"] and items[3]["records"] == 0 and status == 1
    assert messages.count(b"quarl-json: Can't open input file /nowhere: ") == 1, messages


def check_samples(quarl_json, sample):
    """Samples are those of the record, and are narrowed."""
    def data(*arguments):
        lines = run(quarl_json, "-t", "data", "--samples", "--epoch", sample, *arguments)[0]
        return [json.loads(line) for line in lines.splitlines()][:-1]

    every = data()
    for item in every:
        values = item["text"] if "text" in item else item["values"]
        assert len(values) == item["samples"] and "values_error" not in item, item
        assert abs(item["end_seconds"] - item["start_seconds"] -
                   (item["samples"] - 1) / item["sample_rate"]) < 1e-5, item
    some = data("--select", "*.QRL2.*.BH?", "--start", "2024-03-01T00:00:30", "--end",
                "2024,061,00:01:00")
    assert some == [item for item in every if item["station"] == "QRL2" and
                    item["channel"].startswith("BH") and item["end"] >= "2024-03-01T00:00:30" and
                    item["start"] < "2024-03-01T00:01"]
    assert 0 < len(some) < 9, len(some)


def check_promptness(quarl_json, sample):
    """What a pipe that waits has brought is printed."""
    environment = dict(os.environ, QUARL_PFPATH=str(SOURCE / "etc"))
    data = sample.read_bytes()
    with subprocess.Popen([quarl_json, "-t", "050"], stdin=subprocess.PIPE, env=environment,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
        process.stdin.write(data[:12288])  # the station stands in the third record
        process.stdin.flush()
        assert json.loads(process.stdout.readline())["station"] == "QRL1"
        process.stdin.write(data[12288:])
        process.stdin.close()
        stations = [json.loads(line) for line in process.stdout]
        assert [item.get("station") for item in stations] == ["QRL2", None], stations


def check_calls(quarl_json):
    """What the command line gives."""
    for wrong in (["-x"], ["--no"], ["-t"], ["-t", "05x"], ["-t", ""], ["--select", "a.b"], ["--start", "x"]):
        lines, messages, status = run(quarl_json, *wrong)
        assert (lines, messages.count(b"\n"), status) == (b"", 1, 2), wrong
    for right in ("--help", "--version"):
        lines, messages, status = run(quarl_json, right)
        assert lines.endswith(b"\n") and (messages, status) == (b"", 0), right
    sample = SOURCE / "examples" / "sample.seed"
    every = run(quarl_json, sample)[0].splitlines()
    some = run(quarl_json, sample, "-t", "050,52,data")[0].splitlines()
    assert some == [line for line in every if b'"type":50,"name"' in line[:40] or
                    b'"type":52,"name"' in line[:40] or line[:15] in
                    (b'{"item":"data",', b'{"item":"file",')]
    check_volumes(quarl_json, sample)
    check_samples(quarl_json, sample)
    check_promptness(quarl_json, sample)


def main():
    quarl, quarl_json, compose = sys.argv[1:]
    check_calls(quarl_json)
    seen = {}
    for name, path in volumes(compose):
        compare(quarl, quarl_json, [path], name, seen)
    sample = (SOURCE / "examples" / "sample.seed").read_bytes()[:24 * 1024]
    listing, lines = (from_tape(program, [sample, sample]) for program in (quarl, quarl_json))
    assert lines.count(b'{"item":"file","volume":"-","file":1,') == 1
    compare_text(listing.decode("latin-1"), lines, "tape", seen)
    missing = (HEADS.keys() | {58, "file"}) - seen.keys()
    assert not missing, f"no volume has {missing}"
    print(f"{sum(seen.values())} objects of {len(seen)} kinds are as the listing shows them")


main()
