// The host's picture files: any surface, bitmap or window saved as PNG or BMP, and BMP
// and PNG files loaded into DIB sections for the blits. Not a Win32 API: the device
// had its own tools for this; the host gives tests and kivutil a way to see pictures.
#pragma once

#include <cstddef>
#include <string>

#include "platform/win32/Win32.h"

namespace kiv_host {

enum class PictureFormat { Png, Bmp };

// BMP for a name ending in ".bmp" (any case), PNG for anything else.
PictureFormat PictureFormatOf(const wchar_t* path);

// Writes the pixels the device context draws into (its bitmap, or its window's
// surface), a bitmap, or a window's surface. PNG files hold 8-bit RGB, BMP files 24-bit
// bottom-up rows. The file is replaced as a whole or left as it was; false on failure.
bool SavePicture(HDC dc, const wchar_t* path, PictureFormat format);
bool SavePicture(HBITMAP bitmap, const wchar_t* path, PictureFormat format);
bool SavePicture(HWND window, const wchar_t* path, PictureFormat format);
template <class Handle>
bool SavePicture(Handle handle, const wchar_t* path) {
    return SavePicture(handle, path, PictureFormatOf(path));
}

// The encoded file of a bitmap or device context, without writing it anywhere.
bool EncodePicture(HBITMAP bitmap, PictureFormat format, std::string& bytes);

// Reads a BMP (1, 4, 8, 16, 24 or 32 bits, uncompressed or with bit fields, either row
// order) or a PNG (any kind; transparency is laid over white) into a new 32-bit
// bottom-up DIB section. Null for anything else, anything malformed or truncated, or a
// picture larger than the host agrees to hold.
HBITMAP LoadPicture(const wchar_t* path);
HBITMAP DecodePicture(const void* bytes, std::size_t size);

}  // namespace kiv_host
