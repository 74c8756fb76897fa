"""Sheets of an effect's presets."""

import os

import numpy as np

import lumiset

from . import _lumiset
from ._png import to_png


class Sheet:
    """A sheet of pictures. A notebook shows it; `array` has it as R, G, B of uint8."""

    def __init__(self, array):
        self.array = array

    def _repr_png_(self):
        return to_png(self.array)

    def save(self, file):
        """Writes it as a PNG file; one that is there is replaced, whole or not at all."""
        file = os.fspath(file)
        part = f"{file}.{os.getpid()}.part"
        try:
            with open(part, "xb") as stream:
                stream.write(self._repr_png_())
            os.replace(part, file)
        except BaseException:
            if os.path.exists(part):
                os.remove(part)
            raise

    def __repr__(self):
        height, width, _ = self.array.shape
        return f"<lumiset.Sheet of {width} x {height} pixels>"


def gallery(array, what=None, *, time=0.0, order=None, columns=0, tile=320, title=None):
    """A sheet with every preset of an effect on one picture, the picture as it is first.

    what     the name of an effect; a list of names and Looks, each for one picture; None: all looks
    columns  pictures side by side; 0: what makes a pleasant sheet
    tile     the width of a picture on the sheet in pixels, 32 to 4096
    """
    if not (32 <= tile <= 4096 and 0 <= columns <= 100):
        raise ValueError("A tile is 32 to 4096 pixels wide, and 1 to 100 stand side by side.")
    array = np.asarray(array)
    moves = True
    if isinstance(what, str):
        effect = lumiset.effect(what)
        renderers = [(preset, lumiset.Renderer(effect.name, preset)) for preset in effect.presets]
        usual, moves = effect.name, effect.depends_on_time
    elif what is None:
        renderers = [(name, lumiset.Renderer(lumiset.look(name))) for name in lumiset.looks()]
        usual = "Looks"
    else:
        renderers = [(getattr(each, "name", each), lumiset.Renderer(each)) for each in what]
        usual = "Effects"
    pictures = [_as_bgra(array, order)]
    for _, renderer in renderers:
        pictures.append(_as_bgra(renderer.render(array, time, order=order), order))
    note = f"at {time:g} seconds" if moves and time else ""
    labels = ["Source", *(str(label) for label, _ in renderers)]
    return Sheet(_lumiset.draw_sheet(title or usual, note, labels, pictures, columns, tile))


def _as_bgra(array, order):
    """The picture as bytes in the order of the sheet."""
    order = (order or "RGBA")[: array.shape[2]].upper()
    if array.dtype == np.uint16:
        array = (array.astype(np.uint32) * 255 + 32767) // 65535
    elif array.dtype == np.float32:
        array = np.nan_to_num(array).clip(0, 1) * 255 + 0.5
    result = np.full((*array.shape[:2], 4), 255, np.uint8)
    for place, letter in enumerate("BGRA"):
        if letter in order:
            result[..., place] = array[..., order.index(letter)]
    return result
