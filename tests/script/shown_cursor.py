"""Prints the cursor that the X display shows now: width, height, hot spot, and its pixels as alpha, red, green, blue."""

import ctypes
import sys


class CursorImage(ctypes.Structure):
    _fields_ = [("x", ctypes.c_short), ("y", ctypes.c_short), ("width", ctypes.c_ushort), ("height", ctypes.c_ushort),
                ("hot_x", ctypes.c_ushort), ("hot_y", ctypes.c_ushort), ("serial", ctypes.c_ulong),
                ("pixels", ctypes.POINTER(ctypes.c_ulong)), ("atom", ctypes.c_ulong), ("name", ctypes.c_char_p)]


def main():
    x11 = ctypes.CDLL("libX11.so.6")
    fixes = ctypes.CDLL("libXfixes.so.3")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    fixes.XFixesGetCursorImage.argtypes = [ctypes.c_void_p]
    fixes.XFixesGetCursorImage.restype = ctypes.POINTER(CursorImage)
    display = x11.XOpenDisplay(None)
    if not display:
        sys.exit("no display")
    shown = fixes.XFixesGetCursorImage(display)
    if not shown:
        sys.exit("no cursor")
    image = shown.contents
    print(image.width, image.height, image.hot_x, image.hot_y)
    print(*("%08x" % (image.pixels[i] & 0xFFFFFFFF) for i in range(image.width * image.height)))


main()
