"""The volumes that the tests of quarl-json read, and how programs run on them."""
import os
import pathlib
import subprocess
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parents[2]
REAL = SOURCE.parent / "shared" / "volumes"


def run(program, *arguments):
    """What a program writes and its status, with the installed parameter file."""
    environment = dict(os.environ, QUARL_PFPATH=str(SOURCE / "etc"))
    done = subprocess.run([program, *map(str, arguments)], capture_output=True, check=False,
                          stdin=subprocess.DEVNULL, env=environment)
    return done.stdout, done.stderr, done.returncode


def volumes(compose):
    """Pairs of name and path: the sample, those that recipes compose, and real ones."""
    yield "sample", SOURCE / "examples" / "sample.seed"
    recipes = sorted(SOURCE.glob("tests/golden/*/volume.txt")) + sorted(
        SOURCE.glob("tests/json/recipes/*.txt"))
    with tempfile.TemporaryDirectory(suffix=".quarl-json") as directory:
        for recipe in recipes:
            name = f"{recipe.parent.name}-{recipe.stem}"
            path = pathlib.Path(directory) / name
            subprocess.run([compose, recipe, path], check=True)
            yield name, path
    if REAL.is_dir():
        for path in sorted(REAL.iterdir()):
            if path.suffix != ".md":
                yield path.name, path
    else:
        print("skipped: the real volumes are not here")
