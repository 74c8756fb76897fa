"""The Python package: what it renders, what it takes and refuses, on arrays of all kinds and on threads. LUMISET names the
command line host, whose pictures and sentences it is held against."""

import ast
import inspect
import os
import subprocess
import sys
import threading
import time
import zlib
from concurrent.futures import ThreadPoolExecutor

import lumiset
import numpy as np
import pytest

PROGRAM = os.environ["LUMISET"]


def draw(height=54, width=97, channels=4):
    """Something with edges, colours and transparent parts."""
    y, x = np.mgrid[0:height, 0:width]
    picture = np.stack([x * 2, y * 4, (x // 9 + y // 7) % 2 * 200, np.where(x > 10, 255, 0)], axis=-1)
    return picture.astype(np.uint8)[..., :channels]


def by_program(tmp_path, array, arguments, pixels="rgba"):
    """The picture by `lumiset render`."""
    (tmp_path / "in.png").write_bytes(lumiset.to_png(array))
    command = [PROGRAM, "render", "-q", "--overwrite", "--alpha", "in.png", "out.png", *arguments]
    subprocess.run(command, cwd=tmp_path, check=True)
    raw = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", "out.png", "-f", "rawvideo", "-pix_fmt", pixels, "-"],
        cwd=tmp_path,
        check=True,
        capture_output=True,
    ).stdout
    return np.frombuffer(raw, np.uint16 if "64" in pixels else np.uint8).reshape(array.shape)


OLD_TV = ["--start", "1.2", "--effect", "Old TV", "--preset", "Snow", "--set", "Noise=30"]


def test_renders_what_the_program_renders(tmp_path):
    array = draw()
    snow = lumiset.render(array, "Old TV", preset="Snow", time=1.2, noise=30)
    assert np.array_equal(snow, by_program(tmp_path, array, OLD_TV))
    assert np.array_equal(snow, lumiset.old_tv(array, "Snow", time=1.2, values={"Video Quality/Noise": "30"}))
    assert not np.array_equal(snow, array) and snow.dtype == np.uint8
    chain = [*OLD_TV, "--effect", "Selective Tint", "--preset", "Blue Vignette", "--set", "Inner Tint/Color=#FFD040"]
    look = lumiset.Look("Both")
    look.add("Old TV", "Snow", noise=30)
    tint = look.add("Selective Tint", "Blue Vignette")
    tint["Inner Tint/Color"] = (255, 208, 64)
    assert np.array_equal(look.render(array, 1.2), by_program(tmp_path, array, chain))
    deep = array.astype(np.uint16) * 257
    ours = lumiset.render(deep, "Old TV", preset="Snow", time=1.2, noise=30)
    theirs = by_program(tmp_path, deep, OLD_TV, "rgba64le")
    assert np.abs(ours.astype(int) - theirs.astype(int)).max() <= 1  # of 65535: two ways to round


def test_keys_move_values(tmp_path):
    array = draw()
    keys = ["--start", "1.5", "--effect", "Outline", "--key", "Width@0=0", "--key", "Width@3=40", "--set", "Color=#00FF00"]
    wanted = by_program(tmp_path, array, keys)
    assert np.array_equal(lumiset.render(array, "Outline", time=1.5, width={0: 0, 3: 40}, color="#00FF00"), wanted)
    parts = lumiset.Renderer("Outline", width={"0%": 0, "100%": 40}, color="#00FF00", clip_seconds=3)
    assert np.array_equal(parts.render(array, 1.5), wanted)
    with pytest.raises(ValueError, match="clip_seconds"):
        lumiset.render(array, "Outline", width={"50%": 3})


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16, np.float32])
@pytest.mark.parametrize("order", ["RGBA", "BGRA", "ARGB", "ABGR", "RGB", "BGR"])
def test_every_layout_is_the_same_picture(dtype, order):
    opaque = draw()
    opaque[..., 3] = 255
    most = 1 if dtype == np.float32 else np.iinfo(dtype).max
    plain = (opaque / 255 * most).astype(dtype)
    array = np.stack([plain[..., "RGBA".index(letter)] for letter in order], axis=-1)
    wanted = lumiset.render(plain, "Color Fixer Pro", "Sepia")
    result = lumiset.render(array, "Color Fixer Pro", "Sepia", order=order)
    assert result.shape == array.shape and result.dtype == dtype
    for place, letter in enumerate(order):
        assert np.array_equal(result[..., place], wanted[..., "RGBA".index(letter)]), letter
    near = lumiset.render(opaque, "Color Fixer Pro", "Sepia") / 255
    assert np.abs(wanted / most - near).max() < 6 / 255


