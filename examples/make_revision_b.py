#!/usr/bin/env python3
"""Makes door_rev_b.dxf from door_rev_a.dxf: the edits a reviewer of the next revision would look for.

Works on the DXF text itself (pairs of group-code and value lines), so everything not edited stays byte for
byte as it was. Run from this folder: python3 make_revision_b.py
"""

SOURCE = "door_rev_a.dxf"
TARGET = "door_rev_b.dxf"


def read_pairs(path):
    with open(path, "rb") as f:
        lines = f.read().decode("utf-8").splitlines()
    return [(lines[i], lines[i + 1]) for i in range(0, len(lines) - 1, 2)]


def entities(pairs):
    """Index ranges [start, end) of each entity record of the ENTITIES section, by handle."""
    out, start, handle, in_entities = {}, None, None, False
    for i, (code, value) in enumerate(pairs):
        code = code.strip()
        if code == "2" and value == "ENTITIES":
            in_entities = True
        elif code == "0" and in_entities:
            if start is not None and handle:
                out[handle] = (start, i)
            if value == "ENDSEC":
                break
            start, handle = i, None
        elif code == "5" and in_entities and handle is None:
            handle = value.strip()
    return out


def set_group(pairs, span, code, value, occurrence=0):
    seen = 0
    for i in range(*span):
        if pairs[i][0].strip() == str(code):
            if seen == occurrence:
                pairs[i] = (pairs[i][0], value)
                return
            seen += 1
    raise KeyError(f"group {code} not found")


def insert_after(pairs, span, after_code, new_pairs):
    for i in range(*span):
        if pairs[i][0].strip() == str(after_code):
            pairs[i + 1:i + 1] = new_pairs
            return
    raise KeyError(f"group {after_code} not found")


def main():
    pairs = read_pairs(SOURCE)
    ents = entities(pairs)
    # Edits that keep the records' places, from the last record to the first so that earlier spans hold.
    edits = sorted(
        [
            ("4C2", lambda s: set_group(pairs, s, 11, "12553.0")),  # a door leaf edge is longer
            ("4BE", lambda s: insert_after(pairs, s, 8, [(" 62", "1")])),  # a frame line turns red
            ("4C0", lambda s: set_group(pairs, s, 8, "A.Wall_Internal")),  # a frame line moves to the wall layer
            ("4C6", lambda s: set_group(pairs, s, 40, "8.0")),  # a hinge circle grows
            ("4C7", lambda s: insert_after(pairs, s, 8, [(" 48", "2.0")])),  # a swing arc gets a linetype scale
            ("549", lambda s: set_group(pairs, s, 1, "Exploded the block in revision B")),  # a note is reworded
        ],
        key=lambda e: -ents[e[0]][0],
    )
    for handle, edit in edits:
        edit(ents[handle])
    # A frame line is deleted.
    start, end = ents["4C5"]
    del pairs[start:end]
    # A new wall line is drawn, before the end of the ENTITIES section.
    ents = entities(pairs)
    last_end = max(end for _, end in ents.values())
    new_line = [("  0", "LINE"), ("  5", "9000"), ("330", "1F"), ("100", "AcDbEntity"), ("  8", "A.Wall_Internal"),
                ("100", "AcDbLine"), (" 10", "9500.0"), (" 20", "4000.0"), (" 30", "0.0"),
                (" 11", "10500.0"), (" 21", "4000.0"), (" 31", "0.0")]
    pairs[last_end:last_end] = new_line
    with open(TARGET, "wb") as f:
        f.write("".join(f"{c}\n{v}\n" for c, v in pairs).encode("utf-8"))


if __name__ == "__main__":
    main()
