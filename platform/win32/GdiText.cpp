// Fonts and text drawing over the font engine.
#include "platform/win32/GdiText.h"

#include <cwchar>

#include "platform/win32/GdiObjects.h"

using namespace kiv_win32::detail;

namespace kiv_win32 {

LOGFONTW DefaultFont(bool fixedPitch) {
    LOGFONTW f{};
    f.lfHeight = 16;
    f.lfWeight = FW_NORMAL;
    f.lfCharSet = DEFAULT_CHARSET;
    std::wcsncpy(f.lfFaceName, fixedPitch ? L"DejaVu Sans Mono" : L"DejaVu Sans", LF_FACESIZE - 1);
    return f;
}

}  // namespace kiv_win32

HFONT CreateFontIndirectW(const LOGFONTW* font) {
    if (!font) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto f = std::make_shared<FontObject>();
    f->font = *font;
    f->font.lfFaceName[LF_FACESIZE - 1] = L'\0';
    return reinterpret_cast<HFONT>(kiv_win32::AddHandle(f));
}

UINT SetTextAlign(HDC dc, UINT align) {
    auto d = FindDC(dc);
    if (!d) return 0xFFFFFFFF;  // GDI_ERROR
    const UINT previous = d->textAlign;
    d->textAlign = align;
    return previous;
}

UINT GetTextAlign(HDC dc) {
    auto d = FindDC(dc);
    return d ? d->textAlign : 0xFFFFFFFF;
}
