"""Expands the calendar texts of a file with dateutil: an opponent for the tests.

The file has cases of the form "from to" (milliseconds UTC), lines of iCalendar, an empty line. For
each case a line with the instances that touch the range is printed: "start/end" in milliseconds.
"""
import datetime as clock
import re
import sys
from datetime import date, datetime, time, timedelta, timezone
from zoneinfo import ZoneInfo

from dateutil.rrule import rrulestr

UTC = timezone.utc


def read(line):
    head, value = line.split(":", 1)
    name, *parameters = head.split(";")
    return name, dict(p.split("=", 1) for p in parameters), value


def moment(value, parameters):
    """A date, or an aware datetime; floating times are taken as UTC."""
    if "T" not in value:
        return datetime.strptime(value, "%Y%m%d").date()
    zone = ZoneInfo(parameters["TZID"]) if "TZID" in parameters else UTC
    return datetime.strptime(value.rstrip("Z"), "%Y%m%dT%H%M%S").replace(tzinfo=zone)


def duration(value):
    match = re.fullmatch(r"P(?:(\d+)W)?(?:(\d+)D)?(?:T(?:(\d+)H)?(?:(\d+)M)?(?:(\d+)S)?)?", value)
    w, d, h, m, s = (int(g or 0) for g in match.groups())
    return timedelta(days=7 * w + d), timedelta(hours=h, minutes=m, seconds=s)


def milliseconds(when):
    if not isinstance(when, datetime):
        when = datetime.combine(when, time(), UTC)
    return round((when.astimezone(UTC) - datetime(1970, 1, 1, tzinfo=UTC)).total_seconds() * 1000)


def add_clock(when, delta):
    """Moves the clock's hands, so that what is skipped or repeated is read anew (fold 0)."""
    return (when + delta).replace(fold=0) if isinstance(when, datetime) else when + delta


class Component:
    def __init__(self, lines):
        self.rules, self.added, self.excluded, self.id, self.future = [], [], [], None, False
        self.end = self.length = None
        for name, parameters, value in map(read, lines):
            if name == "DTSTART":
                self.start = moment(value, parameters)
            elif name == "DTEND":
                self.end = moment(value, parameters)
            elif name == "DURATION":
                self.length = duration(value)
            elif name == "RRULE":
                self.rules.append(value)
            elif name == "EXDATE":
                self.excluded.append(moment(value, parameters))
            elif name == "RDATE":
                begin, _, length = value.partition("/")
                self.added.append((moment(begin, parameters), length))
            elif name == "RECURRENCE-ID":
                self.id = moment(value, parameters)
                self.future = parameters.get("RANGE") == "THISANDFUTURE"

    def end_of(self, start):
        if self.length:
            days, rest = self.length
            return milliseconds(add_clock(start, days)) + round(rest.total_seconds() * 1000)
        if self.end is not None:
            return milliseconds(start) + milliseconds(self.end) - milliseconds(self.start)
        return milliseconds(start) + (0 if isinstance(start, datetime) else 86400000)

    def dates(self, text, limit):
        """The dates of a rule; the start counts as the first, whether or not the rule has it."""
        start = self.start if isinstance(self.start, datetime) else datetime.combine(self.start, time())
        parts = dict(p.split("=") for p in text.split(";"))
        until = parts.pop("UNTIL", None)
        count = int(parts.pop("COUNT", 0))
        try:
            rule = rrulestr(";".join("=".join(p) for p in parts.items()), dtstart=start.replace(tzinfo=None))
        except ValueError:  # it sees that the rule gives nothing
            return
        number = 0
        for local in rule.replace(until=limit):
            when = local.replace(tzinfo=start.tzinfo)
            if number == 0 and when != start:
                number = 1
            number += 1
            if count and number > count:
                return
            if until and "T" not in until and local.date() > moment(until, {}):
                return
            if until and until.endswith("Z") and start.tzinfo and milliseconds(when) > milliseconds(moment(until, {})):
                return
            if until and "T" in until and not until.endswith("Z") and local > moment(until, {}).replace(tzinfo=None):
                return
            yield when if isinstance(self.start, datetime) else local.date()


def expand(begin, end, text):
    components = [Component(part.split("\n")) for part in
                  re.findall(r"BEGIN:VEVENT\n(.*?)\nEND:VEVENT", text, re.S)]
    main = next(c for c in components if c.id is None)
    changes = [c for c in components if c.id is not None]
    limit = datetime(1970, 1, 1) + timedelta(milliseconds=end) + timedelta(days=31 if changes else 1)
    clock.MAXYEAR = limit.year  # up to which dateutil goes through all years for a rule that never holds
    dates = {milliseconds(main.start): (main.start, None)}
    for rule in main.rules:
        for when in main.dates(rule, limit):
            dates.setdefault(milliseconds(when), (when, None))
    for when, length in main.added:
        if isinstance(main.start, datetime):
            when = when.astimezone(main.start.tzinfo)
        dates.setdefault(milliseconds(when), (when, length))
    for when in main.excluded:
        if not isinstance(when, datetime) and isinstance(main.start, datetime):
            for key in [k for k, (d, _) in dates.items() if d.date() == when]:
                del dates[key]
        else:
            dates.pop(milliseconds(when), None)
    result = []
    for change in changes:
        dates.pop(milliseconds(change.id), None)
        result.append((milliseconds(change.start), change.end_of(change.start)))
    future = sorted((c for c in changes if c.future), key=lambda c: milliseconds(c.id))
    for key, (when, length) in dates.items():
        part = main
        for change in future:
            if milliseconds(change.id) <= key:
                part = change
        if part is not main:
            shift = part.start.replace(tzinfo=None) - part.id.astimezone(part.start.tzinfo).replace(tzinfo=None) \
                if isinstance(when, datetime) else part.start - part.id
            when = add_clock(when.astimezone(part.start.tzinfo) if isinstance(when, datetime) else when, shift)
        if length and part is main:
            days, rest = duration(length)
            last = milliseconds(add_clock(when, days)) + round(rest.total_seconds() * 1000)
        else:
            last = part.end_of(when)
        result.append((milliseconds(when), last))
    return sorted((s, e) for s, e in result if s < end and (e > begin or s >= begin))


with open(sys.argv[1], encoding="utf-8") as cases:
    for case in cases.read().strip("\n").split("\n\n"):
        numbers, text = case.split("\n", 1)
        begin, end = map(int, numbers.split())
        print(" ".join(f"{s}/{e}" for s, e in expand(begin, end, text)))
