# Cross-check of drawings against ezdxf: model-space entity counts by type, as `vkcompare info --json` gives them.
"""Cross-checks drawings against ezdxf: model-space entity counts by type must match `vkcompare info --json`.

    check_ezdxf.py --vkcompare PATH FILE.dxf...
    check_ezdxf.py --vkcompare PATH --generator PATH [--entities N] [--versions AC1015,AC1009,AC1032]

The second form generates the drawings (seed 1) into a temporary folder first. Exits 1 on any mismatch, on
reader warnings, or when ezdxf cannot read a drawing.
"""
import argparse
import collections
import json
import os
import subprocess
import sys
import tempfile


def ezdxf_counts(path):
    import ezdxf  # imported here so that --help works without it

    doc = ezdxf.readfile(path)
    return doc.dxfversion, dict(collections.Counter(e.dxftype() for e in doc.modelspace()))


def host_counts(vkcompare, path):
    out = subprocess.run([vkcompare, "info", "--json", path], check=True, capture_output=True, text=True).stdout
    info = json.loads(out)
    return info["version"], info["spaces"].get("*Model_Space", {}), info["warnings"]


def check(vkcompare, path):
    ez_version, ez = ezdxf_counts(path)
    version, host, warnings = host_counts(vkcompare, path)
    ok = True
    if warnings:
        print(f"{path}: the host reader warns: {warnings}")
        ok = False
    if ez_version != version:
        print(f"{path}: version {version} here, {ez_version} for ezdxf")
        ok = False
    if ez != host:
        for name in sorted(set(ez) | set(host)):
            if ez.get(name) != host.get(name):
                print(f"{path}: {name}: {host.get(name, 0)} here, {ez.get(name, 0)} for ezdxf")
        ok = False
    total = sum(host.values())
    print(f"{path}: {version}, {total} model-space entities in {len(host)} types: {'agree' if ok else 'DIFFER'}")
    return ok


def main():
    p = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    p.add_argument("--vkcompare", required=True)
    p.add_argument("--generator")
    p.add_argument("--entities", type=int, default=10000)
    p.add_argument("--versions", default="AC1015,AC1009,AC1032")
    p.add_argument("files", nargs="*")
    args = p.parse_args()
    if not args.files and not args.generator:
        p.error("name drawings, or --generator to make them")
    ok = True
    for f in args.files:
        ok = check(args.vkcompare, f) and ok
    if args.generator:
        with tempfile.TemporaryDirectory(prefix="vk_check_ezdxf_") as tmp:
            for version in args.versions.split(","):
                path = os.path.join(tmp, f"drawing_{args.entities}_{version}.dxf")
                subprocess.run([args.generator, "--entities", str(args.entities), "--version", version, path],
                               check=True, stdout=subprocess.DEVNULL)
                ok = check(args.vkcompare, path) and ok
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
