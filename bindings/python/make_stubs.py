#!/usr/bin/env python3
"""make_stubs.py PACKAGE: writes the package's type hints, __init__.pyi, from the effects' own tables.

PACKAGE is the folder lumiset with the built module in it.
"""

import sys
from pathlib import Path

package = Path(sys.argv[1]).resolve()
sys.path.insert(0, str(package.parent))
import lumiset  # noqa: E402

HEAD = '''"""Written by the build from the effects' tables."""

import os
from collections.abc import Sequence
from typing import Any, Literal, Mapping, Optional, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

__version__: str
_Time = Union[float, str]
_Number = Union[float, Mapping[_Time, float]]
_Switch = Union[bool, Mapping[_Time, bool]]
_OneColor = Union[str, tuple[int, int, int]]
_Color = Union[_OneColor, Mapping[_Time, _OneColor]]
_Point = Union[tuple[float, float], Mapping[_Time, tuple[float, float]]]
_Value = Union[float, bool, str, Sequence[float], Mapping[_Time, Any]]
_File = Union[str, os.PathLike[str]]
_Order = Literal["RGBA", "BGRA", "ARGB", "ABGR", "RGB", "BGR"]
_Picture = NDArray[Any]
_What = Union[str, "Look", Sequence[Union[str, "Look"]]]

class Error(Exception): ...
class ParameterError(Error, ValueError): ...
class LookError(Error, ValueError): ...
class PresetFileError(Error, ValueError): ...
class RenderError(Error, RuntimeError): ...
class ModuleError(Error, OSError): ...

class Parameter:
    name: str
    keyword: str
    label: str
    group: str
    tip: str
    type: Literal["slider", "color", "point", "choice", "boolean"]
    minimum: Optional[float]
    maximum: Optional[float]
    whole_numbers: bool
    items: list[str]
    default: Any
    range: str

class Effect:
    name: str
    function: str
    depends_on_time: bool
    parameters: list[Parameter]
    presets: list[str]
    def parameter(self, name: str) -> Parameter: ...

class Step:
    effect: str
    preset: Optional[str]
    strength: float
    off: bool
    values: dict[str, Any]
    def set(self, **values: _Value) -> None: ...
    def __setitem__(self, name: str, value: _Value) -> None: ...

class Look:
    name: str
    about: str
    author: str
    strength: float
    effects: list[Step]
    mask: Any
    def __init__(self, name: str = "Look") -> None: ...
    def __len__(self) -> int: ...
    @classmethod
    def open(cls, name_or_file: str) -> Look: ...
    @classmethod
    def from_json(cls, text: str) -> Look: ...
    def to_json(self) -> str: ...
    def save(self, file: _File) -> None: ...
    def add(
        self,
        effect: str,
        preset: Optional[str] = None,
        preset_file: Optional[_File] = None,
        values: Optional[Mapping[str, _Value]] = None,
        **keywords: _Value,
    ) -> Step: ...
    def render(self, array: ArrayLike, time: float = 0.0, **options: Any) -> _Picture: ...

class Renderer:
    def __init__(
        self,
        what: _What,
        preset: Optional[str] = None,
        *,
        preset_file: Optional[_File] = None,
        values: Optional[Mapping[str, _Value]] = None,
        clip_seconds: float = 0.0,
        **keywords: _Value,
    ) -> None: ...
    def render(
        self,
        array: ArrayLike,
        time: float = 0.0,
        *,
        order: Optional[_Order] = None,
        out: Optional[_Picture] = None,
        pixel_aspect: float = 0.0,
    ) -> _Picture: ...

class Sheet:
    array: NDArray[np.uint8]
    def __init__(self, array: NDArray[np.uint8]) -> None: ...
    def _repr_png_(self) -> bytes: ...
    def save(self, file: _File) -> None: ...

def effects() -> list[Effect]: ...
def effect(name: str) -> Effect: ...
def looks() -> list[str]: ...
def look(name_or_file: _File) -> Look: ...
def module_path() -> str: ...
def to_png(array: ArrayLike) -> bytes: ...
def needs_no_copy(array: ArrayLike, order: Optional[_Order] = None) -> bool: ...
def gallery(
    array: ArrayLike,
    what: Optional[_What] = None,
    *,
    time: float = 0.0,
    order: Optional[_Order] = None,
    columns: int = 0,
    tile: int = 320,
    title: Optional[str] = None,
) -> Sheet: ...
def render(
    array: ArrayLike,
    what: _What,
    preset: Optional[str] = None,
    *,
    time: float = 0.0,
    order: Optional[_Order] = None,
    out: Optional[_Picture] = None,
    preset_file: Optional[_File] = None,
    values: Optional[Mapping[str, _Value]] = None,
    clip_seconds: float = 0.0,
    pixel_aspect: float = 0.0,
    **keywords: _Value,
) -> _Picture: ...
'''

COMMON = """    time: float = 0.0,
    order: Optional[_Order] = None,
    out: Optional[_Picture] = None,
    preset_file: Optional[_File] = None,
    values: Optional[Mapping[str, _Value]] = None,
    clip_seconds: float = 0.0,
    pixel_aspect: float = 0.0,
"""


def hint(parameter):
    if parameter.type == "choice":
        items = f"Literal[{', '.join(repr(item) for item in parameter.items)}]"
        return f"Union[{items}, Mapping[_Time, {items}]]"
    return {"slider": "_Number", "boolean": "_Switch", "color": "_Color", "point": "_Point"}[parameter.type]


def function(effect):
    presets = ", ".join(repr(name) for name in effect.presets)
    text = f"def {effect.function}(\n    array: ArrayLike,\n    preset: Optional[Literal[{presets}]] = None,\n    *,\n{COMMON}"
    for parameter in effect.parameters:
        text += f"    {parameter.keyword}: {hint(parameter)} = ...,  # {parameter.range}; {parameter.default}\n"
    return text + ") -> _Picture: ...\n"


(package / "__init__.pyi").write_text(HEAD + "".join(function(effect) for effect in lumiset.effects()))