def test_arrays_lie_anyhow():
    array = draw()
    wanted = lumiset.outline(array, "Red Glow")
    big = np.zeros((2 * 54, 3 * 97, 4), np.uint8)
    big[::-2, ::3] = array
    assert np.array_equal(lumiset.outline(big[::-2, ::3], "Red Glow"), wanted)
    columns = np.ascontiguousarray(array.transpose(2, 1, 0)).transpose(2, 1, 0)
    assert np.array_equal(lumiset.outline(columns, "Red Glow"), wanted)
    assert np.array_equal(lumiset.outline(array[..., ::-1], "Red Glow", order="ABGR"), wanted[..., ::-1])
    assert np.array_equal(lumiset.outline(memoryview(array), "Red Glow"), wanted)
    packed = np.zeros(array.size * 4 + 1, np.uint8)[1:].view(np.float32).reshape(array.shape)
    packed[:] = array / np.float32(255)
    assert np.abs(lumiset.outline(packed, "Red Glow") * 255 - wanted).max() < 3
    # Into a part of a larger array, which stays as it is around it.
    out = np.full((60, 120, 4), 7, np.uint8)
    part = out[3:57, 5:102]
    assert lumiset.outline(array, "Red Glow", out=part) is part
    assert np.array_equal(part, wanted)
    part[:] = 7
    assert (out == 7).all()


def test_sources_are_only_read():
    array = draw()
    before = array.copy()
    array.flags.writeable = False
    result = lumiset.old_tv(array, "Snow")
    assert np.array_equal(array, before)
    assert result.flags.writeable
    with pytest.raises(ValueError, match="cannot be written"):
        lumiset.old_tv(before, "Snow", out=array)
    rgb = np.zeros((54, 97, 3), np.uint8)
    assert lumiset.old_tv(array, "Snow", out=rgb) is rgb
    over_black = (result[..., :3].astype(int) * result[..., 3:] + 127) // 255
    assert np.array_equal(rgb, over_black) and not np.array_equal(rgb, result[..., :3])
    assert lumiset.old_tv(before, "Snow", out=before) is before  # in place
    assert np.array_equal(before, result)


def test_pictures_that_the_effects_know_are_not_copied():
    array = draw()
    assert lumiset.needs_no_copy(array, "BGRA") and lumiset.needs_no_copy(array[::-1, 10:50], "ARGB")
    assert lumiset.needs_no_copy(array.astype(np.float32), "BGRA")
    assert not lumiset.needs_no_copy(array)
    assert not lumiset.needs_no_copy(array[:, ::2], "BGRA")
    assert not lumiset.needs_no_copy(array.astype(np.uint16), "BGRA")
    assert not lumiset.needs_no_copy(array[..., :3], "BGR")


def test_threads_render_at_once():
    array = draw(540, 960)
    wanted = [lumiset.old_tv(array, "Messed Up", time=at) for at in range(4)]
    shared = lumiset.Renderer("Old TV", "Messed Up")
    with ThreadPoolExecutor(4) as pool:
        own = list(pool.map(lambda at: lumiset.old_tv(array, "Messed Up", time=at), range(4)))
        one = list(pool.map(lambda at: shared.render(array, at), range(4)))
    assert all(np.array_equal(a, b) and np.array_equal(a, c) for a, b, c in zip(wanted, own, one))


def test_the_interpreter_runs_on_while_a_picture_is_rendered():
    array = draw(1080, 1920)
    renderer = lumiset.Renderer([lumiset.look("Home Video 1986")] * 3)
    done = threading.Event()
    counted = [0]

    def count():
        while not done.is_set():
            counted[0] += 1
            time.sleep(0)  # lets who waits for the lock have it

    thread = threading.Thread(target=count)
    thread.start()
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)  # the lock is handed on by who gives it up alone
    try:
        before = counted[0]
        renderer.render(array)
        after = counted[0]
    finally:
        sys.setswitchinterval(interval)
        done.set()
        thread.join()
    assert after > before


