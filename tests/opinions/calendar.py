"""Tells the events of a calendar as python-icalendar reads them.

A question is {"calendar": text}; the answer a list of objects of the properties by their names. Days
and times are as in "2024-02-29" and "2024-02-29T13:45:00", on the clock that they are written in.
"""
import datetime
import json
import sys

import icalendar


def shown(moment):
    if isinstance(moment, datetime.datetime):
        moment = moment.replace(tzinfo=None)
    return moment.isoformat()


def listed(value):
    return value if isinstance(value, list) else [value]


def told(event):
    properties = {}
    for name in ("UID", "SUMMARY", "LOCATION", "DESCRIPTION", "CLASS"):
        if name in event:
            properties[name] = str(event[name])
    for name in ("DTSTART", "DTEND", "RECURRENCE-ID"):
        if name in event:
            properties[name] = shown(event[name].dt)
    if "RRULE" in event:
        properties["RRULE"] = sorted(event["RRULE"].to_ical().decode().split(";"))
    if "EXDATE" in event:
        lists = listed(event["EXDATE"])
        properties["EXDATE"] = [shown(each.dt) for dates in lists for each in dates.dts]
    if "CATEGORIES" in event:
        lists = listed(event["CATEGORIES"])
        properties["CATEGORIES"] = [str(each) for names in lists for each in names.cats]
    return properties


for line in sys.stdin:
    calendar = icalendar.Calendar.from_ical(json.loads(line)["calendar"])
    print(json.dumps([told(event) for event in calendar.walk("VEVENT")]), flush=True)
