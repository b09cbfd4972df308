#!/usr/bin/python3
"""Usage: judge.py SCHEMA FILE...

Holds scenario files, YAML or JSON, against a JSON Schema, and says "valid" or "invalid" of each, a line each.
Fails where the schema itself is none.
"""
import json
import sys

import jsonschema
import yaml

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft7Validator.check_schema(schema)
validator = jsonschema.Draft7Validator(schema, format_checker=jsonschema.draft7_format_checker)
for path in sys.argv[2:]:
    with open(path, encoding="utf-8") as file:
        errors = list(validator.iter_errors(yaml.safe_load(file)))
    print("invalid" if errors else "valid")
    for error in errors:
        print(path, list(error.absolute_path), error.message, file=sys.stderr)
