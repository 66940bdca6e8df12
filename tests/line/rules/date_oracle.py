#!/usr/bin/python3
"""What dates look like, worked out with Python's calendar instead of Qt's, for the tests.

date_oracle.py dates    every date from 2020 to 2040 in every form and with every offset
date_oracle.py clocks   the hours round every change of the clocks in several time zones
"""

import calendar
import sys
from datetime import date, datetime, timedelta, timezone
from functools import lru_cache
from zoneinfo import ZoneInfo

FIRST = date(2020, 1, 1)
LAST = date(2040, 12, 31)

GERMAN = (
    "Januar Februar März April Mai Juni Juli August September Oktober November Dezember".split()
)
CHINESE_NUMBERS = "一 二 三 四 五 六 七 八 九 十 十一 十二".split()
LETTERS = "ABCDEFGHJKLM"  # A to M without I

FORMAT = "yyyy|yy|y|M|MM|MMM|MMMM|d|dd|DDD|ww|w|e|GGGG|GG|G|q"


def month_names(language, month):
    """The short and the full name."""
    if language == "de":
        return GERMAN[month - 1][:3], GERMAN[month - 1]
    if language == "zh":
        return f"{month}月", CHINESE_NUMBERS[month - 1] + "月"
    return calendar.month_abbr[month], calendar.month_name[month]


@lru_cache(maxsize=None)
def all_forms(day, language="en", case=str, calendar_offset=0):
    """The date in FORMAT."""
    short, full = month_names(language, day.month)
    year = day.year + calendar_offset
    iso_year, iso_week, weekday = day.isocalendar()
    iso_year += calendar_offset
    return "|".join(
        [
            f"{year:04}",
            f"{year:04}"[2:],
            f"{year:04}"[3:],
            f"{day.month}",
            day.strftime("%m"),
            case(short),
            case(full),
            f"{day.day}",
            day.strftime("%d"),
            day.strftime("%j"),
            f"{iso_week:02}",
            f"{iso_week}",
            f"{weekday}",
            f"{iso_year:04}",
            f"{iso_year:04}"[2:],
            f"{iso_year:04}"[3:],
            "111222333444"[day.month - 1],
        ]
    )


def months_later(day, count):
    """The same day of another month, or its last day if it is shorter."""
    index = day.year * 12 + day.month - 1 + count
    year, month = index // 12, index % 12 + 1
    return date(year, month, min(day.day, calendar.monthrange(year, month)[1]))


def end_of_month(day):
    return date(day.year, day.month, calendar.monthrange(day.year, day.month)[1])


OFFSETS = {
    "": lambda day: day,
    ";+1 day": lambda day: day + timedelta(days=1),
    ";-1 day": lambda day: day - timedelta(days=1),
    ";+90 days": lambda day: day + timedelta(days=90),
    ";+6 weeks": lambda day: day + timedelta(weeks=6),
    ";-2 weeks": lambda day: day - timedelta(weeks=2),
    ";+1 month": lambda day: months_later(day, 1),
    ";-1 month": lambda day: months_later(day, -1),
    ";+18 months": lambda day: months_later(day, 18),
    ";-18 months": lambda day: months_later(day, -18),
    ";+1 year": lambda day: months_later(day, 12),
    ";+2 years": lambda day: months_later(day, 24),
    ";-3 years": lambda day: months_later(day, -36),
    ";start of week": lambda day: day - timedelta(days=day.weekday()),
    ";end of week": lambda day: day + timedelta(days=6 - day.weekday()),
    ";start of month": lambda day: day.replace(day=1),
    ";end of month": end_of_month,
    ";start of year": lambda day: date(day.year, 1, 1),
    ";end of year": lambda day: date(day.year, 12, 31),
    ";+18 months;end of month": lambda day: end_of_month(months_later(day, 18)),
    ";end of month;+1 month": lambda day: months_later(end_of_month(day), 1),
    ";-1 day;+1 year": lambda day: months_later(day - timedelta(days=1), 12),
}


def minguo(day):
    year = str(day.year - 1911)
    return f"{year}|{year[1:]}|{year[2:]}"


