"""Volumes that pages are looked at with, and the pages that quarl-html makes of them."""
import datetime
import os
import pathlib
import subprocess

SOURCE = pathlib.Path(__file__).resolve().parents[2]

IDENTIFIER = "records 4096\nheader V\n010  2.4|12|2023,001~2024,001~2024,003~Org~Label~\n"
DICTIONARIES = ("header A\n030 Steim2~|0001|050|00\n033 001|Net~\n033 002|Seismometer~\n034 001|M/S~Velocity~\n"
                "034 002|V~Volts~\n034 003|COUNTS~Counts~\nheader S\n")
RESPONSE = ("053 A|01|001|002|+1.00000E+00|+1.00000E+00|001| 0.00000E+00|{0}|{0}|{0}|002|-3.70000E-02|+3.70000E-02"
            "|{0}|{0}|-3.70000E-02|-3.70000E-02|{0}|{0}\n058 01|+1.50000E+03|+1.00000E+00|00\n"
            "054 D|02|002|003|0000|0000\n057 02|2.0000E+01|00001|00000|+0.0000E+00|+0.0000E+00\n"
            "058 02|+4.00000E+05|+1.00000E+00|00\n").format("+0.00000E+00")


def station(code, latitude, longitude):
    return f"050 {code:5}|{latitude:10.6f}|{longitude:11.6f}| 1850.0|0001|001|Site {code}~001|3210|10|2020,001~~N|XX\n"


def channel(location, code, latitude, longitude, sensitivity):
    return (f"052 {location:2}|{code}|0000|002|~001|002|{latitude:10.6f}|{longitude:11.6f}| 1850.0|000.0|000.0|-90.0|0001|09|"
            f"2.0000E+01|1.0000E-04|0000|CG~2020,001~~N\n{RESPONSE}058 00|{sensitivity:+.5E}|+1.00000E+00|00\n")


def year_with_a_gap():
    """A year of records of nine hours, and one second that is missing in its middle; an overlap at its end."""
    lines = [IDENTIFIER, DICTIONARIES, station("GAP", 10, 179.9), channel("00", "LHZ", 10, 179.9, 6e8)]
    start = datetime.datetime(2023, 1, 1)
    for i in range(970):
        at = start + datetime.timedelta(hours=9 * i, seconds=(i >= 485) - 2 * (i == 969))
        lines.append(f"data sta=GAP loc=00 chan=LHZ net=XX time={at:%Y,%j,%H:%M:%S}.0000 samples=32400 rate=1,1 b1000=11,1,9\n")
    return "".join(lines)


def thousand_epochs():
    lines = [IDENTIFIER, DICTIONARIES]
    for i in range(100):
        latitude, longitude = -60 + 1.2 * i, -170 + 3.4 * i
        lines.append(station(f"S{i:03}", latitude, longitude))
        lines += [channel(f"{k:02}", "BHZ", latitude, longitude, 6e8 + 10 * i + k) for k in range(10)]
    return "".join(lines)


class Pages:
    """Makes pages of volumes."""

    def __init__(self, quarl_html, compose, directory):
        self.quarl_html, self.compose, self.directory = quarl_html, compose, pathlib.Path(directory)

    def of(self, volume, name):
        page = self.directory / f"{name}.html"
        environment = dict(os.environ, QUARL_PFPATH=str(SOURCE / "etc"))
        done = subprocess.run([self.quarl_html, "-o", page, volume], env=environment, stderr=subprocess.DEVNULL, check=False)
        assert done.returncode in (0, 1), (name, done.returncode)
        return page

    def composed(self, recipe, name):
        volume = self.directory / f"{name}.seed"
        if not isinstance(recipe, pathlib.Path):
            text, recipe = recipe, self.directory / f"{name}.txt"
            recipe.write_text(text, encoding="utf-8")
        subprocess.run([self.compose, recipe, volume], check=True)
        return self.of(volume, name)
