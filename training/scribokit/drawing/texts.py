"""What is printed: dates, lots, serials, plates, article numbers, words, and the alphabet drawn
evenly.

In a pattern 'A' stands for a letter (O and I only in a group of letters, as in "AA-999" but not in
"A999"), '9' for a digit, '?' for either but O, I, 0 and 1; ' ' is a gap, '*' a gap with an emblem
or a dot that is not to be read; everything else stands for itself.

The picture has to decide what the label says. In most fonts nobody can tell 0 from O or 1 from I in
a random string, or a lone c from C, and a network that is asked to guess spends its weights on it.
So such characters are drawn where their place, the letter case of the text or their neighbours tell
them apart, and nowhere else: O and I in groups of letters alone, beside one that looks like no
digit, 0 and 1 among digits.
"""
import re
import string

CAPITALS = string.ascii_uppercase
SMALL = string.ascii_lowercase
DIGITS = string.digits
LETTERS_BESIDE_DIGITS = "".join(character for character in CAPITALS if character not in "OI")
EITHER = LETTERS_BESIDE_DIGITS + "23456789"
LETTER_GROUP = re.compile(r"(?<![9?A])A{2,}(?![9?A])")
# Small letters that are their capitals made smaller.
SHRUNK = "ckopsuvwxz"
PLATE_PATTERNS = (
    "AA 999 AA",
    "AA-999-AA",
    "AA99 AAA",
    "AAA 999",
    "AAA 9999",
    "AAA-9999",
    "999 AAA",
    "9AAA999",
    "AAA9999",
    "AA 99999",
    "A*AA 9999",
    "AA*AA 999",
    "A*AA 999",
    "AA*A 99",
    "A 999 AA",
    "A 9999 AA",
    "999-AA-9",
    "99-AA-99",
    "AA-99-AA",
    "9AA 9999",
    "9A9 9999",
    "9999 AAA",
    "AA 9999",
    "AAA9A99",
    "A99 AAA",
    "AAA 99A",
    "A*99999",
    "A*?9999",
    "?*?????",
    "AA 9999 A",
    "99 AA 99",
    "AAA*999",
    "999*AAA",
    "AA9 9999",
    "A99*99A",
    "9 AAA 99",
    "AAA 99 99",
    "A 99999",
    "99A 9999",
    "999 999",
    "99999",
    "99 9999",
    "AA 999",
    "AA-9999",
    "AAAA 99",
    "AA 9A 9999",
    "AA99 A 999",
    "A 9999",
    "?????",
    "??????",
    "???????",
    "??? ???",
    "???? ????",
    "AAAAAAA",
    "AAAA99",
    "A9999A",
    "9A99999",
    "AA999A",
    "99A999",
    "AAA999A",
    "9999 99",
    "AA 99 AAA",
    "AAA-999",
    "AAA*9999",
    "9A9*9999",
    "9AA*9999",
    "AAA 99-99",
    "AA*999-AA",
    "AA*9999-A",
    "AA*999-A",
    "999-A-999",
    "99A-999.99",
    "99A-9999",
    "AAA 9A99",
    "AA 999-AA",
)
CODE_PATTERNS = (
    "A9999",
    "AA9999",
    "A99999",
    "L99999",
    "LOT A9999",
    "LOT:A9999",
    "LOT#9999",
    "LOT 99999",
    "SN-999999",
    "SN:???????",
    "S/N 99999",
    "PN:9999-A",
    "REV(9)",
    "QTY:999",
    "9999-9999",
    "A9A9A9",
    "99A99",
    "??????",
    "????????",
    "AA-99-99",
    "CH.B:99999",
    "A9999.99",
    "#9999",
    "No.99999",
    "99:99",
    "99:99 A9",
    "(99)999999",
    "AAA-999-??",
    "B99 99:99",
    "9A99",
    "AAAA",
    "99-9999-99",
    "+99.9",
    "9.99",
    "MODEL A99",
    "TYPE 99A",
    "?????",
    "???????",
    "???-???",
    "999999",
    "99999999",
    "9 999999 999999",
    "99 9 99999",
)
WORDS = (
    "LOT EXP BEST BEFORE MADE IN CHINA GERMANY MEXICO USA BATCH DATE CODE SERIAL MODEL TYPE "
    "PART NO SIZE NET WEIGHT STERILE FRAGILE KEEP DRY USE BY END MFG PROD PACK UNIT TEST PASS "
    "FAIL LEFT RIGHT FRONT BACK OPEN CLOSE START STOP POWER INPUT OUTPUT GROUND Volt Watt Made "
    "Batch Lot Exp Type Model Serial Best before Date Code Part number Line Shift Valve Pump "
    "Motor Filter Class HOTEL TAXI POLICE TRUCK SUPER MUSTANG LUCKY RACER FAST QUICK ZEPHYR "
    "JUMBO VOYAGE BOXER KING QUEEN WIZARD"
).split()
# Letters and digits that look like each other and are still told apart at a height of twelve
# pixels. Not 0 and D, whose corners are lost there: a reader that often meets D among digits reads
# 0 as D.
LOOKALIKES = {
    "8": "B",
    "B": "8",
    "5": "S",
    "S": "5",
    "2": "Z",
    "Z": "2",
    "6": "G",
    "G": "6",
    "4": "A",
    "A": "4",
    "7": "T",
    "T": "7",
}
MONTHS = ("JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC")


