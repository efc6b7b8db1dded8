"""A mouse and a keyboard for a Wayland compositor that has none, spoken over its socket. They stay:
programs close their menus when the last keyboard is taken away."""

import itertools
import os
import socket
import struct

from desktop import Missing

DISPLAY = 1
SYNC, GET_REGISTRY = 0, 1  # asked of the display
BIND = GLOBAL = 0  # asked of the registry, and told by it
CREATE = 0  # asked of a manager
MOVE_TO, BUTTON, FRAME = 1, 2, 4  # asked of the pointer
KEYMAP, KEY, MODIFIERS = 0, 1, 2  # asked of the keyboard
LEFT = 0x110
CONTROL = 4
POINTERS = "zwlr_virtual_pointer_manager_v1"
KEYBOARDS = "zwp_virtual_keyboard_manager_v1"
KEYS = ("a", "c", "Down", "Menu", "Return", "Right")


def _text(text):
    data = text.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + bytes(-len(data) % 4)


def _keymap():
    numbers = "".join(f"<{name}> = {8 + code};" for code, name in enumerate(KEYS, 1))
    symbols = "".join(f"key <{name}> {{[{name}]}};" for name in KEYS)
    return f"""xkb_keymap {{
        xkb_keycodes "few" {{ minimum = 8; maximum = 255; {numbers} }};
        xkb_types "few" {{ include "complete" }};
        xkb_compatibility "few" {{ include "complete" }};
        xkb_symbols "few" {{ {symbols} }};
    }};""".encode() + b"\0"


class WaylandHands:
    """`width` and `height` are the screen's."""

    def __init__(self, path, width, height):
        self._size = (width, height)
        self._time = itertools.count(1)
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(path)
        registry, done, seat, pointers, keyboards, self._pointer, self._keyboard = range(2, 9)
        self._say(DISPLAY, GET_REGISTRY, registry)
        self._say(DISPLAY, SYNC, done)
        there = self._globals(registry, done)
        for interface, bound in (("wl_seat", seat), (POINTERS, pointers), (KEYBOARDS, keyboards)):
            if _text(interface) not in there:
                raise Missing(f"the compositor has no {interface}")
            self._say(registry, BIND, there[_text(interface)], _text(interface), 1, bound)
        self._say(pointers, CREATE, seat, self._pointer)
        self._say(keyboards, CREATE, seat, self._keyboard)
        self._set_keymap()

    def press(self, key):
        """A key of KEYS, with "ctrl+" before it or not."""
        held, _, name = key.rpartition("+")
        self._say(self._keyboard, MODIFIERS, CONTROL if held else 0, 0, 0, 0)
        for pressed in (1, 0):
            self._say(self._keyboard, KEY, next(self._time), KEYS.index(name) + 1, pressed)
        self._say(self._keyboard, MODIFIERS, 0, 0, 0, 0)

    def click(self, x, y):
        self._say(self._pointer, MOVE_TO, next(self._time), x, y, *self._size)
        self._say(self._pointer, FRAME)
        for pressed in (1, 0):
            self._say(self._pointer, BUTTON, next(self._time), LEFT, pressed)
            self._say(self._pointer, FRAME)

    def _globals(self, registry, done):
        """The number of each interface, by its text as it is told."""
        events = self._socket.makefile("rb")
        numbers = {}
        while True:
            sender, what = struct.unpack("=II", events.read(8))
            told = events.read((what >> 16) - 8)
            if sender == done:
                return numbers
            if sender == registry and what & 0xFFFF == GLOBAL:
                numbers[told[4:-4]] = struct.unpack_from("=I", told)[0]

    def _set_keymap(self):
        keymap = _keymap()
        file = os.memfd_create("keymap")
        os.write(file, keymap)
        a_text = 1
        message = self._message(self._keyboard, KEYMAP, a_text, len(keymap))
        socket.send_fds(self._socket, [message], [file])
        os.close(file)

    def _say(self, receiver, what, *arguments):
        self._socket.sendall(self._message(receiver, what, *arguments))

    @staticmethod
    def _message(receiver, what, *arguments):
        data = b"".join(one if isinstance(one, bytes) else struct.pack("=I", one)
                        for one in arguments)
        return struct.pack("=II", receiver, (len(data) + 8) << 16 | what) + data
