#!/usr/bin/python3
"""Looks at the pages that quarl-html makes of the sample, of recipes, of real volumes and of one with
hostile texts: what browsers may run, links, rows, the JSON and its keys, curves of stages.

usage: check_pages.py quarl-html compose_volume man-page
"""
import base64
import bisect
import hashlib
import html.parser
import itertools
import json
import math
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "json"))
from volumes import REAL, run, volumes  # noqa: E402

TAGS = set("html head meta title style body header h1 h2 dl div dt dd svg rect ul li table caption span thead "
           "tbody tr th td nav a main section p details summary b noscript script".split())


class Page(html.parser.HTMLParser):
    """A page taken apart as a browser does."""

    def __init__(self, bytes_):
        super().__init__()
        self.scripts, self.styles, self.texts, self.ids, self.links = [], [], [], [], []
        self.rows, self.findings, self.policy, self.data = {}, 0, None, None
        self.inside, self.table, self.section = "", None, None
        self.text = bytes_.decode("utf-8")
        self.feed(self.text)
        self.visible = "\n".join(self.texts)

    def handle_starttag(self, tag, attrs):
        assert tag in TAGS, f"<{tag}>"
        attrs = dict(attrs)
        for name, value in attrs.items():
            assert name not in ("src", "style", "action") and not name.startswith("on"), f"{name}={value}"
        self.inside = tag if tag in ("script", "style") else ""
        self.json = attrs.get("type") == "application/json"
        self.ids += [attrs["id"]] if "id" in attrs else []
        self.links += [attrs["href"]] if "href" in attrs else []
        if "http-equiv" in attrs:
            self.policy = attrs["content"]
        if tag == "table":
            self.table = attrs.get("id")
        if tag == "tr":
            self.rows[self.table] = self.rows.get(self.table, -1) + 1  # without the head
        self.section = attrs.get("id") if tag == "section" else self.section
        self.findings += tag == "li" and self.section == "findings"

    def handle_endtag(self, tag):
        self.inside = ""

    def handle_data(self, data):
        if not self.inside:
            self.texts.append(data)
        elif self.inside == "style":
            self.styles.append(data)
        elif self.json:
            self.data = json.loads(data)
        else:
            self.scripts.append(data)


def check_policy(page):
    """The policy allows what stands in the page, and nothing else."""
    parts = dict(part.strip().split(" ", 1) for part in page.policy.split(";"))
    hashes = lambda texts: " ".join(
        f"'sha256-{base64.b64encode(hashlib.sha256(t.encode()).digest()).decode()}'" for t in texts)
    assert parts == {"default-src": "'none'", "script-src": hashes(page.scripts),
                     "style-src": hashes(page.styles), "base-uri": "'none'", "form-action": "'none'"}, parts
    assert len(page.scripts) == 2 and len(page.styles) == 1


def check_structure(page):
    """Links lead somewhere, and the tables have a row for each of what they show."""
    data = page.data
    assert len(page.ids) == len(set(page.ids)), "an id twice"
    drawn = {f"timeline-{i}" for i in range(len(data["channels"]))}
    drawn |= {f"response-{i}" for i in range(len(data["epochs"]))}
    drawn |= {f"site-{i}" for i in range(len(data["stations"]))}
    drawn |= {link[1:] for link in page.links if re.fullmatch(r"#stage-\d+-\d+", link)
              and int(link.split("-")[1]) < len(data["epochs"])}
    for link in page.links:
        assert link[0] == "#" and (link[1:] in page.ids or link[1:] in drawn), link
    alone = sum(1 for c in data["channels"] if not c["epochs"])
    rows = {"channels-table": len(data["epochs"]) + alone,
            "stations-table": sum(len(s["epochs"]) for s in data["stations"]), "types-table": len(data["types"])}
    for table, count in rows.items():
        assert page.rows.get(table, 0) == count, table
    assert all(rows for table, rows in page.rows.items() if table != "types-table"), "an empty table"
    assert page.findings == len(data["findings"])
    check_shares(data, page)
    assert len(data["responses"]) == len(data["epochs"])
    for channel in data["channels"]:
        for times in (channel["spans"], channel["overlaps"]):
            assert times == sorted(times), times


