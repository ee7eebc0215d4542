"""The X display as a user's hands and eyes need it: which windows stand, and keys and clicks for them."""

import ctypes
import select
import time
from ctypes import POINTER, byref, c_char_p, c_int, c_long, c_uint, c_ulong, c_void_p
from typing import NamedTuple

_x11 = ctypes.CDLL("libX11.so.6")
_xtst = ctypes.CDLL("libXtst.so.6")

_CLIENT_MESSAGE = 33
_SUBSTRUCTURE_NOTIFY = 1 << 19
_SUBSTRUCTURE_REDIRECT = 1 << 20
_PROPERTY_CHANGE = 1 << 22
_LONGEST_PROPERTY = 1024  # in units of four bytes
_ANY_TYPE = 0
_ALL_PLANES = ~0 & 0xffffffff
_Z_PIXMAP = 2


class _ClientMessage(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", c_ulong), ("send_event", c_int), ("display", c_void_p),
                ("window", c_ulong), ("message_type", c_ulong), ("format", c_int), ("data", c_long * 5)]


class _Event(ctypes.Union):
    _fields_ = [("type", c_int), ("client", _ClientMessage), ("space", c_long * 24)]


class _Image(ctypes.Structure):
    _fields_ = [("width", c_int), ("height", c_int), ("offset", c_int), ("format", c_int), ("data", c_void_p),
                ("orders", c_int * 5), ("bytes_per_line", c_int)]


_ErrorHandler = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)
# A window may vanish between being found and being asked; the library would end the process for it.
_ignore_errors = _ErrorHandler(lambda display, error: 0)
_x11.XSetErrorHandler(_ignore_errors)


def _declare(library, name, result, *arguments):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments


_declare(_x11, "XOpenDisplay", c_void_p, c_char_p)
_declare(_x11, "XDefaultRootWindow", c_ulong, c_void_p)
_declare(_x11, "XInternAtom", c_ulong, c_void_p, c_char_p, c_int)
_declare(_x11, "XGetWindowProperty", c_int, c_void_p, c_ulong, c_ulong, c_long, c_long, c_int, c_ulong,
         POINTER(c_ulong), POINTER(c_int), POINTER(c_ulong), POINTER(c_ulong), POINTER(POINTER(c_ulong)))
_declare(_x11, "XFree", c_int, c_void_p)
_declare(_x11, "XSendEvent", c_int, c_void_p, c_ulong, c_int, c_long, POINTER(_Event))
_declare(_x11, "XSelectInput", c_int, c_void_p, c_ulong, c_long)
_declare(_x11, "XPending", c_int, c_void_p)
_declare(_x11, "XNextEvent", c_int, c_void_p, POINTER(_Event))
_declare(_x11, "XConnectionNumber", c_int, c_void_p)
_declare(_x11, "XSync", c_int, c_void_p, c_int)
_declare(_x11, "XStringToKeysym", c_ulong, c_char_p)
_declare(_x11, "XKeysymToKeycode", ctypes.c_ubyte, c_void_p, c_ulong)
_declare(_x11, "XMoveResizeWindow", c_int, c_void_p, c_ulong, c_int, c_int, c_uint, c_uint)
_declare(_x11, "XGetGeometry", c_int, c_void_p, c_ulong, POINTER(c_ulong), POINTER(c_int), POINTER(c_int),
         POINTER(c_uint), POINTER(c_uint), POINTER(c_uint), POINTER(c_uint))
_declare(_x11, "XTranslateCoordinates", c_int, c_void_p, c_ulong, c_ulong, c_int, c_int, POINTER(c_int),
         POINTER(c_int), POINTER(c_ulong))
_declare(_x11, "XGetImage", POINTER(_Image), c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_ulong, c_int)
_declare(_x11, "XDestroyImage", c_int, POINTER(_Image))
_declare(_xtst, "XTestFakeKeyEvent", c_int, c_void_p, c_uint, c_int, c_ulong)
_declare(_xtst, "XTestFakeButtonEvent", c_int, c_void_p, c_uint, c_int, c_ulong)
_declare(_xtst, "XTestFakeMotionEvent", c_int, c_void_p, c_int, c_int, c_int, c_ulong)


class Place(NamedTuple):
    """Where the inside of a window lies on the screen, in pixels."""
    left: int
    top: int
    width: int
    height: int


