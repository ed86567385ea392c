#!/usr/bin/env python3
"""Runs mpatool --json on streams made from the samples, holds what it prints to the schema files of docs/schema and to the
documents beside this script. With --update it writes those anew; look at the difference before committing it."""

import argparse
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from jsonschema import Draft202012Validator

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parent.parent.parent
SCHEMAS = SOURCE / "docs" / "schema"
FRAME = 417  # bytes of most frames of music.mp3


def make_streams(folder):
    music = (SOURCE / "samples" / "music.mp3").read_bytes()
    (folder / "music.mp3").write_bytes(music)
    (folder / "music.mp2").write_bytes((SOURCE / "samples" / "music.mp2").read_bytes())
    (folder / "short.mp3").write_bytes(music[:6 * FRAME])
    tag = b"ID3\4\0\0\0\0\0\x0A" + bytes(10)
    ape = b"APETAGEX" + bytes([0xD0, 7, 0, 0, 32]) + bytes(19)
    (folder / "tagged.mp3").write_bytes(tag + music + ape + b"TAG" + bytes(125))
    (folder / "damaged.mp3").write_bytes(music[:40000] + b"junk" * 100 + music[50000:-100])
    (folder / "noise.mp3").write_bytes(b"noise" * 1000)


# Command, exit status, name of the document that it is to print; in this order, for they make indexes.
RUNS = [
    (["info", "music.mp3", "music.mp2", "tagged.mp3", "noise.mp3"], 1, "info"),
    (["frames", "short.mp3"], 0, "frames"),
    (["frames", "noise.mp3"], 1, "frames-failed"),
    (["check", "music.mp3", "music.mp2", "tagged.mp3", "damaged.mp3", "noise.mp3"], 1, "check"),
    (["check", "damaged.mp3"], 3, None),
    (["index", "music.mp3", "noise.mp3"], 1, "index"),
    (["index", "--verify", "music.mp3", "music.mp2"], 1, "index-verify"),
    (["info", "music.mp3"], 0, "info-with-index"),
    (["frames", "music.mp3"], 0, None),
    (["selftest"], 0, None),
]


def schema_problems(schema):
    """Members without a place in the schema must not pass: every object says what it may hold."""
    if isinstance(schema, list):
        return [problem for part in schema for problem in schema_problems(part)]
    if not isinstance(schema, dict):
        return []
    open_object = schema.get("type") == "object" and "additionalProperties" not in schema
    return (["an object takes any member"] if open_object else []) + schema_problems(list(schema.values()))


def load_schemas():
    validators = {}
    for path in sorted(SCHEMAS.glob("*.json")):
        schema = json.loads(path.read_text())
        Draft202012Validator.check_schema(schema)
        for problem in schema_problems(schema):
            sys.exit(f"{path.name}: {problem}")
        name = schema["properties"]["schema"]["const"]
        if path.stem != name.replace("/", "-"):
            sys.exit(f"{path.name} describes {name}")
        validators[name] = Draft202012Validator(schema)
    return validators


def run(tool, folder, command, wanted_status):
    print("+ mpatool", *command, flush=True)
    done = subprocess.run([tool, *command, "--json"], cwd=folder, capture_output=True, check=False,
                          env=dict(os.environ, LC_ALL="C"))
    if done.returncode != wanted_status:
        sys.exit(f"exit status {done.returncode} instead of {wanted_status}: {done.stderr.decode()}")
    return json.loads(done.stdout.decode())


def compare(name, document, update):
    path = HERE / "golden" / f"{name}.json"
    if update:
        path.write_text(json.dumps(document, indent=1) + "\n")
    elif json.loads(path.read_text()) != document:
        sys.exit(f"{path.name} differs; printed was\n{json.dumps(document, indent=1)}")


def must_refuse(validator, document):
    """The schema is no empty promise: with a member too many, or one too few, it fails."""
    entry = document["files"][0] if "files" in document else document
    if validator.is_valid(document | {"more": 1}) or validator.is_valid({k: v for k, v in document.items() if k != "schema"}):
        sys.exit(f"the schema of {document['schema']} takes anything")
    for member in list(entry):
        value = entry.pop(member)
        if validator.is_valid(document):
            sys.exit(f"the schema of {document['schema']} does not miss {member}")
        entry[member] = value


def main():
    parser = argparse.ArgumentParser(description=__doc__.split(".")[0])
    parser.add_argument("tool", type=Path)
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    validators = load_schemas()
    seen = set()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        make_streams(folder)
        for command, status, golden in RUNS:
            document = run(options.tool.resolve(), folder, command, status)
            validator = validators[document["schema"]]
            for error in validator.iter_errors(document):
                sys.exit(f"not as {document['schema']} says: {error.json_path}: {error.message}")
            if golden:
                compare(golden, document, options.update)
            seen.add(document["schema"])
            must_refuse(validator, document)
    if seen != set(validators):
        sys.exit(f"no run prints {', '.join(set(validators) - seen)}")
    print(f"{len(RUNS)} documents of {len(seen)} schemas")


main()
