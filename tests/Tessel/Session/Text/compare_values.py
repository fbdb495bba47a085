"""Compares new events, as vobject and icalendar of Python read them, with what they were made of.

compare_values.py FOLDER: for each NAME.ics there is a NAME.values with lines "name hexadecimal".
"""
import datetime
import pathlib
import sys

import icalendar
import vobject


def moment(value):
    if not isinstance(value, datetime.datetime):
        return value.strftime("%Y%m%d")
    is_utc = value.tzinfo is not None and value.tzname() == "UTC"
    return value.strftime("%Y%m%dT%H%M%S") + ("Z" if is_utc else "")


def trigger(value):
    return str(int(value.total_seconds())) if isinstance(value, datetime.timedelta) else moment(value)


def listed(value):
    return value if isinstance(value, list) else [] if value is None else [value]


def rule_parts(text):
    return sorted(text.split(";"))


def by_icalendar(text):
    event = icalendar.Calendar.from_ical(text).walk("VEVENT")[0]
    values = {name: [str(event[name])] for name in ("uid", "summary", "description", "location",
                                                    "url", "status") if name in event}
    for name in ("dtstart", "dtend"):
        if name in event:
            values[name] = [moment(event[name].dt)]
    values["category"] = [str(one) for entry in listed(event.get("categories")) for one in entry.cats]
    values["attendee"] = [str(one.params["CN"]) for one in listed(event.get("attendee"))]
    values["rrule"] = [one.to_ical().decode() for one in listed(event.get("rrule"))]
    values["trigger"] = [trigger(alarm["trigger"].dt) for alarm in event.walk("VALARM")]
    return values


def by_vobject(text):
    event = vobject.readOne(text).vevent
    values = {name: [event.contents[name][0].value] for name in ("uid", "summary", "description",
              "location", "url", "status") if name in event.contents}
    for name in ("dtstart", "dtend"):
        if name in event.contents:
            values[name] = [moment(event.contents[name][0].value)]
    values["category"] = [one for entry in event.contents.get("categories", [])
                          for one in entry.value]
    values["attendee"] = [one.params["CN"][0] for one in event.contents.get("attendee", [])]
    values["rrule"] = [one.value for one in event.contents.get("rrule", [])]
    values["trigger"] = [trigger(alarm.trigger.value) for alarm in event.contents.get("valarm", [])]
    return values


def expected(path):
    values = {}
    for line in path.read_text().splitlines():
        name, _, value = line.partition(" ")
        values.setdefault(name, []).append(bytes.fromhex(value).decode())
    return values


def main():
    paths = sorted(pathlib.Path(sys.argv[1]).glob("*.ics"))
    different = 0 if paths else 1
    for path in paths:
        text = path.read_bytes().decode()
        wanted = expected(path.with_suffix(".values"))
        for reader in (by_icalendar, by_vobject):
            found = reader(text)
            for name in sorted(set(wanted) | {name for name in found if found[name]}):
                ours, theirs = wanted.get(name, []), found.get(name, [])
                if name == "rrule":
                    ours, theirs = map(rule_parts, ours), map(rule_parts, theirs)
                if name == "attendee":  # neither of the two decodes RFC 6868
                    theirs = [one.replace("^'", '"') for one in theirs]
                if list(ours) != list(theirs):
                    print(f"{path.name} {reader.__name__} {name}: {found.get(name)}"
                          f" instead of {wanted.get(name)}")
                    different += 1
    return 1 if different else 0


sys.exit(main())