class Screen:
    """A connection to the display that DISPLAY names. One thread uses it; another makes one of its own."""

    def __init__(self):
        self._display = _x11.XOpenDisplay(None)
        if not self._display:
            raise RuntimeError("The display cannot be opened.")
        self._root = _x11.XDefaultRootWindow(self._display)

    def fileno(self):
        return _x11.XConnectionNumber(self._display)

    def windows(self, pid):
        """The managed windows of a process, oldest first."""
        return [window for window in self._property(self._root, "_NET_CLIENT_LIST")
                if self._property(window, "_NET_WM_PID") == [pid]]

    def main_window(self, pid):
        """The window that belongs to no other, or None."""
        return next((window for window in self.windows(pid) if not self._property(window, "WM_TRANSIENT_FOR")), None)

    def watch_windows(self):
        """From now on await_main_window() hears of new ones."""
        _x11.XSelectInput(self._display, self._root, _PROPERTY_CHANGE)

    def await_main_window(self, pid, seconds):
        """None when it has not come by then."""
        end = time.monotonic() + seconds
        event = _Event()
        while not (window := self.main_window(pid)) and (left := end - time.monotonic()) > 0:
            if not _x11.XPending(self._display):
                select.select([self], [], [], left)
            while _x11.XPending(self._display):
                _x11.XNextEvent(self._display, byref(event))
        return window

    def dialogs(self, pid):
        return [window for window in self.windows(pid) if self._property(window, "WM_TRANSIENT_FOR")]

    def place(self, window):
        """None when the window is gone."""
        root, child = c_ulong(), c_ulong()
        x, y, width, height, border, depth = c_int(), c_int(), c_uint(), c_uint(), c_uint(), c_uint()
        if not _x11.XGetGeometry(self._display, window, byref(root), byref(x), byref(y), byref(width),
                                 byref(height), byref(border), byref(depth)):
            return None
        _x11.XTranslateCoordinates(self._display, window, self._root, 0, 0, byref(x), byref(y), byref(child))
        return Place(x.value, y.value, width.value, height.value)

    def picture(self, place):
        """The bytes of what the screen shows there."""
        image = _x11.XGetImage(self._display, self._root, *place, _ALL_PLANES, _Z_PIXMAP)
        pixels = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * place.height)
        _x11.XDestroyImage(image)
        return pixels

    def close(self, window):
        """What the close button of the window's frame does."""
        self._send(window, window, "WM_PROTOCOLS", [self._atom("WM_DELETE_WINDOW"), 0])

    def activate(self, window):
        self._send(self._root, window, "_NET_ACTIVE_WINDOW", [2, 0, 0])

    def toggle_maximized(self, window):
        both = [self._atom("_NET_WM_STATE_MAXIMIZED_VERT"), self._atom("_NET_WM_STATE_MAXIMIZED_HORZ")]
        self._send(self._root, window, "_NET_WM_STATE", [2, *both])

    def move_resize(self, window, place):
        _x11.XMoveResizeWindow(self._display, window, *place)
        _x11.XSync(self._display, 0)

    def press(self, key, *held):
        """Presses a key, named as X names it, while others are held down."""
        codes = [_x11.XKeysymToKeycode(self._display, _x11.XStringToKeysym(name.encode())) for name in (*held, key)]
        for code in codes:
            _xtst.XTestFakeKeyEvent(self._display, code, 1, 0)
        for code in reversed(codes):
            _xtst.XTestFakeKeyEvent(self._display, code, 0, 0)
        _x11.XSync(self._display, 0)

    def click(self, x, y, button=1):
        """Does nothing over the desktop, where a click would open the window manager's menu."""
        child, inside_x, inside_y = c_ulong(), c_int(), c_int()
        _xtst.XTestFakeMotionEvent(self._display, -1, x, y, 0)
        _x11.XTranslateCoordinates(self._display, self._root, self._root, x, y, byref(inside_x), byref(inside_y),
                                   byref(child))
        if child.value:
            _xtst.XTestFakeButtonEvent(self._display, button, 1, 0)
            _xtst.XTestFakeButtonEvent(self._display, button, 0, 0)
        _x11.XSync(self._display, 0)

    def watch_answers(self):
        """From now on answered_pings() tells."""
        _x11.XSelectInput(self._display, self._root, _SUBSTRUCTURE_NOTIFY)

    def ping(self, window, number):
        """Asks the window for a sign of life. A program that handles its events sends `number` back."""
        self._send(window, window, "WM_PROTOCOLS", [self._atom("_NET_WM_PING"), number, window])

    def answered_pings(self):
        """The numbers that have come back since the last call. Does not wait."""
        numbers = []
        event = _Event()
        while _x11.XPending(self._display):
            _x11.XNextEvent(self._display, byref(event))
            if event.type == _CLIENT_MESSAGE and event.client.data[0] == self._atom("_NET_WM_PING"):
                numbers.append(event.client.data[1])
        return numbers

    def _atom(self, name):
        return _x11.XInternAtom(self._display, name.encode(), 0)

    def _property(self, window, name):
        """The numbers of a property of 32 bits; none when it is missing."""
        kind, bits, count, rest = c_ulong(), c_int(), c_ulong(), c_ulong()
        data = POINTER(c_ulong)()
        _x11.XGetWindowProperty(self._display, window, self._atom(name), 0, _LONGEST_PROPERTY, 0, _ANY_TYPE,
                                byref(kind), byref(bits), byref(count), byref(rest), byref(data))
        if not data:
            return []
        numbers = data[:count.value] if bits.value == 32 else []
        _x11.XFree(data)
        return numbers

    def _send(self, to, window, message, data):
        event = _Event()
        event.client = _ClientMessage(_CLIENT_MESSAGE, 0, 1, self._display, window, self._atom(message), 32,
                                      (c_long * 5)(*data))
        mask = _SUBSTRUCTURE_NOTIFY | _SUBSTRUCTURE_REDIRECT if to == self._root else 0
        _x11.XSendEvent(self._display, to, 0, mask, byref(event))
        _x11.XSync(self._display, 0)
