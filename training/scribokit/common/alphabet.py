"""The characters that a model reads, in the order of its classes."""
import json
from pathlib import Path

DEFAULT_CONFIGURATION = Path(__file__).resolve().parents[3] / "models" / "ocr_printed_p1_1.json"


def read_alphabet(path=DEFAULT_CONFIGURATION):
    """The "alphabet" of a model's configuration file. ValueError when it is empty or repeats a
    character."""
    alphabet = json.loads(Path(path).read_text(encoding="utf-8")).get("alphabet", "")
    if not alphabet:
        raise ValueError(f"{path}: no alphabet")
    if len(set(alphabet)) != len(alphabet):
        raise ValueError(f"{path}: the alphabet repeats a character")
    return alphabet
