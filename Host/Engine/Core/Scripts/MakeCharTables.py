#!/usr/bin/env python3
"""Writes Private/Misc/CharTables.inl: classes and one-to-one case of the Basic Multilingual Plane, from python3's unicodedata.

Run it from anywhere; the table is committed, so a build does not need it.
"""
import pathlib
import unicodedata

SURROGATES = range(0xD800, 0xE000)


def units():
    return (c for c in range(128, 0x10000) if c not in SURROGATES)


def ranges(test):
    result = []
    for c in units():
        if not test(c):
            continue
        if result and result[-1][1] == c - 1:
            result[-1][1] = c
        else:
            result.append([c, c])
    return result


def category(c):
    return unicodedata.category(chr(c))


def lower(c):
    if c == 0x130:  # The only letter whose full lower case is two characters; alone it is a plain i.
        return ord("i")
    mapped = chr(c).lower()
    return ord(mapped) if len(mapped) == 1 and ord(mapped) < 0x10000 else c


def upper(c):
    for mapped in (chr(c).upper(), chr(c).title()):
        if len(mapped) == 1 and ord(mapped) < 0x10000:
            return ord(mapped)
    return c


def case_runs(function):
    """(first, last, step, offset): every step-th unit from first to last maps to itself plus offset."""
    pairs = [(c, function(c) - c) for c in units() if function(c) != c]
    runs = []
    for c, offset in pairs:
        if runs:
            run = runs[-1]
            gap = c - run[1]
            if offset == run[3] and gap in (1, 2) and (run[2] == 0 or run[2] == gap):
                run[1], run[2] = c, gap
                continue
        runs.append([c, c, 0, offset])
    return [(first, last, step or 1, offset) for first, last, step, offset in runs]


def write(out, name, kind, rows):
    out.append(f"constexpr {kind} {name}[] = {{")
    for start in range(0, len(rows), 6):
        out.append("\t" + " ".join("{ " + ", ".join(row) + " }," for row in rows[start:start + 6]))
    out.append("};")
    out.append("")


def main():
    out = [f"// Made by Scripts/MakeCharTables.py from Unicode {unicodedata.unidata_version}. Units below 128 are not listed.", ""]
    classes = {
        "AlphaRanges": lambda c: category(c)[0] == "L",
        "DecimalRanges": lambda c: category(c) == "Nd",
        "UpperRanges": lambda c: category(c) == "Lu",
        "LowerRanges": lambda c: category(c) == "Ll",
        "PunctRanges": lambda c: category(c)[0] == "P",
    }
    for name, test in classes.items():
        # Upper and lower letters mostly alternate, so their ranges may step by two.
        rows = []
        for first, last in ranges(test):
            if rows and first == last and rows[-1][1] == first - 2 and rows[-1][2] in (0, 2):
                rows[-1][1], rows[-1][2] = first, 2
            else:
                rows.append([first, last, 0 if first == last else 1])
        write(out, name, "FCharRange", [(f"0x{a:04x}", f"0x{b:04x}", str(step or 1)) for a, b, step in rows])
    for name, function in (("ToLowerRuns", lower), ("ToUpperRuns", upper)):
        write(out, name, "FCaseRun", [(f"0x{a:04x}", f"0x{b:04x}", str(step), str(offset)) for a, b, step, offset in case_runs(function)])
    target = pathlib.Path(__file__).resolve().parent.parent / "Private" / "Misc" / "CharTables.inl"
    target.write_text("\n".join(out))


main()
