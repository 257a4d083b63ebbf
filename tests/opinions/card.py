"""Tells the lines of a vCard as python-vobject reads them.

A question is {"card": text}; the answer a list of [name, TYPE values, value], the value a text, a
list, or an object of the parts of a name or an address.
"""
import json
import sys

import vobject

for line in sys.stdin:
    card = vobject.readOne(json.loads(line)["card"])
    lines = []
    for each in card.lines():
        value = each.value
        if not isinstance(value, (str, list)):
            value = vars(value)
        lines.append([each.name, each.params.get("TYPE", []), value])
    print(json.dumps(lines), flush=True)
