"""Bytes that tell by themselves whose they are and whether they are whole."""

import hashlib
import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"
WIDTH = 48


class NotWhole(Exception):
    """Bytes of which a part is missing or another's."""


def make(share, part, body):
    """The bytes of the file `part` of the share `share`, both numbers."""
    digest = hashlib.sha256(body).hexdigest()
    return f"soak {share} {part} {len(body)} {digest}\n".encode() + body


def read(data):
    """(share, part) of bytes that `make` made, or of a picture that `picture` made of them."""
    if data.startswith(SIGNATURE):
        data = pixels(data)
        end = data.find(b"\n") + 1
        words = data[:end].split()
        data = data[: end + int(words[3])] if len(words) == 5 else data
    head, _, body = data.partition(b"\n")
    words = head.split()
    if len(words) != 5 or words[0] != b"soak" or int(words[3]) != len(body):
        raise NotWhole(f"{len(data)} bytes that begin with {data[:60]!r}")
    if hashlib.sha256(body).hexdigest().encode() != words[4]:
        raise NotWhole(f"the bytes of part {words[2]} of share {words[1]} are others")
    return int(words[1]), int(words[2])


def picture(data):
    """A PNG whose pixels are these bytes."""
    row = WIDTH * 3
    height = -(-len(data) // row)
    data = data.ljust(height * row, b"\0")
    lines = b"".join(b"\0" + data[at : at + row] for at in range(0, len(data), row))
    head = struct.pack(">IIBBBBB", WIDTH, height, 8, 2, 0, 0, 0)
    chunks = ((b"IHDR", head), (b"IDAT", zlib.compress(lines)), (b"IEND", b""))
    return SIGNATURE + b"".join(
        struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
        for kind, body in chunks
    )


def pixels(png):
    """The colours of a PNG of 8-bit RGB or RGBA, as bytes, without their opacity."""
    chunks, at = {}, len(SIGNATURE)
    while at + 12 <= len(png):
        (length,) = struct.unpack_from(">I", png, at)
        kind, body = png[at + 4 : at + 8], png[at + 8 : at + 8 + length]
        if png[at + 8 + length : at + 12 + length] != struct.pack(">I", zlib.crc32(kind + body)):
            break
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + length
    if b"IEND" not in chunks or at != len(png):
        raise NotWhole(f"{len(png)} bytes of a PNG")
    width, height, bits, colour, _, _, interlaced = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    if bits != 8 or colour not in (2, 6) or interlaced:
        raise NotWhole(f"a PNG of another kind: {bits} bits, colours {colour}")
    size = 3 if colour == 2 else 4
    out = b"".join(_lines(zlib.decompress(chunks[b"IDAT"]), width * size, height, size))
    if size == 3:
        return out
    return b"".join(out[pixel : pixel + 3] for pixel in range(0, len(out), 4))


def _lines(data, row, height, size):
    before = bytearray(row)
    for number in range(height):
        kind = data[number * (row + 1)]
        line = bytearray(data[number * (row + 1) + 1 : (number + 1) * (row + 1)])
        if kind:
            for at in range(row):
                left = line[at - size] if at >= size else 0
                corner = before[at - size] if at >= size else 0
                line[at] = (line[at] + _predicted(kind, left, before[at], corner)) & 0xFF
        yield bytes(line)
        before = line


def _predicted(kind, left, above, corner):
    if kind == 4:
        guess = left + above - corner
        return min((left, above, corner), key=lambda near: abs(guess - near))
    return (0, left, above, (left + above) // 2)[kind]
