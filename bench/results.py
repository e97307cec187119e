"""What was measured, and how numbers are written."""

import json
from pathlib import Path

import numpy as np


class Results:
    def __init__(self, path):
        self.all = json.loads(Path(path).read_text())

    def curves(self, picture):
        return [(curve["name"], np.array(curve["points"]))
                for curve in self.all["curves"] if curve["picture"] == picture]

    def pictures(self, subject):
        """Those of one subject, for each choice of cores that it was measured on."""
        return [picture for picture in dict.fromkeys(curve["picture"] for curve in self.all["curves"])
                if picture.startswith(subject + ", ")]


def number(value, like=None):
    """As people write it; with the decimals of another number where the two are compared."""
    size = abs(value)
    if size >= 1000:
        return f"{value:,.0f}"
    if like is not None and value != int(value):
        return f"{value:.{max(2, len(f'{like:g}'.partition('.')[2]))}f}"
    return f"{value:.4g}"