def columns():
    """The time of day and the template of each column, with what makes its text."""
    result = [
        ("12:00", f"{{date:{FORMAT}{offset}}}", lambda day, step=step: all_forms(step(day)))
        for offset, step in OFFSETS.items()
    ]
    for language in ("de", "zh"):
        result.append(
            (
                "12:00",
                f"{{date:{FORMAT};lang={language};+18 months}}",
                lambda day, language=language: all_forms(months_later(day, 18), language),
            )
        )
    for language in ("en", "de"):
        for case in ("upper", "lower"):
            result.append(
                (
                    "12:00",
                    f"{{date:{FORMAT};lang={language};{case}}}",
                    lambda day, language=language, case=case: all_forms(
                        day, language, getattr(str, case)
                    ),
                )
            )
    cut_off = f"{{date:{FORMAT};day begins at 06:00;+1 month}}"
    result += [
        (
            "12:00",
            f"{{date:{FORMAT};calendar=buddhist}}",
            lambda day: all_forms(day, "en", str, 543),
        ),
        ("12:00", "{date:yyy|yy|y;calendar=minguo}", minguo),
        (
            "12:00",
            "{date:yMdd;month=letters}",
            lambda day: f"{day.year % 10}{LETTERS[day.month - 1]}{day.day:02}",
        ),
        ("00:00", f"{{date:{FORMAT}}}", all_forms),
        ("23:59", f"{{date:{FORMAT}}}", all_forms),
        (
            "05:59",
            cut_off,
            lambda day: all_forms(months_later(day - timedelta(days=1), 1)),
        ),
        ("06:00", cut_off, lambda day: all_forms(months_later(day, 1))),
    ]
    return result


def print_dates(write):
    made = columns()
    write("\t".join(["date"] + [f"{time} {template}" for time, template, _ in made]) + "\n")
    for number in range((LAST - FIRST).days + 1):
        day = FIRST + timedelta(days=number)
        write("\t".join([day.isoformat()] + [text(day) for _, _, text in made]) + "\n")


ZONES = [
    "Europe/Berlin",
    "America/New_York",
    "America/Havana",  # set back over midnight
    "America/Nuuk",  # set back at midnight
    "Asia/Beirut",
    "Africa/Casablanca",  # set back in spring
    "Australia/Lord_Howe",  # by half an hour
    "Pacific/Chatham",  # three quarters of an hour
]

# From 2038 on Qt 5.15 sets the clocks of Greenland, Egypt, Israel and Chile at a wrong hour.
LAST_YEAR = {"America/Nuuk": 2037}

DAY_BEGINS = [timedelta(hours=hours) for hours in (0, 1, 2, 2.5, 3, 6, 23)]
MINUTE = timedelta(minutes=1)


def wall(moment, zone):
    return moment.astimezone(zone).replace(tzinfo=None)


def changes(zone, last_year):
    """The first minutes with another offset."""
    moment = datetime(2020, 1, 1, tzinfo=timezone.utc)
    end = datetime(last_year + 1, 1, 1, tzinfo=timezone.utc)
    step = timedelta(days=1)
    while moment < end:
        offset = moment.astimezone(zone).utcoffset()
        if (moment + step).astimezone(zone).utcoffset() != offset:
            minute = moment
            while minute.astimezone(zone).utcoffset() == offset:
                minute += 15 * MINUTE
            yield minute
        moment += step


def print_clocks(write):
    for name in ZONES:
        zone = ZoneInfo(name)
        for change in changes(zone, LAST_YEAR.get(name, LAST.year)):
            furthest = datetime.min
            for minutes in range(-12 * 60, 8 * 60):
                moment = change + minutes * MINUTE
                shown = wall(moment, zone)
                furthest = max(furthest, shown)
                if minutes < -6 * 60 or minutes % 15 not in (0, 14):
                    continue
                days = [(furthest - begin).date().isoformat() for begin in DAY_BEGINS]
                fields = [name, str(int(moment.timestamp())), shown.strftime("%H:%M")] + days
                write("\t".join(fields) + "\n")


def main():
    sys.stdout.reconfigure(encoding="utf-8")
    {"dates": print_dates, "clocks": print_clocks}[sys.argv[1]](sys.stdout.write)


if __name__ == "__main__":
    main()
