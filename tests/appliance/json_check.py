#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""usage: json_check.py SCHEMAS <OUTPUT

Compares what vokctl printed with the schemas in the folder SCHEMAS. In OUTPUT each JSON text comes after a
line "@NAME", the name of its schema. A member that the schema does not have counts as an error, too: a
program may find new members, but each has to be described. Prints what it compared, or the first error of
each text.
"""
import json
import pathlib
import sys
import warnings

warnings.simplefilter("ignore")
import jsonschema  # noqa: E402  (some versions warn when they are loaded)


def without_more(schema):
    """The schema, with no other members allowed than those that it describes."""
    if isinstance(schema, list):
        return [without_more(each) for each in schema]
    if not isinstance(schema, dict):
        return schema
    strict = {key: without_more(value) for key, value in schema.items()}
    if "properties" in strict and isinstance(strict["properties"], dict):
        strict["additionalProperties"] = False
    return strict


def read_schemas(folder):
    schemas = {}
    for path in sorted(pathlib.Path(folder).glob("*.schema.json")):
        schema = json.loads(path.read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(schema)
        schemas[path.name] = without_more(schema)
    return schemas


def complaint(schemas, name, text):
    """What is wrong with a text; nothing if it is as its schema says."""
    schema = schemas.get(name + ".schema.json")
    if schema is None:
        return "there is no schema"
    resolver = jsonschema.RefResolver(base_uri="", referrer=schema, store=schemas)
    validator = jsonschema.Draft202012Validator(schema, resolver=resolver)
    try:
        error = next(validator.iter_errors(json.loads(text)), None)
    except json.JSONDecodeError as failure:
        return f"no JSON: {failure}"
    return error and f"{error.json_path}: {error.message}"


def main():
    schemas = read_schemas(sys.argv[1])
    for piece in ("\n" + sys.stdin.read()).split("\n@")[1:]:
        name, _, text = piece.partition("\n")
        print(f"{name}: {complaint(schemas, name, text) or 'good'}")


main()
