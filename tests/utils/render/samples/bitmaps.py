# Writes name.bmp for every width 1..3, bit count 1, 8, 24, 32 and row order, 10 rows,
# into the folder given: bitmap files laid out by Python's struct, not by our code, for
# the bitmap file tests to read.
import struct, sys, os
folder = sys.argv[1]
for width in (1, 2, 3):
    for bits in (1, 8, 24, 32):
        for topdown in (False, True):
            stride = (width * bits + 31) // 32 * 4
            colours = 1 << bits if bits <= 8 else 0
            pixels = bytes((r * 7 + c) & 0xFF for r in range(10) for c in range(stride))
            offset = 14 + 40 + 4 * colours
            info = struct.pack('<IiiHHIIiiII', 40, width, -10 if topdown else 10, 1, bits, 0,
                               len(pixels), 2835, 2835, colours, 0)
            palette = b''.join(struct.pack('<BBBB', i & 0xFF, i & 0xFF, i & 0xFF, 0) for i in range(colours))
            head = struct.pack('<2sIHHI', b'BM', offset + len(pixels), 0, 0, offset)
            name = 'w%d_b%d_%s.bmp' % (width, bits, 'td' if topdown else 'bu')
            with open(os.path.join(folder, name), 'wb') as f:
                f.write(head + info + palette + pixels)
