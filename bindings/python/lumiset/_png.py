"""Pictures as PNG files."""

import struct
import zlib

import numpy as np


def to_png(array):
    """An array of R, G, B or R, G, B, A as the bytes of a PNG file: uint8 with 8 bits, uint16 and float32 with 16."""
    array = np.asarray(array)
    if array.ndim != 3 or array.shape[2] not in (3, 4) or array.dtype not in (np.uint8, np.uint16, np.float32):
        raise ValueError("A picture is an array of shape (height, width, 3 or 4) of uint8, uint16 or float32.")
    if array.dtype == np.float32:
        array = (np.nan_to_num(array).clip(0, 1) * 65535 + 0.5).astype(np.uint16)
    height, width, channels = array.shape
    samples = array.astype(array.dtype.newbyteorder(">")).reshape(height, -1)
    rows = np.zeros((height, 1 + samples.nbytes // height), np.uint8)  # each begins with the filter's number, 0 for none
    rows[:, 1:] = samples.view(np.uint8).reshape(height, -1)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, height, 8 * array.itemsize, 2 if channels == 3 else 6, 0, 0, 0)
    parts = [chunk(b"IHDR", header), chunk(b"IDAT", zlib.compress(rows.tobytes(), 6)), chunk(b"IEND", b"")]
    return b"\x89PNG\r\n\x1a\n" + b"".join(parts)
