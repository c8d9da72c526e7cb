"""A small tree of files with faults planted in it, for the checks' self-tests."""
import contextlib
import pathlib
import tempfile


@contextlib.contextmanager
def planted(tree):
    """The root of a temporary tree with the files of `tree`, by name; it goes at the end."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in tree.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text, encoding="utf-8")
        yield root


def verdict(found, wanted, what):
    """Says whether exactly `wanted` was found; the exit status."""
    if found != wanted:
        print(f"self-test failed: missed {sorted(wanted - found)}, wrongly found {sorted(found - wanted)}")
        return 1
    print(f"self-test: the {len(wanted)} planted {what} were found, and nothing else")
    return 0
