#!/usr/bin/env python3
"""Validates JSON: validate.py SCHEMA FILE... Prints "FILE: valid" or the first error for each file."""

import json
import sys

import jsonschema


def load(name):
    with open(name, encoding="utf-8") as file:
        return json.load(file)


schema = load(sys.argv[1])
jsonschema.Draft7Validator.check_schema(schema)
for name in sys.argv[2:]:
    error = next(jsonschema.Draft7Validator(schema).iter_errors(load(name)), None)
    where = "/".join(map(str, error.absolute_path)) + ": " if error else ""
    print(f"{name}: {where}{error.message if error else 'valid'}")
