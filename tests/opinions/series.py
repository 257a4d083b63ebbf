"""Tells the times of a series as python-dateutil finds them.

A question is {"lines": [DTSTART, RRULE, EXDATE ...], "most": how many}; the answer a list of
"2024-02-29T13:45:00", as the clock of the DTSTART shows them.
"""
import itertools
import json
import sys

from dateutil.rrule import rrulestr

for line in sys.stdin:
    question = json.loads(line)
    series = rrulestr("\n".join(question["lines"]), forceset=True)
    times = itertools.islice(series, question["most"])
    print(json.dumps([time.replace(tzinfo=None).isoformat() for time in times]), flush=True)