def check_shares(data, page):
    """Shares are of the bytes that were read; what a listing counts beyond them is told."""
    assert sum(data["shares"].values()) == data["bytes"] and min(data["shares"].values()) >= 0, data["shares"]
    is_told = "statistics of a listing" in page.visible
    assert is_told == (any(data["shares"][kind] != data["counted"][kind] for kind in ("parameters", "data"))
                       and bool(page.rows.get("types-table"))), data["counted"]
    nothing = not data["stations"] and not data["channels"] and data["version"] is None
    assert ("all rules hold" in page.visible) <= (not data["findings"] and not nothing), "nothing is no sound volume"


def interpolated(curve, frequency):
    """Amplitude of a filter at a frequency."""
    at = 20 * math.log10(frequency) + 60
    i = bisect.bisect_left(curve["at"], at - 1e-3)
    if i < len(curve["at"]) and curve["at"][i] < at + 1e-3:  # a point of the curve
        return curve["amplitude"][i] or 0
    i = min(max(1, i), len(curve["at"]) - 1)
    a, b = curve["at"][i - 1:i + 1]
    low, high = curve["amplitude"][i - 1:i + 1]
    share = min(max((at - a) / (b - a), 0), 1)
    return low * (high / low) ** share if low and high else 0


def check_curves(page):
    """The stages' filters, times their gains, make the response."""
    data, checked = page.data, 0
    for i, (response, epoch) in enumerate(zip(data["responses"], data["epochs"])):
        if "same" in response:
            earlier = data["responses"][response["same"]]
            assert response["same"] < i and "same" not in earlier and "frequency" not in response
            assert response.get("error") == earlier.get("error")
            assert epoch["stages"] == data["epochs"][response["same"]]["stages"]
            continue
        if "error" in response or not epoch["stages"]:
            continue
        assert len(response["frequency"]) == len(response["amplitude"]) == len(response["phase"])
        top = max(filter(None, response["amplitude"]), default=0)
        for frequency, amplitude in zip(response["frequency"], response["amplitude"]):
            if not amplitude or amplitude < 1e-4 * top:
                continue
            whole = 1
            for stage in (data["stages"][i] for i in epoch["stages"]):
                curve = data["filters"][stage["filter"]] if stage["filter"] is not None else {}
                whole *= stage.get("gain", 1) * (interpolated(curve, frequency) if "at" in curve else 1)
            assert abs(math.log(whole / amplitude)) < 0.01 * len(epoch["stages"]), (i, frequency, whole, amplitude)
        checked += 1
    return checked


def keys_of(value, name, found):
    """Adds the keys of all objects, by the key that they stand under."""
    for each in value if isinstance(value, list) else [value]:
        if isinstance(each, dict):
            found.setdefault(name, set()).update(each)
            for key, below in each.items():
                keys_of(below, "epochs of stations" if name == "stations" and key == "epochs" else key, found)


def documented_keys(man_page):
    """Those of the man page, likewise."""
    found = {}
    text = man_page.read_text().split(".Sh DATA")[1].split(".Sh EXIT")[0]
    for section in text.split(".Ss ")[1:]:
        name, *lines = section.splitlines()
        found[name] = {line[4:] for line in lines if line.startswith(".It ")}
    # "start, end, latitude ... name" stand in a sentence.
    sentence = re.search(r"\.It epochs\nwhat is true of it, and when: (.*)", text).group(1)
    found["epochs of stations"] = set(re.sub(r"\([^)]*\)", "", sentence).replace(" ", "").split(","))
    return found


def shown(text):
    """How a page shows a text of a volume."""
    return "".join(c if " " <= c <= "~" or (c > "\xa0" and c != "\xad") else f"\\x{ord(c):02x}" for c in text)


def check_hostile(page, recipe):
    """Every text of the recipe stands in the page as a text, and in the JSON as it is."""
    assert not re.search(r"[\0-\x09\x0b-\x1f\x7f-\x9f]", page.text), "a control character"
    number = 0
    for line in recipe.read_text().splitlines():
        if not re.match(r"0(10|3\d|4\d|50|52) ", line):  # those that tables show
            continue
        for field in re.split(r"[|~]", line[4:]):
            text = re.sub(r"\\x(..)", lambda m: chr(int(m[1], 16)), field).replace("\\\\", "\\").strip(" ")
            if re.search("[^-+. 0-9A-Za-z,]", text):
                assert shown(text) in page.visible, text
                number += 1
    assert number > 25, number
    data = page.data
    assert data["label"] == "\"'&]]></script><!-- \x1b[31m\x85\xe9\xad\x7f"
    assert data["stations"][0]["epochs"][0]["name"] == "<style>*{display:none}</style>\xdc"
    assert [c["channel"] for c in data["channels"]] == ["'\">", "<b>"]
    assert data["stages"][1]["name"] == "</script><b>"


