"""Lumiset's video effects on NumPy arrays.

    import lumiset
    snow = lumiset.render(array, "Old TV", preset="Snow", time=1.2, noise=30)
    snow = lumiset.old_tv(array, preset="Snow", time=1.2, noise=30)  # the same

A picture is an array of shape (height, width, 3 or 4), of uint8, uint16 or float32 (0.0 to 1.0), in any strides; its
channels are RGB or RGBA unless `order` says otherwise, alpha is straight. Effects work in BGRA and ARGB of uint8 and float32
as they lie in memory; everything else is converted on the way. Arrays that are read are never written to.

Values are written as an effect's panel shows them: numbers, True and False, items of a list by their labels, colours as
"#RRGGBB" or (red, green, blue) of 0 to 255, points as (x, y) in percent of the picture from its top left corner. A
dictionary of times and values has keys: `noise={0: 0, 2.5: 60}`; times are seconds, or texts such as "1:30" and "50%".

Every thread may call everything. The interpreter's lock is released while a picture is rendered, and a large one is
rendered on as many threads as the machine has, or LUMISET_THREADS in the environment allows.
"""

import os as _os

import numpy as _np

from . import _lumiset
from ._lumiset import (
    Effect,
    Error,
    Look,
    LookError,
    ModuleError,
    Parameter,
    ParameterError,
    PresetFileError,
    RenderError,
    Step,
    effect,
    effects,
    looks,
    module_path,
)
from ._lumiset import __version__
from ._png import to_png

_os.register_at_fork(after_in_child=_lumiset.renew_threads)


def look(name_or_file):
    """The look of that name, the user's own before ours; or the file, where it has a slash or ".lumilook" in it."""
    return Look.open(_os.fspath(name_or_file))


class Renderer:
    """An effect, a look or several of them in turn, made ready for many pictures: it keeps its memory between them.

    renderer = lumiset.Renderer("Old TV", preset="Snow")
    for number, frame in enumerate(frames):
        renderer.render(frame, time=number / 25, out=frame)  # in place

    What is changed later in a Look is left out of account. Threads that use one renderer at once wait for each other.
    """

    def __init__(self, what, preset=None, *, preset_file=None, values=None, clip_seconds=0.0, **keywords):
        self._renderer = _lumiset._Renderer(_chain(what, preset, preset_file, values, keywords), clip_seconds)

    def render(self, array, time=0.0, *, order=None, out=None, pixel_aspect=0.0):
        """As `lumiset.render`."""
        array = _np.asarray(array)
        return self._renderer.render(array, None if out is None else _np.asanyarray(out), time, order or "", pixel_aspect)


def render(
    array,
    what,
    preset=None,
    *,
    time=0.0,
    order=None,
    out=None,
    preset_file=None,
    values=None,
    clip_seconds=0.0,
    pixel_aspect=0.0,
    **keywords,
):
    """Renders a picture and returns the result, of the same shape and type.

    array         the picture, of shape (height, width, 3 or 4), uint8, uint16 or float32
    what          the name of an effect; a Look; or a list of both, applied in turn
    preset        the name of one of the effect's presets, to start from
    time          of the picture in seconds from the clip's start
    order         of the channels: "RGBA" (the usual), "BGRA", "ARGB", "ABGR", "RGB" or "BGR"
    out           the array for the result, of the same height and width; the source itself renders in place
    preset_file   a preset file of an editor, to start from
    values        a dictionary of parameters by their names, such as {"Inner Tint/Color": "#FFD040"}
    clip_seconds  the clip's length, for keys at parts of it
    pixel_aspect  the width of a pixel divided by its height; 0: not known, taken for square
    keywords      parameters by their keywords, such as noise=30

    Where the result has no alpha what is transparent is black. Raises Error for what the effects cannot do, TypeError and
    ValueError for arrays that are no pictures.
    """
    renderer = Renderer(what, preset, preset_file=preset_file, values=values, clip_seconds=clip_seconds, **keywords)
    return renderer.render(array, time, order=order, out=out, pixel_aspect=pixel_aspect)


def needs_no_copy(array, order=None):
    """Whether effects work in this array as it lies, without a copy: rows of BGRA or ARGB of uint8 or float32."""
    return _lumiset.needs_no_copy(_np.asarray(array), order or "")


def _chain(what, preset, preset_file, values, keywords):
    """The looks that a call asks for."""
    if isinstance(what, str):
        look = Look(what)
        look.add(what, preset, preset_file, values, **keywords)
        return [look]
    if preset is not None or preset_file is not None or values or keywords:
        raise TypeError("Presets and values are for an effect by its name; a look has its own.")
    if isinstance(what, Look):
        return [what]
    if not isinstance(what, (list, tuple)):
        raise TypeError(f"What to render is an effect's name, a Look or a list of them, not {what!r}.")
    return [look for each in what for look in _chain(each, None, None, None, {})]


def _function_of(effect):
    """The function of an effect, with what the tables tell of it."""

    def function(array, preset=None, *, time=0.0, **options):
        return render(array, effect.name, preset, time=time, **options)

    function.__name__ = function.__qualname__ = effect.function
    function.__doc__ = "\n".join(
        [
            f"{effect.name}: `lumiset.render(array, \"{effect.name}\", ...)`.",
            "",
            *(f"{each.keyword}  {each.tip} ({each.range}; {each.default})" for each in effect.parameters),
            "",
            "Presets: " + ", ".join(effect.presets) + ".",
        ]
    )
    return function


_functions = {each.function: _function_of(each) for each in effects()}
globals().update(_functions)

from .gallery import Sheet, gallery  # noqa: E402  (it renders by what is above)

__all__ = [
    "Effect",
    "Error",
    "Look",
    "LookError",
    "ModuleError",
    "Parameter",
    "ParameterError",
    "PresetFileError",
    "RenderError",
    "Renderer",
    "Sheet",
    "Step",
    "effect",
    "effects",
    "gallery",
    "look",
    "looks",
    "module_path",
    "needs_no_copy",
    "render",
    "to_png",
    *_functions,
]
