"""The page of a fax in dots, for each paper, resolution and set of margins."""

import dataclasses
import math
import re

PAPERS = {  # width and height in inches
    "a4": (8.26771653543307, 11.69291338582677),
    "letter": (8.5, 11.0),
    "legal": (8.5, 14.0),
}
RESOLUTIONS = {  # dots per inch across and down, and the dots of a scan line
    "standard": (204, 98, 1728),
    "fine": (204, 196, 1728),
    "superfine": (204, 391, 1728),
    "ultrafine": (408, 391, 3456),
}
_LEAST_PAPER = 0.1  # inches between margins

# As the converter reads a number: what follows it is ignored ("1in").
_NUMBER = re.compile(r"[+-]?(\d+(\.\d*)?|\.\d+)([eE][+-]?\d+)?(?!\d*[xX])")


@dataclasses.dataclass(frozen=True)
class FaxPage:
    paper: str = "a4"
    resolution: str = "fine"
    margins: tuple = (0.0, 0.0, 0.0, 0.0)  # left, top, right, bottom in inches

    @property
    def dpi(self) -> tuple:
        """Dots per inch across and down."""
        return RESOLUTIONS[self.resolution][:2]

    @property
    def size(self) -> tuple:
        """Width and height of the whole page in dots."""
        height = PAPERS[self.paper][1] * self.dpi[1]
        return RESOLUTIONS[self.resolution][2], math.ceil(height)

    @property
    def area(self) -> tuple:
        """Width and height of the printable area in dots."""
        left, top, right, bottom = self.margins
        (across, down), (width, height) = self.dpi, self.size
        return (width - math.floor(right * across) - math.floor(left * across),
                height - math.floor(bottom * down) - math.floor(top * down))

    def fitted(self, width: float, height: float) -> tuple:
        """The dots that a picture of these proportions has when it fills the area."""
        (across, down), (area_width, area_height) = self.dpi, self.area
        scale = min(area_width / across / width, area_height / down / height)
        return (max(1, min(area_width, round(width * scale * across))),
                max(1, min(area_height, round(height * scale * down))))


def _number(text: str) -> float:
    found = _NUMBER.match(text.strip())
    value = float(found.group()) if found else -1.0
    if not 0.0 <= value < math.inf:
        raise ValueError(text)
    return value


def margins_from_text(text: str) -> tuple:
    """Left, top, right and bottom margin from M, H,V or L,T,R,B; else ValueError."""
    numbers = [_number(piece) for piece in text.split(",")]
    if len(numbers) == 1:
        return tuple(numbers * 4)
    if len(numbers) == 2:
        return tuple(numbers * 2)
    if len(numbers) == 4:
        return tuple(numbers)
    raise ValueError(text)


def leave_paper(margins: tuple, paper: str) -> bool:
    """Whether there is anything left to print on between `margins`."""
    width, height = PAPERS[paper]
    left, top, right, bottom = margins
    return width - left - right >= _LEAST_PAPER and height - top - bottom >= _LEAST_PAPER