def test_a_forked_process_renders():
    array = draw(400, 600)
    wanted = lumiset.old_tv(array, "Snow")
    child = os.fork()
    if child == 0:
        os._exit(0 if np.array_equal(lumiset.old_tv(array, "Snow"), wanted) else 1)
    assert os.waitpid(child, 0)[1] == 0


def sentence(*arguments):
    """What the program says."""
    run = subprocess.run([PROGRAM, "render", "nothing.png", "out.png", *arguments], capture_output=True, text=True)
    return run.stderr.removeprefix("lumiset: ").split("\n")[0]


@pytest.mark.parametrize(
    "arguments, call",
    [
        (["-e", "Old TB"], lambda a: lumiset.render(a, "Old TB")),
        (["-e", "Old TV", "-p", "Snowy"], lambda a: lumiset.render(a, "Old TV", "Snowy")),
        (["-e", "Old TV", "--set", "Nois=3"], lambda a: lumiset.old_tv(a, values={"Nois": 3})),
        (["-e", "Old TV", "--set", "Noise=300"], lambda a: lumiset.old_tv(a, noise=300)),
        (["-e", "Viewfinder", "--set", "Tint=3"], lambda a: lumiset.viewfinder(a, values={"TINT": 3})),
        (["-e", "Selective Tint", "--set", "Blend Mode=None"], lambda a: lumiset.selective_tint(a, blend_mode="None")),
        (["--look", "Home Vide"], lambda a: lumiset.look("Home Vide")),
        (["-e", "Outline", "--preset-file", "no.lumvc"], lambda a: lumiset.outline(a, preset_file="no.lumvc")),
    ],
)
def test_errors_are_the_programs_sentences(arguments, call):
    with pytest.raises(lumiset.Error) as error:
        call(draw())
    assert str(error.value).casefold() == sentence(*arguments).casefold() != ""
    assert isinstance(error.value, ValueError)


@pytest.mark.parametrize(
    "error, words, call",
    [
        (ValueError, r"\(54, 97\)", lambda a: lumiset.old_tv(a[..., 0])),
        (ValueError, r"\(54, 97, 2\)", lambda a: lumiset.old_tv(a[..., :2])),
        (ValueError, "from 1 on", lambda a: lumiset.old_tv(a[:0])),
        (TypeError, "not of float64", lambda a: lumiset.old_tv(a / 255)),
        (TypeError, "not of >u2", lambda a: lumiset.old_tv(a.astype(">u2"))),
        (TypeError, "uint8", lambda a: lumiset.old_tv(a.astype("U1"))),
        (ValueError, "order", lambda a: lumiset.old_tv(a, order="RGBX")),
        (ValueError, "not for an array", lambda a: lumiset.old_tv(a, order="BGR")),
        (ValueError, "one size", lambda a: lumiset.old_tv(a, out=a[1:].copy())),
        (ValueError, "seconds", lambda a: lumiset.old_tv(a, time=float("nan"))),
        (TypeError, "on or off", lambda a: lumiset.old_tv(a, vertical_blank=[1])),
        (ValueError, "0 to 255", lambda a: lumiset.outline(a, color=(0, 0, 256))),
        (TypeError, "its own", lambda a: lumiset.render(a, lumiset.Look(), noise=3)),
        (TypeError, "a list of them", lambda a: lumiset.render(a, 7)),
        (ValueError, "keys", lambda a: lumiset.old_tv(a, noise={})),
        (lumiset.ParameterError, "0 seconds", lambda a: lumiset.old_tv(a, noise={-1: 3})),
        (ValueError, "0 to 100", lambda a: setattr(lumiset.Look(), "strength", 101)),
        (ValueError, "mask", lambda a: setattr(lumiset.Look(), "mask", a)),
        (lumiset.LookError, "JSON", lambda a: lumiset.Look.from_json("{")),
    ],
)
def test_what_is_wrong_is_refused(error, words, call):
    with pytest.raises(error, match=words):
        call(draw())


