"""What stands on containers, counters, displays and packages: texts as texts.py writes them, where
' ' is a gap."""
from .texts import CAPITALS, DIGITS, LETTERS_BESIDE_DIGITS, MONTHS, fill

# The values of letters in ISO 6346: from 10 on, without the multiples of 11.
_LETTER_VALUES = dict(zip(CAPITALS, (value for value in range(10, 39) if value % 11)))
_CATEGORIES = "U" * 20 + "JZ"
_SIZES, _HEIGHTS, _KINDS = "2244444LM", "0225555", ("G1", "G1", "G1", "R1", "U1", "P1", "T1", "K2")
_DATE_MARKS = (
    "MFD MFD MFG MFG EXP EXP EXD BB BB BBF BBF BBE P P E E L L LOT PRD PD ED MFD: MFG: EXP: EXP. "
    "E: P: BB: MFG. USEBY BESTBEFORE L: B PKD PROD"
).split()


def check_digit(code):
    """The check digit of a container's four letters and six digits (ISO 6346): values times powers
    of two, the sum modulo 11, and 0 for 10."""
    values = (_LETTER_VALUES.get(character) or int(character) for character in code)
    return str(sum(value << place for place, value in enumerate(values)) % 11 % 10)


def container_number(dice):
    """(owner with category, serial number, check digit)"""
    owner = fill("AAA", dice) + dice.choice(_CATEGORIES)
    serial = fill("999999", dice)
    return owner, serial, check_digit(owner + serial)


def size_and_type(dice):
    return dice.choice(_SIZES) + dice.choice(_HEIGHTS) + dice.choice(_KINDS)


def container_text(dice):
    """What one reads of a container in one line: the whole number most often."""
    owner, serial, check = container_number(dice)
    return dice.choices(
        (
            f"{owner} {serial} {check}",
            f"{owner} {serial}",
            f"{serial} {check}",
            f"{owner} {serial} {check} {size_and_type(dice)}",
            size_and_type(dice),
            owner,
        ),
        (60, 8, 8, 6, 15, 3),
    )[0]


def counter_text(dice):
    """Five to eight digits; the first ones are often 0."""
    length = dice.randint(5, 8)
    zeros = dice.choice((0, 0, 1, 2, 3))
    return "0" * zeros + fill("9" * (length - zeros), dice)


def display_text(dice):
    pattern = dice.choices(
        (
            "9.9",
            "99.9",
            "999.9",
            "9999.9",
            "99999.9",
            "9.99",
            "99.99",
            "999.99",
            "9.999",
            "99.999",
            "-9.9",
            "-99.9",
            "999",
            "9999",
            "99999",
            "999999",
            "99:99",
            "99:99:99",
            "99",
        ),
        (6, 11, 13, 12, 5, 8, 9, 6, 6, 3, 3, 4, 5, 5, 4, 3, 5, 2, 1),
    )[0]
    return fill(pattern, dice)


def day(dice):
    """A date in one of the ways in which printers of packages write it."""
    year, month, date = dice.randint(2018, 2034), dice.randint(1, 12), dice.randint(1, 31)
    mark = dice.choice("//.-. ")
    short, name = f"{year % 100:02d}", MONTHS[month - 1]
    if mark == " ":
        mark = ""
    return dice.choice(
        (
            f"{date:02d}{mark}{month:02d}{mark}{short}",
            f"{date:02d}{mark}{month:02d}{mark}{short}",
            f"{date:02d}{mark}{month:02d}{mark}{year}",
            f"{year}{mark}{month:02d}{mark}{date:02d}",
            f"{year}{month:02d}{date:02d}",
            f"{short}{month:02d}{date:02d}",
            f"{date:02d}{name}{short}",
            f"{date:02d}{name}{year}",
            f"{name}{short}",
            f"{name}{dice.choice('-/')}{year}",
            f"{month:02d}{dice.choice('/.')}{year}",
            f"{month:02d}{dice.choice('/.')}{short}",
        )
    )


def _clock(dice):
    return f"{dice.randint(0, 23):02d}:{dice.randint(0, 59):02d}"


def _line_code(dice):
    """A machine, a shift, a plant: letters and digits in a few characters."""
    return fill(dice.choice(("A9", "AA9", "AA99", "A", "9A", "A99", "99", "AA999")), dice)


def _lot(dice):
    return fill(dice.choice(("A99999", "9999", "99999", "A9999", "AA9999", "9999A", "99A99")), dice)


def datecode_text(dice):
    """A date code as printers of packages join it: a mark straight before the date, a time, a line
    number or another date behind it."""
    joint = dice.choice(("", "", " "))
    mark = dice.choice(_DATE_MARKS)
    if dice.random() < 0.3:
        mark += dice.choice((":", ".", " "))
    text = dice.choices(
        (
            mark + day(dice),
            day(dice),
            mark + day(dice) + joint + _clock(dice),
            mark + day(dice) + joint + _line_code(dice),
            day(dice) + joint + _line_code(dice) + dice.choice((":", "", " ")) + _clock(dice),
            day(dice) + joint + dice.choice(("/", " ", "")) + day(dice),
            dice.choice(DIGITS + LETTERS_BESIDE_DIGITS) + mark + day(dice),
            dice.choice(("LOT", "L", "L:", "LOT:", "BN", "B.NO", "BATCH")) + joint + _lot(dice),
            _clock(dice) + joint + _line_code(dice),
            mark + day(dice) + joint + dice.choice(("L", "LOT", "EXP", "E")) + _lot(dice),
        ),
        (24, 12, 10, 10, 12, 5, 8, 9, 5, 5),
    )[0]
    return text.lower() if dice.random() < 0.02 else text