def fill(pattern, dice):
    """The pattern with its letters and digits drawn, and drawn again when a group of letters is
    nothing but O and I, which anybody would take for digits."""
    groups = [group.span() for group in LETTER_GROUP.finditer(pattern)]
    in_groups = {place for group in groups for place in range(*group)}
    while True:
        text = _filled_once(pattern, in_groups, dice)
        if all(set(text[first:last]) - set("OI") for first, last in groups):
            return text


def _filled_once(pattern, in_groups, dice):
    """`in_groups`: the places in groups of letters. Doubled characters are made a little more
    frequent than chance, because a reader of sequences drops them first."""
    result = []
    for place, symbol in enumerate(pattern):
        letters = CAPITALS if place in in_groups else LETTERS_BESIDE_DIGITS
        pool = {"A": letters, "9": DIGITS, "?": EITHER}.get(symbol)
        if pool is None:
            result.append(symbol)
        elif result and result[-1] in pool and dice.random() < 0.08:
            result.append(result[-1])
        else:
            result.append(pool[int(dice.random() * len(pool))])
    return "".join(result)


def plate_text(dice):
    if dice.random() < 0.3:
        length = dice.randint(5, 8)
        return "".join(
            dice.choice(EITHER + (" *" if 1 < i < length - 2 else "")) for i in range(length)
        )
    return tempting(fill(dice.choice(PLATE_PATTERNS), dice), dice)


def tempting(text, dice):
    """Half of the texts with one character replaced by the one that looks like it, so that a reader
    cannot tell an 8 from a B by its place. O and I, which nothing but their place tells from 0 and
    1, keep the text as it is.
    """
    places = [place for place, character in enumerate(text) if character in LOOKALIKES]
    if not places or set(text) & set("OI") or dice.random() < 0.5:
        return text
    place = dice.choice(places)
    return text[:place] + LOOKALIKES[text[place]] + text[place + 1 :]