def test_looks_are_made_kept_and_masked(tmp_path):
    array = draw()
    look = lumiset.Look("Glow")
    step = look.add("Outline", preset="Red Glow", width={0: 0, "50%": 10})
    step.set(color="#00FF00")
    step.strength = 60
    look.about = "A glow."
    assert (look.effects[0].effect, look.effects[0].preset, look.effects[0].strength) == ("Outline", "Red Glow", 60)
    assert step.values == {"Width": {0.0: 0.0, "50%": 10.0}, "Color": "#00FF00"}
    look.save(tmp_path / "glow.lumilook")
    again = lumiset.look(tmp_path / "glow.lumilook")
    assert again.to_json() == look.to_json() == lumiset.Look.from_json(look.to_json()).to_json()
    assert repr(again) == "<lumiset.Look 'Glow': Outline (Red Glow)>"
    assert "Home Video 1986" in lumiset.looks()
    ours = lumiset.look("Home Video 1986").render(array, 1)
    step.off = True
    assert np.array_equal(look.render(array, clip_seconds=2), array) and lumiset.Look.from_json(look.to_json()).effects[0].off
    half = np.zeros((2, 2), np.uint8)
    half[:, 1] = 255
    masked = lumiset.look("Home Video 1986")
    masked.mask = half
    shown = lumiset.render(array, masked, time=1)
    assert masked.mask and np.array_equal(shown[:, :20], array[:, :20]) and np.array_equal(shown[:, -20:], ours[:, -20:])
    assert not np.array_equal(shown[:, -20:], array[:, -20:])
    assert np.array_equal(lumiset.render(array, []), array)


def test_sheets_are_pictures(tmp_path):
    sheet = lumiset.gallery(draw()[..., [2, 1, 0, 3]], "Outline", order="BGRA", tile=80)
    png = sheet._repr_png_()
    assert png.startswith(b"\x89PNG") and sheet.array.ndim == 3
    sheet.save(tmp_path / "sheet.png")
    (tmp_path / "in.png").write_bytes(lumiset.to_png(draw()))
    command = [PROGRAM, "gallery", "Outline", "in.png", "theirs.ppm", "-q", "--tile", "80"]
    subprocess.run(command, cwd=tmp_path, check=True)
    theirs = (tmp_path / "theirs.ppm").read_bytes()
    assert theirs.endswith(sheet.array.tobytes()) and len(theirs) < sheet.array.nbytes + 30
    # The compressed rows, each behind the number of its filter.
    rows = zlib.decompress(png[png.index(b"IDAT") + 4 : -16])
    assert rows[1:4] == sheet.array[0, 0].tobytes()


def test_what_is_told_is_what_there_is():
    names = [each.name for each in lumiset.effects()]
    assert len(names) == 10 and "Old TV" in names
    stub = ast.parse(open(os.path.join(os.path.dirname(lumiset.__file__), "__init__.pyi")).read())
    told = {node.name: node for node in stub.body if hasattr(node, "name")}
    assert set(lumiset.__all__) <= set(told)
    for effect in lumiset.effects():
        keywords = {each.keyword for each in effect.parameters}
        assert len(keywords) == len(effect.parameters), effect.name
        arguments = {each.arg for each in told[effect.function].args.kwonlyargs}
        assert keywords <= arguments and not keywords & set(inspect.signature(lumiset.render).parameters), effect.name
        text = getattr(lumiset, effect.function).__doc__
        assert all(each.keyword in text and each.tip in text for each in effect.parameters)
        for each in effect.parameters:  # what is told as the default is taken as a value, under every name
            assert effect.parameter(each.name).keyword == effect.parameter(each.keyword).keyword == each.keyword
            assert np.array_equal(
                lumiset.render(draw(8, 8), effect.name, **{each.keyword: each.default}), lumiset.render(draw(8, 8), effect.name)
            ), (effect.name, each.name)
    for name in ("render", "gallery", "look", "to_png", "needs_no_copy"):
        assert list(inspect.signature(getattr(lumiset, name)).parameters) == [
            each.arg
            for each in [*told[name].args.args, *told[name].args.kwonlyargs, *filter(None, [told[name].args.kwarg])]
        ], name