BLANKS = """records 512
header V
010  2.4|09|2024,001~2024,002~2024,003~Org~Label~
header A
033 001|Net~
034 001|M/S~Velocity~
header S
050 AAA  |          |           |       |0001|001|Nowhere~001|3210|10|2020,001~~N|XX
052   |BHZ|0000|001|~001|001|          |           |       |000.0|000.0|-90.0|0001|09|2.0000E+01|1.0000E-04|0000|~2020,001~~N
050 BBB  | +0.000000|  +0.000000|    0.0|0001|001|Null Island~001|3210|10|2020,001~~N|XX
"""


def check_special(program, compose, folder):
    """Inputs that hold nothing, less than they say, or blanks."""
    def made(name, content):
        path = folder / name
        path.write_bytes(content)
        return page_of(program, path)

    (folder / "blanks.txt").write_text(BLANKS)
    (folder / "data.txt").write_text("records 512\ndata sta=AAA loc=00 chan=BHZ net=XX time=2024,001,00:00:00.0000 samples=400 "
                                     "rate=20,1 b1000=11,1,9\n")
    for name in ("blanks", "data"):
        subprocess.run([compose, folder / f"{name}.txt", folder / f"{name}.seed"], check=True)
    assert "The input is empty" in made("empty", b"").visible
    assert "No SEED records" in made("text", b"hello world\n").visible
    data = page_of(program, folder / "data.seed")
    for said in ("XX.AAA.00.BHZ", "Steim-2", "2024-01-01", "20", "Data quality"):
        assert said in data.visible, said
    assert set(data.rows) == {"types-table", "channels-table"}, data.rows
    one = (folder / "data.seed").read_bytes()
    cut = made("cut", one + one[:24])
    check_structure(cut)
    assert f"cut at byte {len(one) + 24}" in cut.visible.replace(",", ""), "not said where it is cut"
    assert "statistics of a listing" in cut.visible
    blanks = page_of(program, folder / "blanks.seed")
    assert "Azimuth (°)" in blanks.visible
    blanks = blanks.data
    positions = [(s["epochs"][0]["latitude"], s["epochs"][0]["longitude"]) for s in blanks["stations"]]
    assert positions == [(None, None), (0, 0)], positions
    assert blanks["epochs"][0]["latitude"] is None


def page_of(program, path):
    out, err, status = run(program, path)
    if status == 2:
        assert err and not out
        return None
    assert bool(err) == bool(status), (err, status)
    return Page(out)


def main(program, compose, man_page):
    found, curves, pages = {}, 0, 0
    with tempfile.TemporaryDirectory(suffix=".quarl-page") as folder:
        hostile = pathlib.Path(folder) / "<b>&\"'.seed"
        subprocess.run([compose, HERE / "hostile.txt", hostile], check=True)
        check_special(program, compose, pathlib.Path(folder))
        for name, path in itertools.chain([("hostile", hostile)], volumes(compose)):
            try:
                page = page_of(program, path)
                if not page:
                    continue
                check_policy(page)
                check_structure(page)
                curves += check_curves(page)
                if name == "hostile":
                    check_hostile(page, HERE / "hostile.txt")
            except AssertionError as wrong:
                sys.exit(f"{name}: {wrong!r}")
            keys_of(page.data, "The object", found)
            pages += 1
    documented = documented_keys(pathlib.Path(man_page))
    for name in documented.keys() | found.keys():
        odd = documented.get(name, set()) ^ found.get(name, set())
        assert not odd, f"keys of {name}: {odd}"
    assert curves >= (20 if REAL.is_dir() else 5), curves
    print(f"{pages} pages, {curves} responses by stage")


if __name__ == "__main__":
    main(*sys.argv[1:])