def date_text(dice):
    year, month, day = dice.randint(2015, 2039), dice.randint(1, 12), dice.randint(1, 31)
    mark = dice.choice("-/.")
    short = f"{year % 100:02d}"
    clock = f"{dice.randint(0, 23):02d}:{dice.randint(0, 59):02d}"
    return dice.choice(
        (
            f"{year}{mark}{month:02d}{mark}{day:02d}",
            f"{day:02d}{mark}{month:02d}{mark}{year}",
            f"{day:02d}{mark}{month:02d}{mark}{short}",
            f"{month:02d}{mark}{year}",
            f"{month:02d}{mark}{short}",
            f"{year}{month:02d}{day:02d}",
            f"{day:02d} {MONTHS[month - 1]} {year}",
            f"{day:02d}{MONTHS[month - 1]}{short}",
            f"EXP:{month:02d}.{short}",
            f"EXP {month:02d}/{year}",
            f"{short}{month:02d}{day:02d}",
            f"{day:02d}{mark}{month:02d}{mark}{short} {clock}",
        )
    )


def gtin_text(dice):
    """Twelve digits and their check digit: weights 1 and 3 in turn, summed up to the next ten
    (GS1)."""
    digits = [dice.randint(0, 9) for _ in range(12)]
    check = -sum(d * (3 if i % 2 else 1) for i, d in enumerate(digits)) % 10
    return "".join(map(str, digits + [check]))


def word_text(dice):
    words = [dice.choice(WORDS) for _ in range(dice.choice((1, 1, 2)))]
    if dice.random() < 0.2:
        words = [dice.choice((str.lower, str.title))(word) for word in words]
    return " ".join(words)


def even_text(alphabet, dice):
    """Every character of the alphabet about as likely as any other: in capitals, in small letters,
    or in both but for those that only their size tells apart; with digits but without O and I, or
    without digits."""
    hidden = dice.choice((CAPITALS, SMALL, SHRUNK + SHRUNK.upper() + "Il")) + dice.choice(
        ("OoIl", DIGITS)
    )
    pool = "".join(character for character in alphabet if character not in hidden) or alphabet
    for _ in range(20):
        text = "".join(dice.choice(pool) for _ in range(dice.randint(3, 10)))
        if _shows_its_size(text) and _shows_its_digits(text):
            break
    return text


def _shows_its_size(text):
    """Whether a letter or digit tells how tall capitals are, so that small letters can be told from
    them."""
    characters = [character for character in text if character.isalnum()]
    return not characters or any(character.lower() not in SHRUNK for character in characters)


def _shows_its_digits(text):
    """Whether 0 and 1, if there are any, stand beside another digit, which tells them from O, I."""
    digits = set(text) & set(DIGITS)
    return not digits or not digits <= set("01")


def digit_text(dice):
    """A line of digits alone, whatever it may be: an article number, a counter, a quantity. Some
    are mostly 0 and 1, so that nothing but the line itself tells them from O and I."""
    length = dice.choice((1, 2, 3, 4, 4, 5, 5, 6, 6, 7, 8, 9, 10, 12, 13))
    pools = DIGITS, DIGITS + "0" * 12, DIGITS + "01" * 6, "01"
    pool = dice.choices(pools, (75, 12, 9, 4))[0]
    digits = "".join(dice.choice(pool) for _ in range(length))
    if length > 5 and dice.random() < 0.3:
        place = dice.randint(2, length - 2)
        digits = f"{digits[:place]} {digits[place:]}"
    return digits


def print_text(alphabet, dice):
    kind = dice.random()
    if kind < 0.29:
        return fill(dice.choice(CODE_PATTERNS), dice)
    if kind < 0.49:
        return date_text(dice)
    if kind < 0.53:
        return gtin_text(dice)
    if kind < 0.63:
        return digit_text(dice)
    if kind < 0.73:
        return word_text(dice)
    if kind < 0.87:
        return even_text(alphabet, dice)
    return fill(dice.choice(PLATE_PATTERNS), dice).replace("*", dice.choice(" -."))


def label_of(text, alphabet):
    """What a reader shall say for a drawn text: gaps and emblems are not read."""
    return "".join(character for character in text if character in alphabet)


def is_readable(text, alphabet):
    """Whether a reader of this alphabet can read all of a text, and there is something to read."""
    return set(text) - set(" *") <= set(alphabet) and label_of(text, alphabet) != ""
