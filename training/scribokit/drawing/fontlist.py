"""Which fonts the pictures are drawn with: file name patterns below the font folders, by what they
are used for.

The packages that hold them are listed in training/packages.txt. Fonts of HELD_OUT are never trained
on; test sets are drawn with them alone.
"""
import fnmatch
import os
from functools import lru_cache
from pathlib import Path

FONT_FOLDERS = ("/usr/share/fonts", "/usr/share/texmf/fonts")

# Even, sturdy letters such as number plates, road signs, name plates and stamped tags carry.
PLATE = (
    "roadgeek/*",
    "opendin/*",
    "bebas-neue/*[BR]*",
    "league-spartan/*[BM]old*",
    "*LiberationSansNarrow-Bold.ttf",
    "*LiberationSans-Bold.ttf",
    "*NimbusSansNarrow-Bold.*",
    "*NimbusSans-Bold.*",
    "*DejaVuSansCondensed-Bold.ttf",
    "*DejaVuSans-Bold.ttf",
    "*RobotoCondensed-Bold.ttf",
    "*Roboto-Bold.ttf",
    "*Roboto-Black.ttf",
    "*texgyreheros*bold.*",
    "*PTN77F*",
    "*Dosis-*[Bb]old*",
    "*YanoneKaffeesatz-[BR]*",
    "*TiresiasSigns*",
    "*TiresiasInfofont*Bold*",
    "*Tuffy*Bold.ttf",
    "*osifont*",
    "*B612*-Bold.*",
    "*Play-Bold*",
    "*GilliusADF*Bold.*",
    "*UniversalisADF*Bold*.*",
    "*routed-gothic*",
    "*Sora-*Bold*",
    "*OpenSans-CondBold.ttf",
    "*clear-sans/*Bold.ttf",
    "*Jura-*[Bb]old*",
    "*BetecknaLowerCaseCondensed*Bold*",
    "*Cantarell-*Bold*",
    "*Millimetre-*Bold*",
    "*UbuntuTitle*",
    "*Carlito-Bold*",
    "*Allerta*",
    "*Oxygen-Sans-Bold*",
    "*NotoSans-Bold.ttf",
    "*FreeSansBold.ttf",
    "*Inconsolata*",
    "*ocr-b/*",
)
# What a printing machine, a type wheel or an engraver has. Their digits are as tall as capitals: a
# 0 of the height of an o is one to any reader.
PRINT = PLATE + (
    "*LiberationSans-Regular.ttf",
    "*LiberationSans-Italic.ttf",
    "*LiberationMono-*.ttf",
    "*LiberationSerif-Regular.ttf",
    "*LiberationSerif-Bold.ttf",
    "*LiberationSansNarrow-Regular.ttf",
    "*NimbusSans-Regular.*",
    "*NimbusMonoPS-*.otf",
    "*NimbusSansNarrow-Regular.*",
    "*C059-Roman.otf",
    "*P052-Roman.otf",
    "*DejaVuSans.ttf",
    "*DejaVuSansMono*.ttf",
    "*DejaVuSansCondensed.ttf",
    "*DejaVuSerif*.ttf",
    "*Roboto-Regular.ttf",
    "*Roboto-Medium.ttf",
    "*Roboto-Light.ttf",
    "*RobotoCondensed-Regular.ttf",
    "*texgyreheros*regular.*",
    "*texgyrecursor*.otf",
    "*texgyreadventor-*.otf",
    "*texgyrebonum-regular.otf",
    "*Lato-Regular.ttf",
    "*Lato-Bold.ttf",
    "*Lato-Medium.ttf",
    "*Lato-Black.ttf",
    "*OpenSans-Regular.ttf",
    "*OpenSans-Semibold.ttf",
    "*OpenSans-Light.ttf",
    "*PTS55F*",
    "*PTM55F*",
    "*PTM75F*",
    "*PTN57F*",
    "*PTF55F*",
    "*Dosis-*Regular*",
    "*Dosis-Medium*",
    "*Tuffy.ttf",
    "*Tuffy*Regular*",
    "*FreeMono*.ttf",
    "*FreeSans.ttf",
    "*FreeSerif.ttf",
    "*Go-Regular*",
    "*Go-Mono*",
    "*Go-Bold.ttf",
    "*Hack-*.ttf",
    "*JetBrainsMono-Regular*",
    "*JetBrainsMono-Bold*",
    "*Karla-Regular*",
    "*Karla-Bold.*",
    "*Cabin-Regular*",
    "*Cabin-Bold.*",
    "*Cantarell-Regular*",
    "*clear-sans/*Regular.ttf",
    "*CourierPrime*.ttf",
    "*courier-prime/*",
    "*GNUTypewriter*",
    "*GilliusADF-Regular*",
    "*SwitzeraADF-Regular*",
    "*SwitzeraADF-Bold.*",
    "*VeranaSans*Regular*",
    "*MekanusADFStd-Regular*",
    "*Manrope-*",
    "*Sora-Regular*",
    "*Quicksand*",
    "*Oxygen-Sans.ttf",
    "*OxygenMono*",
    "*Jura-Regular*",
    "*Jura-Medium*",
    "*Carlito-Regular*",
    "*mononoki-*.ttf",
    "*monof55*",
    "*FiraCode-*",
    "*DotGothic*",
    "*Dustismo_*.ttf",
    "*NotoSans-Regular.ttf",
    "*NotoSansMono-*",
    "*NotoSerif-Regular.ttf",
    "*Inter-Regular.*",
    "*Inter-Bold.*",
    "*Inter-SemiBold.*",
    "*3270*.ttf",
    "*Hermit-*",
    "*AnonymousPro*.ttf",
    "*Comfortaa-*",
    "*Compagnon-[ILMR]*",
    "*ocr-a/*",
    "*OCRA*.ttf",
    "*B612*-Regular.*",
    "*Play-Regular*",
    "*LeagueMono-*",
    "*Glass_TTY*",
    "fonts/pc/*",
    "*league-spartan/*",
)
SEGMENT = (
    "*DSEG7Classic*-Regular*",
    "*DSEG7Classic-Bold*",
    "*DSEG7Modern-*",
    "*DSEG14Classic-*",
    "*DSEG14Modern-Regular*",
)
HELD_OUT = (
    "*NimbusSansNarrow*",
    "*LiberationMono*",
    "*Lato-*",
    "*RobotoCondensed*",
    "*TiresiasSigns*",
    "*osifont*",
    "*PTN77F*",
    "*PTN57F*",
    "*texgyreadventor*",
    "*Hack-*",
    "*Carlito*",
    "*RG2014C.ttf",
    "*RG2014EM.ttf",
    "*texgyreheroscn*",
    "*Go-Mono*",
    "*Inter-*",
    "*DejaVuSerif*",
    "*OCRABold*",
    "*Jura*",
    "*Cabin*",
    "*DSEG7Modern*",
    "*NotoSansMono*",
)
_EXCLUDED = (
    "*Italic*Light*",
    "*Thin*",
    "*-Hairline*",
    "*.pfb",
    "*.t1",
    "*.pcf*",
    "*Symbol*",
    "*UltraLight*",
    "*ExtraLight*",
    "*HairLine*",
    "*Variable*",
    "*outline*",
    "*Shadow*",
    "OCRBE*",
    "OCRBX*",
)


@lru_cache(maxsize=None)
def _installed():
    files = {}
    for folder in FONT_FOLDERS:
        for path in Path(folder).rglob("*"):
            if path.suffix.lower() in (".ttf", ".otf"):
                files.setdefault(path.name, str(path))
    return tuple(sorted(files.values()))


def _matches(path, patterns):
    return any(
        fnmatch.fnmatchcase(path, "*" + pattern if not pattern.startswith("*") else pattern)
        for pattern in patterns
    )


def font_files(patterns, held_out):
    """Installed font files that match, either the held-out ones or the others, in a fixed order."""
    return [
        path
        for path in _installed()
        if _matches(path, patterns)
        and not _matches(os.path.basename(path), _EXCLUDED)
        and _matches(path, HELD_OUT) == held_out
    ]
