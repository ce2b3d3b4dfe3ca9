// The handheld's calls that desktop Windows lacks, over the real API: EventModify maps to
// the three event calls, GetProcAddressW narrows the export name, TransparentImage is the
// desktop's TransparentBlt taking a bitmap as well as a device context.
#include "platform/win32/Win32.h"

#include "platform/win32/MessageBatch.h"

namespace {

bool IsDeviceContext(HANDLE object) {
    const DWORD kind = GetObjectType(object);
    return kind == OBJ_DC || kind == OBJ_MEMDC;
}

}  // namespace

BOOL EventModify(HANDLE event, DWORD action) {
    switch (action) {
    case EVENT_PULSE: return PulseEvent(event);
    case EVENT_RESET: return ResetEvent(event);
    case EVENT_SET: return SetEvent(event);
    default: SetLastError(ERROR_INVALID_PARAMETER); return FALSE;
    }
}

FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName) {
    // An ordinal rides in the pointer's low word, as MAKEINTRESOURCE makes it.
    if (reinterpret_cast<ULONG_PTR>(procName) < 0x10000)
        return GetProcAddress(module, reinterpret_cast<LPCSTR>(procName));
    std::string name;
    for (const wchar_t* c = procName; *c; ++c) {
        // Export names are ASCII; anything else names no export.
        if (*c > 0x7F) {
            SetLastError(ERROR_PROC_NOT_FOUND);
            return nullptr;
        }
        name.push_back(static_cast<char>(*c));
    }
    return GetProcAddress(module, name.c_str());
}

BOOL TransparentImage(HDC dest, LONG x, LONG y, LONG width, LONG height, HANDLE source, LONG xSrc, LONG ySrc,
                      LONG widthSrc, LONG heightSrc, COLORREF transparent) {
    if (IsDeviceContext(source))
        return TransparentBlt(dest, x, y, width, height, static_cast<HDC>(source), xSrc, ySrc, widthSrc, heightSrc,
                              transparent);
    if (GetObjectType(source) != OBJ_BITMAP) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    HDC memory = CreateCompatibleDC(dest);
    if (!memory) return FALSE;
    HGDIOBJ old = SelectObject(memory, source);
    const BOOL ok = old ? TransparentBlt(dest, x, y, width, height, memory, xSrc, ySrc, widthSrc, heightSrc,
                                         transparent)
                        : FALSE;
    if (old) SelectObject(memory, old);
    DeleteDC(memory);
    return ok;
}

namespace kiv_win32 {

// The system has no batch of its own: each message is posted as it comes. A refused one
// leaves its error for the caller, as the host's batch does.
int PostMessages(const MSG* messages, int count) {
    int posted = 0;
    DWORD error = ERROR_SUCCESS;
    for (int i = 0; i < count; ++i) {
        if (PostMessageW(messages[i].hwnd, messages[i].message, messages[i].wParam, messages[i].lParam)) ++posted;
        else error = GetLastError();
    }
    if (error != ERROR_SUCCESS) SetLastError(error);
    return posted;
}

void RegisterStandardControls() {}

void RedrawWindowTree(HWND window) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

HFONT DefaultControlFont() { return static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT)); }

LOGFONTW DefaultFont(bool fixedPitch) {
    LOGFONTW f{};
    f.lfHeight = 16;
    f.lfWeight = FW_NORMAL;
    f.lfCharSet = DEFAULT_CHARSET;
    wcsncpy(f.lfFaceName, fixedPitch ? L"DejaVu Sans Mono" : L"DejaVu Sans", LF_FACESIZE - 1);
    return f;
}

}  // namespace kiv_win32
