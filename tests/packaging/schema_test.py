#!/usr/bin/env python3
"""Checks that the schema of tag lists and boardctl accept the same lists.

usage: tests/packaging/schema_test.py SCHEMA BOARDCTL
"""
import json
import subprocess
import sys

import jsonschema

ADDRESS = '"mac":"02:00:00:00:00:07"'
RANGE = '"from":"02:00:00:00:00:00","to":"02:00:00:00:00:FF"'
GOOD = [
    "", '{"id":45,"name":"ProductID","length":4,"data":"1234abcd","simulated":true}', '{"id":"ProductID","hex":"12"}',
    '{"id":"0x5","text":"SN-1"}', '{"id":"0XFFFE","data":""}', '{"id":"065534","data":""}', '{"id":"Tag2","data":""}',
    '{"id":5,"u8":255}', '{"id":5,"u16":"0xffff"}', '{"id":5,"u32":4294967295}',
    '{"id":5,"uint":"12"}', '{"id":1,' + ADDRESS + ',"iface":65535}', '{"id":0,"data":""}', '{"id":5,"any":true}',
    '{"id":5,"size":65530}', '{"id":5,"matches":"SN-[0-9]+"}', '{"id":1,' + RANGE + "}",
    '{"id":1,' + RANGE + ',"iface":3}',
]
BAD = [
    "7", "[]", "{}", '{"data":""}', '{"id":5}', '{"id":65535,"data":""}', '{"id":-1,"data":""}', '{"id":5.5,"data":""}',
    '{"id":"macaddress","data":""}', '{"id":"Tag1","data":""}', '{"id":"Tag02","data":""}', '{"id":"0x0","data":""}',
    '{"id":"0xffff","data":""}', '{"id":"65535","data":""}', '{"id":"5.1","data":""}',
    '{"id":"","data":""}', '{"id":null,"data":""}', '{"id":5,"data":"123"}',
    '{"id":5,"hex":"1g"}', '{"id":5,"text":7}', '{"id":5,"text":"a","hex":"61"}', '{"id":5,"u8":256}',
    '{"id":5,"u16":65536}', '{"id":5,"uint":-1}', '{"id":5,"u32":4294967296}', '{"id":5,"u8":"ff"}',
    '{"id":5,"u8":1.5}', '{"id":1,' + ADDRESS + "}", '{"id":1,' + ADDRESS + ',"iface":65536}',
    '{"id":1,"mac":"01:00:00:00:00:07","iface":1}', '{"id":1,"mac":"00:00:00:00:00:00","iface":1}',
    '{"id":1,"mac":"02-00-00-00-00-07","iface":1}', '{"id":5,"data":"","iface":1}', '{"id":0,"data":"00"}',
    '{"id":0,"u8":0}', '{"id":0,"any":true}', '{"id":5,"any":false}', '{"id":5,"any":true,"size":1}',
    '{"id":5,"size":65531}', '{"id":5,"matches":1}', '{"id":1,"from":"02:00:00:00:00:00"}',
    '{"id":1,"to":"02:00:00:00:00:00","any":true}', '{"id":5,"data":"","value":1}', '{"id":5,"data":"","length":"0"}',
]


def main(schema_file, boardctl):
    with open(schema_file, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    status = 0
    for entry, expected in [*((each, True) for each in GOOD), *((each, False) for each in BAD)]:
        text = f"[{entry}]"
        # Most lists differ from the empty image, which is not a mistake in the list.
        run = subprocess.run([boardctl, "bd", "compare", "-", "/dev/null"], input=text, capture_output=True, text=True,
                             check=False)
        accepted = {"the schema": validator.is_valid(json.loads(text)), "boardctl": run.returncode in (0, 3)}
        for who, verdict in accepted.items():
            if verdict != expected:
                print(f"{text}: {who} {'accepts' if verdict else 'rejects'} it {run.stderr}", file=sys.stderr)
                status = 1
    return status


sys.exit(main(*sys.argv[1:]))
